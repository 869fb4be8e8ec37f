#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>

#include "platform/camera/capture.h"

namespace handset {

/// Starts a capture on a thread of its own, since a device may hold a start up for half a minute. A start that nobody
/// waits for any more is undone by that thread.
class CaptureStart {
 public:
  /// A capture of the same device that is still being stopped is waited for first; one that does not let go of it for
  /// seconds makes the start fail.
  CaptureStart(Capture::Setup setup, Capture::Deliver deliver);
  CaptureStart(const CaptureStart&) = delete;
  CaptureStart& operator=(const CaptureStart&) = delete;
  /// Abandons a start that is not through.
  ~CaptureStart();

  /// Waits until the start is through. @return false at the end of the time
  bool wait(std::chrono::milliseconds limit);
  /// The started capture, once; null with the reason when it has failed.
  std::shared_ptr<Capture> take(std::string* error);

 private:
  struct State {
    std::mutex mutex;  ///< guards the rest
    std::condition_variable changed;
    bool through = false;
    bool abandoned = false;
    std::shared_ptr<Capture> capture;
    std::string error;
  };
  const std::shared_ptr<State> state_ = std::make_shared<State>();
};

/// Stops a capture, on a thread that is left behind when the device takes longer than `patience`.
/// @param hurry  ends the waiting when it becomes true; may be null
void stop_capture(const std::shared_ptr<Capture>& capture, std::chrono::milliseconds patience,
                  const std::atomic<bool>* hurry = nullptr);

}  // namespace handset

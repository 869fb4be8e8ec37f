#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>

#include "platform/camera/capture.h"

namespace handset {

/// Starts a capture on its own thread, since a device may block a start for half a minute. That thread undoes a start
/// that nobody waits for any more.
class CaptureStart {
 public:
  /// First waits for a capture of the same device that is still stopping; fails if it does not release the device
  /// within seconds.
  CaptureStart(Capture::Setup setup, Capture::Deliver deliver);
  CaptureStart(const CaptureStart&) = delete;
  CaptureStart& operator=(const CaptureStart&) = delete;
  /// Abandons an unfinished start.
  ~CaptureStart();

  /// Waits for the start to finish. @return false on timeout
  bool wait(std::chrono::milliseconds limit);
  /// The started capture, once; null with the reason if it failed.
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

/// Stops a capture on a thread that is abandoned if the device takes longer than `patience`.
/// @param hurry ends the wait when it becomes true; may be null
void stop_capture(const std::shared_ptr<Capture>& capture, std::chrono::milliseconds patience,
                  const std::atomic<bool>* hurry = nullptr);

}  // namespace handset

#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

#include "platform/camera/device_finder.h"

namespace handset {

/// Keeps the list of cameras up to date on threads of its own: at the start, when nodes come, go or change their
/// rights in /dev, and when PipeWire tells of cameras. A device that does not answer holds up nobody else.
class CameraWatch {
 public:
  /// The process's watch, started at the first call. Any thread.
  static CameraWatch& instance();

  /// The newest list, which before the end of the first scan may lack cameras. Any thread.
  std::vector<FoundCamera> cameras_now();
  /// Whether the newest list has a camera. Any thread.
  bool has(const std::string& identity);
  /// Whether the newest list has the camera of this identity as another device or at another node. Any thread.
  bool has_changed(const FoundCamera& camera);
  /// @return whether the first scan is through, PipeWire's answer included. Any thread.
  bool wait_first_scan(std::chrono::milliseconds limit);
  /// Looks again soon. Any thread.
  void rescan();

  /// Calls back after every change of the list and when the first scan is through, on the watch's thread with no lock
  /// held. The callback must not call stop_listening().
  /// @return number for stop_listening. Any thread.
  int on_cameras_changed(std::function<void()> listener);
  /// The listener does not run any more when this returns. Any thread but the watch's.
  void stop_listening(int number);

 private:
  CameraWatch();
  struct Shared;
  std::shared_ptr<Shared> shared_;
};

}  // namespace handset

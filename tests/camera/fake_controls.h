#pragma once

// A camera with nothing but scripted controls, for the code that talks to the kernel. Any thread.

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/camera/control_device.h"

struct FakeControl {
  std::uint32_t type;
  std::int64_t minimum = 0;
  std::int64_t maximum = 1;
  std::uint64_t step = 1;
  std::int32_t value = 0;
  std::uint32_t flags = 0;
  std::map<std::int64_t, std::int64_t> entries{};  ///< of a menu: what exists, with an integer menu's values
  int get_error = 0;
  int set_error = 0;
};

FakeControl integer(std::int64_t minimum, std::int64_t maximum, std::uint64_t step, std::int32_t value);
FakeControl boolean(std::int32_t value);
/// @param entries  the last one is the maximum
FakeControl menu(std::map<std::int64_t, std::int64_t> entries, std::int32_t value, bool integers = false);

/// A typical webcam: automatic exposure and focus, gain, backlight compensation.
std::map<std::uint32_t, FakeControl> webcam();

/// Outlives its handles, as a camera outlives a program. Focus and exposure time are inactive while they are governed.
class FakeCamera {
 public:
  explicit FakeCamera(std::map<std::uint32_t, FakeControl> description = {}) : controls(std::move(description)) {}

  std::map<std::uint32_t, FakeControl> controls;  ///< do not touch while somebody talks to the camera
  std::function<void()> before_set;               ///< runs before every setting, with no lock held

  /// A handle to it, as from opening its node.
  handset::ControlDevices open();

  void unplug(bool gone);
  std::int32_t value(std::uint32_t id) const;
  /// The camera moves a control by itself.
  void move(std::uint32_t id, std::int32_t value);
  /// The settings made so far, in order; asking clears them.
  std::vector<std::pair<std::uint32_t, std::int32_t>> take_log();
  /// Waits until a control has the value; false after 10 s.
  bool wait_value(std::uint32_t id, std::int32_t value);
  /// Waits until a control was set that many times; false after 10 s.
  bool wait_tried(std::uint32_t id, int times);

 private:
  class Handle;
  int call(unsigned long request, void* argument);
  int answer(unsigned long request, void* argument);
  bool inactive(std::uint32_t id) const;

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  bool gone_ = false;
  std::map<std::uint32_t, int> tried_;
  std::vector<std::pair<std::uint32_t, std::int32_t>> log_;
};

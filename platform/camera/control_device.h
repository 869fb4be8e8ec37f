#pragma once

// A camera's V4L2 controls as the kernel offers them.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace handset {

/// A device node that is asked with ioctl(2). Tests bring devices of their own.
class ControlDevice {
 public:
  virtual ~ControlDevice() = default;
  /// May take hundreds of milliseconds: a webcam is asked over its cable.
  /// @return 0 or an errno value
  virtual int call(unsigned long request, void* argument) = 0;
};

using ControlDevices = std::vector<std::unique_ptr<ControlDevice>>;

/// Opens what holds a camera's controls: its node, and the flash of its media device where there is one. Works beside
/// whoever streams from the camera. A node whose controls another of our programs has in its hands is waited for, up to
/// three seconds; `cancelled` ends the wait.
/// @param node  "/dev/videoN"
/// @return empty when the node cannot be opened or is not given up
ControlDevices open_control_devices(const std::string& node, const std::atomic<bool>& cancelled);

/// Device number of the first flash among a media device's entities.
/// @return 0 when there is none
std::uint64_t flash_of(ControlDevice& media);

/// One control that can be read and set, or a button.
struct DeviceControl {
  struct Entry {
    std::int32_t index;
    std::int64_t value;  ///< of an integer menu
  };

  std::uint32_t id = 0;
  std::size_t device = 0;  ///< index of the device that has it
  std::int64_t minimum = 0;
  std::int64_t maximum = 0;
  std::int64_t step = 1;
  std::int32_t value = 0;      ///< as it was found; 0 for a button
  bool button = false;         ///< acts when it is set
  bool integer_menu = false;   ///< an index into `entries`
  std::vector<Entry> entries;  ///< of a menu: those that can be chosen

  bool has_entry(std::int32_t index) const;
  /// The settable value that is nearest to `wanted` and not above it, but the minimum at least.
  std::int32_t at_most(double wanted) const;
};

/// The controls that scene modes, light, focus and zoom are made of, as far as the devices have them and let them be
/// read and set; each one that governs others stands before these.
std::vector<DeviceControl> list_controls(const ControlDevices& devices);

/// The control that may take `id` into the camera's own hands; 0 for none.
std::uint32_t governor_of(std::uint32_t id);
/// Whether a governor does so at this value.
bool governs(std::uint32_t governor, std::int32_t value);

/// Whether a control may be set now: neither governed nor grabbed.
bool settable_now(ControlDevice& device, std::uint32_t id);

/// @return 0 or an errno value
int get_control(ControlDevice& device, std::uint32_t id, std::int32_t* value);
int set_control(ControlDevice& device, std::uint32_t id, std::int32_t value);

}  // namespace handset

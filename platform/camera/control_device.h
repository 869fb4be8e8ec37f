#pragma once

// A camera's V4L2 controls as the kernel presents them.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace handset {

/// A device node queried with ioctl(2). Tests supply their own devices.
class ControlDevice {
 public:
  virtual ~ControlDevice() = default;
  /// May take hundreds of milliseconds: a webcam answers over USB.
  /// @return 0 or an errno value
  virtual int call(unsigned long request, void* argument) = 0;
};

using ControlDevices = std::vector<std::unique_ptr<ControlDevice>>;

/// Opens the holders of a camera's controls: its node, and its media device's flash if there is one. Works alongside
/// whoever streams from the camera. Waits up to three seconds for a node whose controls another of our programs owns;
/// `cancelled` ends the wait.
/// @param node  "/dev/videoN"
/// @return empty if the node cannot be opened or is not released
ControlDevices open_control_devices(const std::string& node, const std::atomic<bool>& cancelled);

/// Device number of the first flash among a media device's entities.
/// @return 0 if none
std::uint64_t flash_of(ControlDevice& media);

/// A control that can be read and set, or a button.
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
  std::int32_t value = 0;      ///< the original value; 0 for a button
  bool button = false;         ///< acts when set
  bool integer_menu = false;   ///< an index into `entries`
  std::vector<Entry> entries;  ///< the menu entries that can be chosen

  bool has_entry(std::int32_t index) const;
  /// The largest settable value not above `wanted`, but at least the minimum.
  std::int32_t at_most(double wanted) const;
};

/// The controls behind scene modes, light, focus and zoom, as far as the devices have them and let them be read and
/// set; governors precede what they govern.
std::vector<DeviceControl> list_controls(const ControlDevices& devices);

/// The control that may put `id` under the camera's own control; 0 if none.
std::uint32_t governor_of(std::uint32_t id);
/// Whether a governor does so at this value.
bool governs(std::uint32_t governor, std::int32_t value);

/// Whether a control can be set now: neither governed nor grabbed.
bool settable_now(ControlDevice& device, std::uint32_t id);

/// @return 0 or an errno value
int get_control(ControlDevice& device, std::uint32_t id, std::int32_t* value);
int set_control(ControlDevice& device, std::uint32_t id, std::int32_t value);

}  // namespace handset

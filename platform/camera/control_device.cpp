#include "platform/camera/control_device.h"

#include <fcntl.h>
#include <linux/media.h>
#include <linux/videodev2.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <thread>

namespace handset {
namespace {

constexpr std::chrono::milliseconds lock_patience{3000};
constexpr std::chrono::milliseconds lock_turn{50};
constexpr int most_entries = 256;   ///< of a menu
constexpr int most_entities = 256;  ///< of a media device

/// In the order in which they are set: governors first.
constexpr std::uint32_t wanted_controls[] = {
    V4L2_CID_SCENE_MODE,
    V4L2_CID_EXPOSURE_AUTO,
    V4L2_CID_EXPOSURE_ABSOLUTE,
    V4L2_CID_EXPOSURE_AUTO_PRIORITY,
    V4L2_CID_AUTO_EXPOSURE_BIAS,
    V4L2_CID_GAIN,
    V4L2_CID_BACKLIGHT_COMPENSATION,
    V4L2_CID_FOCUS_AUTO,
    V4L2_CID_AUTO_FOCUS_RANGE,
    V4L2_CID_FOCUS_ABSOLUTE,
    V4L2_CID_AUTO_FOCUS_START,
    V4L2_CID_ZOOM_ABSOLUTE,
    V4L2_CID_FLASH_LED_MODE,
    V4L2_CID_ILLUMINATORS_1,
    V4L2_CID_ILLUMINATORS_2,
};

class NodeDevice : public ControlDevice {
 public:
  explicit NodeDevice(int fd) : fd_(fd) {}
  NodeDevice(const NodeDevice&) = delete;
  NodeDevice& operator=(const NodeDevice&) = delete;
  ~NodeDevice() override { close(fd_); }

  int call(unsigned long request, void* argument) override {
    for (;;) {
      if (ioctl(fd_, request, argument) == 0) return 0;
      if (errno != EINTR) return errno;
    }
  }

  /// One program at a time owns a camera's controls.
  bool lock(const std::atomic<bool>& cancelled) const {
    const auto end = std::chrono::steady_clock::now() + lock_patience;
    while (flock(fd_, LOCK_EX | LOCK_NB) != 0) {
      if (errno == EINTR) continue;
      if (errno != EWOULDBLOCK || cancelled || std::chrono::steady_clock::now() > end) return false;
      std::this_thread::sleep_for(lock_turn);
    }
    return true;
  }

 private:
  const int fd_;
};

std::unique_ptr<NodeDevice> open_node(const std::string& path) {
  const int fd = open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  return fd >= 0 ? std::make_unique<NodeDevice>(fd) : nullptr;
}

std::string sysfs_of(std::uint64_t device) {
  return "/sys/dev/char/" + std::to_string(major(device)) + ":" + std::to_string(minor(device));
}

/// Path in /dev of the media device that a video node belongs to; empty if none.
std::string media_node_of(const std::string& video_node) {
  struct stat node {};
  if (stat(video_node.c_str(), &node) != 0) return {};
  std::error_code error;
  auto entry = std::filesystem::directory_iterator(sysfs_of(node.st_rdev) + "/device", error);
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    if (name.rfind("media", 0) == 0 && name.size() > 5) return "/dev/" + name;
  }
  return {};
}

std::string node_of(std::uint64_t device) {
  std::ifstream properties(sysfs_of(device) + "/uevent");
  const std::string key = "DEVNAME=";
  for (std::string line; std::getline(properties, line);) {
    if (line.rfind(key, 0) == 0) return "/dev/" + line.substr(key.size());
  }
  return {};
}

bool is_menu(std::uint32_t type) {
  return type == V4L2_CTRL_TYPE_MENU || type == V4L2_CTRL_TYPE_INTEGER_MENU;
}

bool known_type(std::uint32_t type) {
  return is_menu(type) || type == V4L2_CTRL_TYPE_INTEGER || type == V4L2_CTRL_TYPE_BOOLEAN ||
         type == V4L2_CTRL_TYPE_BUTTON;
}

std::vector<DeviceControl::Entry> list_entries(ControlDevice& device, const v4l2_query_ext_ctrl& query) {
  std::vector<DeviceControl::Entry> entries;
  if (query.minimum < 0 || query.maximum - query.minimum >= most_entries) return entries;
  for (std::int64_t index = query.minimum; index <= query.maximum; ++index) {
    v4l2_querymenu menu{};
    menu.id = query.id;
    menu.index = static_cast<std::uint32_t>(index);
    if (device.call(VIDIOC_QUERYMENU, &menu) != 0) continue;  // menus have gaps
    const std::int64_t value = query.type == V4L2_CTRL_TYPE_INTEGER_MENU ? menu.value : 0;
    entries.push_back({static_cast<std::int32_t>(index), value});
  }
  return entries;
}

/// @return whether the device has the control and lets us set it
bool read_control(ControlDevice& device, std::uint32_t id, DeviceControl* control) {
  v4l2_query_ext_ctrl query{};
  query.id = id;
  if (device.call(VIDIOC_QUERY_EXT_CTRL, &query) != 0 || !known_type(query.type)) return false;
  control->id = id;
  control->button = query.type == V4L2_CTRL_TYPE_BUTTON;
  const std::uint32_t hindrances = V4L2_CTRL_FLAG_DISABLED | V4L2_CTRL_FLAG_READ_ONLY | V4L2_CTRL_FLAG_GRABBED |
                                   V4L2_CTRL_FLAG_HAS_PAYLOAD | (control->button ? 0 : V4L2_CTRL_FLAG_WRITE_ONLY);
  if ((query.flags & hindrances) != 0 || query.minimum > query.maximum) return false;
  control->minimum = query.minimum;
  control->maximum = query.maximum;
  control->step = query.step > 0 ? static_cast<std::int64_t>(query.step) : 1;
  control->integer_menu = query.type == V4L2_CTRL_TYPE_INTEGER_MENU;
  const bool inactive = (query.flags & V4L2_CTRL_FLAG_INACTIVE) != 0;
  if (inactive && governor_of(id) == 0) return false;
  if (control->button) return true;
  if (is_menu(query.type)) control->entries = list_entries(device, query);
  return get_control(device, id, &control->value) == 0;  // else it could not be restored
}

}  // namespace

ControlDevices open_control_devices(const std::string& node, const std::atomic<bool>& cancelled) {
  ControlDevices devices;
  std::unique_ptr<NodeDevice> camera = open_node(node);
  if (!camera || !camera->lock(cancelled)) return devices;
  devices.push_back(std::move(camera));
  const std::string media_path = media_node_of(node);
  const std::unique_ptr<NodeDevice> media = media_path.empty() ? nullptr : open_node(media_path);
  if (!media) return devices;
  const std::uint64_t flash = flash_of(*media);
  if (flash == 0) return devices;
  if (std::unique_ptr<NodeDevice> lamp = open_node(node_of(flash))) devices.push_back(std::move(lamp));
  return devices;
}

std::uint64_t flash_of(ControlDevice& media) {
  media_entity_desc entity{};
  for (int i = 0; i < most_entities; ++i) {
    entity.id |= MEDIA_ENT_ID_FLAG_NEXT;
    if (media.call(MEDIA_IOC_ENUM_ENTITIES, &entity) != 0) return 0;
    if (entity.type == MEDIA_ENT_F_FLASH) return makedev(entity.dev.major, entity.dev.minor);
  }
  return 0;
}

bool DeviceControl::has_entry(std::int32_t index) const {
  return std::any_of(entries.begin(), entries.end(), [index](const Entry& entry) { return entry.index == index; });
}

std::int32_t DeviceControl::at_most(double wanted) const {
  const double steps = std::floor((wanted - static_cast<double>(minimum)) / static_cast<double>(step) + 1e-9);
  const std::int64_t most = (maximum - minimum) / step;
  return static_cast<std::int32_t>(minimum +
                                   std::clamp(static_cast<std::int64_t>(steps), std::int64_t{0}, most) * step);
}

std::vector<DeviceControl> list_controls(const ControlDevices& devices) {
  std::vector<DeviceControl> controls;
  for (const std::uint32_t id : wanted_controls) {
    for (std::size_t device = 0; device < devices.size(); ++device) {
      DeviceControl control;
      control.device = device;
      if (!read_control(*devices[device], id, &control)) continue;
      controls.push_back(std::move(control));
      break;
    }
  }
  return controls;
}

std::uint32_t governor_of(std::uint32_t id) {
  switch (id) {
    case V4L2_CID_EXPOSURE_ABSOLUTE:
      return V4L2_CID_EXPOSURE_AUTO;
    case V4L2_CID_FOCUS_ABSOLUTE:
      return V4L2_CID_FOCUS_AUTO;
    default:
      return 0;
  }
}

bool governs(std::uint32_t governor, std::int32_t value) {
  if (governor == V4L2_CID_FOCUS_AUTO) return value != 0;
  return governor == V4L2_CID_EXPOSURE_AUTO &&
         (value == V4L2_EXPOSURE_AUTO || value == V4L2_EXPOSURE_APERTURE_PRIORITY);
}

bool settable_now(ControlDevice& device, std::uint32_t id) {
  v4l2_query_ext_ctrl query{};
  query.id = id;
  if (device.call(VIDIOC_QUERY_EXT_CTRL, &query) != 0) return true;  // setting it will tell
  return (query.flags & (V4L2_CTRL_FLAG_INACTIVE | V4L2_CTRL_FLAG_GRABBED | V4L2_CTRL_FLAG_READ_ONLY)) == 0;
}

int get_control(ControlDevice& device, std::uint32_t id, std::int32_t* value) {
  v4l2_control control{id, 0};
  const int error = device.call(VIDIOC_G_CTRL, &control);
  if (error == 0) *value = control.value;
  return error;
}

int set_control(ControlDevice& device, std::uint32_t id, std::int32_t value) {
  v4l2_control control{id, value};
  return device.call(VIDIOC_S_CTRL, &control);
}

}  // namespace handset

#include "platform/camera/device_finder.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <map>

namespace handset {
namespace {

constexpr double slowest_rate = 10;

std::string text_of(const GstStructure* structure, const char* field) {
  const char* value = structure != nullptr ? gst_structure_get_string(structure, field) : nullptr;
  return value != nullptr ? value : "";
}

/// What names a camera for good: the bus position and serial of a V4L2 device, a PipeWire node's name.
std::string identity_of(const GstStructure* properties, const std::string& label) {
  for (const char* field : {"device.serial", "device.bus-path", "udev-devpath", "v4l2.device.bus_info",
                            "api.v4l2.cap.bus_info", "node.name"}) {
    const std::string value = text_of(properties, field);
    if (!value.empty()) return label + "@" + value;
  }
  return label;
}

/// The device node behind a camera, by which V4L2's and PipeWire's views of it are matched.
std::string device_path(const GstStructure* properties) {
  for (const char* field : {"api.v4l2.path", "device.path"}) {
    const std::string value = text_of(properties, field);
    if (!value.empty()) return value;
  }
  return {};
}

double highest_rate(const GstStructure* structure) {
  const GValue* value = gst_structure_get_value(structure, "framerate");
  if (value == nullptr) return 30;
  const auto rate = [](const GValue* fraction) {
    const int denominator = gst_value_get_fraction_denominator(fraction);
    return denominator > 0 ? static_cast<double>(gst_value_get_fraction_numerator(fraction)) / denominator : 0.0;
  };
  if (GST_VALUE_HOLDS_FRACTION(value)) return rate(value) > 0 ? rate(value) : 30;  // 0/1: it varies
  if (GST_VALUE_HOLDS_FRACTION_RANGE(value)) return std::min(rate(gst_value_get_fraction_range_max(value)), 60.0);
  double best = 0;
  if (GST_VALUE_HOLDS_LIST(value)) {
    for (guint i = 0; i < gst_value_list_get_size(value); ++i) {
      const GValue* entry = gst_value_list_get_value(value, i);
      if (GST_VALUE_HOLDS_FRACTION(entry)) best = std::max(best, rate(entry));
    }
  }
  return best;
}

/// The sizes that one structure of the caps stands for.
std::vector<camera_res_t> sizes_of(const GstStructure* structure) {
  int width = 0;
  int height = 0;
  if (gst_structure_get_int(structure, "width", &width) && gst_structure_get_int(structure, "height", &height)) {
    return {{static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)}};
  }
  constexpr std::array<camera_res_t, 5> usual = {{{1920, 1080}, {1280, 720}, {960, 540}, {640, 480}, {320, 240}}};
  std::vector<camera_res_t> sizes;
  for (const camera_res_t& size : usual) {
    GstStructure* wanted = gst_structure_new(gst_structure_get_name(structure), "width", G_TYPE_INT, size.width,
                                             "height", G_TYPE_INT, size.height, nullptr);
    if (gst_structure_can_intersect(structure, wanted)) sizes.push_back(size);
    gst_structure_free(wanted);
  }
  return sizes;
}

/// The process's monitor, started at the first call and never stopped: stopping PipeWire's provider (0.3.65)
/// while a camera comes or goes corrupts the heap.
GstDeviceMonitor* device_monitor() {
  static GstDeviceMonitor* const monitor = [] {
    GstDeviceMonitor* fresh = gst_device_monitor_new();
    gst_device_monitor_add_filter(fresh, "Video/Source", nullptr);
    // Nobody reads its news; the list is asked for when it is needed.
    const BusPtr bus = BusPtr::adopt(gst_device_monitor_get_bus(fresh));
    gst_bus_set_flushing(bus.get(), TRUE);
    gst_device_monitor_start(fresh);
    return fresh;
  }();
  return monitor;
}

}  // namespace

std::vector<CameraMode> camera_modes(const GstCaps* caps) {
  std::vector<CameraMode> modes;
  for (guint i = 0; caps != nullptr && i < gst_caps_get_size(caps); ++i) {
    const GstStructure* structure = gst_caps_get_structure(caps, i);
    const bool raw = gst_structure_has_name(structure, "video/x-raw");
    if (!raw && !gst_structure_has_name(structure, "image/jpeg")) continue;
    const double rate = highest_rate(structure);
    for (const camera_res_t& size : sizes_of(structure)) {
      if (rate < slowest_rate || size.width % 2 != 0 || size.height % 2 != 0) continue;
      auto mode = std::find_if(modes.begin(), modes.end(), [&](const CameraMode& m) {
        return m.size.width == size.width && m.size.height == size.height;
      });
      if (mode == modes.end()) mode = modes.insert(modes.end(), CameraMode{size});
      double& best = raw ? mode->raw_rate : mode->jpeg_rate;
      best = std::max(best, rate);
    }
  }
  std::stable_sort(modes.begin(), modes.end(), [](const CameraMode& a, const CameraMode& b) {
    return a.size.width * a.size.height > b.size.width * b.size.height;
  });
  return modes;
}

std::vector<FoundCamera> find_cameras() {
  GList* devices = gst_device_monitor_get_devices(device_monitor());

  std::map<std::string, FoundCamera> by_node;
  for (GList* entry = devices; entry != nullptr; entry = entry->next) {
    auto device = ObjectPtr<GstDevice>::adopt(GST_DEVICE(entry->data));
    const GStringPtr label(gst_device_get_display_name(device.get()), g_free);
    const CapsPtr caps = CapsPtr::adopt(gst_device_get_caps(device.get()));
    std::vector<CameraMode> modes = camera_modes(caps.get());
    if (modes.empty()) continue;
    GstStructure* properties = gst_device_get_properties(device.get());
    const std::string path = device_path(properties);
    FoundCamera camera{identity_of(properties, label.get()), label.get(), std::move(device), std::move(modes), path};
    const bool v4l2 = text_of(properties, "device.api") == "v4l2" && !gst_structure_has_field(properties, "node.name");
    if (properties != nullptr) gst_structure_free(properties);
    // V4L2's own view of a device is nearer to it than PipeWire's.
    const std::string node = path.empty() ? camera.identity : path;
    if (v4l2 || by_node.find(node) == by_node.end()) by_node.insert_or_assign(node, std::move(camera));
  }
  g_list_free(devices);

  std::vector<FoundCamera> cameras;
  for (auto& [node, camera] : by_node) cameras.push_back(std::move(camera));
  std::sort(cameras.begin(), cameras.end(),
            [](const FoundCamera& a, const FoundCamera& b) { return a.identity < b.identity; });
  return cameras;
}

CameraRoles assign_roles(const std::vector<std::string>& identities, const std::string& remembered_rear,
                         const std::string& remembered_front) {
  const auto index_of = [&](const std::string& identity) {
    const auto found = std::find(identities.begin(), identities.end(), identity);
    return identity.empty() || found == identities.end() ? -1 : static_cast<int>(found - identities.begin());
  };
  CameraRoles roles{index_of(remembered_rear), index_of(remembered_front)};
  for (int i = 0; i < static_cast<int>(identities.size()); ++i) {
    if (i == roles.rear || i == roles.front) continue;
    if (roles.rear < 0) {
      roles.rear = i;
    } else if (roles.front < 0) {
      roles.front = i;
    }
  }
  if (roles.rear < 0) roles.rear = roles.front;
  if (roles.front < 0) roles.front = roles.rear;
  return roles;
}

}  // namespace handset

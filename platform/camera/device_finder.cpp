#include "platform/camera/device_finder.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <map>

namespace handset {
namespace {

std::string text_of(const GstStructure* structure, const char* field) {
  const char* value = structure != nullptr ? gst_structure_get_string(structure, field) : nullptr;
  return value != nullptr ? value : "";
}

std::string identity_of(const GstStructure* properties, const std::string& label) {
  for (const char* field : {"device.serial", "device.bus-path", "udev-devpath", "v4l2.device.bus_info",
                            "api.v4l2.cap.bus_info", "node.name"}) {
    const std::string value = text_of(properties, field);
    if (!value.empty()) return label + "@" + value;
  }
  return label;
}

GstDeviceMonitor* device_monitor() {
  static GstDeviceMonitor* const monitor = [] {
    GstDeviceMonitor* fresh = gst_device_monitor_new();
    gst_device_monitor_add_filter(fresh, "Video/Source", nullptr);
    const BusPtr bus = BusPtr::adopt(gst_device_monitor_get_bus(fresh));
    gst_bus_set_flushing(bus.get(), TRUE);
    gst_device_monitor_start(fresh);
    return fresh;
  }();
  return monitor;
}

std::string lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

}  // namespace

std::vector<FoundCamera> find_cameras() {
  GList* devices = gst_device_monitor_get_devices(device_monitor());
  std::map<std::string, FoundCamera> by_identity;
  for (GList* entry = devices; entry != nullptr; entry = entry->next) {
    FoundCamera camera;
    camera.device = ObjectPtr<GstDevice>::adopt(GST_DEVICE(entry->data));
    const GStringPtr label(gst_device_get_display_name(camera.device.get()), g_free);
    const CapsPtr caps = CapsPtr::adopt(gst_device_get_caps(camera.device.get()));
    camera.label = label.get();
    camera.modes = camera_modes(caps.get(), installed_decoders());
    if (camera.modes.empty()) continue;
    GstStructure* properties = gst_device_get_properties(camera.device.get());
    camera.identity = identity_of(properties, camera.label);
    camera.node = text_of(properties, "api.v4l2.path");
    if (properties != nullptr) gst_structure_free(properties);
    by_identity.insert_or_assign(camera.identity, std::move(camera));
  }
  g_list_free(devices);
  std::vector<FoundCamera> cameras;
  for (auto& [identity, camera] : by_identity) cameras.push_back(std::move(camera));
  return cameras;
}

CameraRoles assign_roles(const std::vector<FoundCamera>& cameras, const std::string& remembered_rear,
                         const std::string& remembered_front) {
  const int count = static_cast<int>(cameras.size());
  const auto at = [&](int index) -> const FoundCamera& { return cameras[static_cast<std::size_t>(index)]; };
  const bool any_color = std::any_of(cameras.begin(), cameras.end(),
                                     [](const FoundCamera& c) { return c.usable() && c.kind != CameraKind::infrared; });
  const auto may_serve = [&](int index) {
    return at(index).usable() && (!any_color || at(index).kind != CameraKind::infrared);
  };
  CameraRoles roles;
  for (int i = 0; i < count; ++i) {
    if (!may_serve(i)) continue;
    if (!remembered_rear.empty() && at(i).identity == remembered_rear) roles.rear = i;
    if (!remembered_front.empty() && at(i).identity == remembered_front) roles.front = i;
  }
  const auto fill = [&](int* role, const auto& fits) {
    for (int i = 0; i < count && *role < 0; ++i) {
      if (may_serve(i) && i != roles.rear && i != roles.front && fits(at(i))) *role = i;
    }
  };
  fill(&roles.rear, [](const FoundCamera& c) { return c.location == CameraLocation::rear; });
  fill(&roles.front, [](const FoundCamera& c) { return c.location == CameraLocation::front; });
  fill(&roles.rear, [](const FoundCamera&) { return true; });
  fill(&roles.front, [](const FoundCamera&) { return true; });
  if (roles.rear < 0) roles.rear = roles.front;
  if (roles.front < 0) roles.front = roles.rear;
  return roles;
}

int find_by_name(const std::vector<FoundCamera>& cameras, const std::string& name, std::string* complaint, int* error) {
  const std::string wanted = lower(name);
  std::vector<int> whole;
  std::vector<int> part;
  for (std::size_t i = 0; i < cameras.size(); ++i) {
    for (const std::string& text : {lower(cameras[i].identity), lower(cameras[i].label)}) {
      std::vector<int>* const matches = text == wanted                           ? &whole
                                        : text.find(wanted) != std::string::npos ? &part
                                                                                 : nullptr;
      const int index = static_cast<int>(i);
      if (matches != nullptr && (matches->empty() || matches->back() != index)) matches->push_back(index);
    }
  }
  const std::vector<int>& matches = whole.empty() ? part : whole;
  if (matches.size() == 1) return matches.front();
  const bool ambiguous = !matches.empty();
  *error = ambiguous ? EINVAL : ENODEV;
  *complaint = ambiguous ? "several cameras are called \"" + name + "\": " : "no camera is called \"" + name + "\"";
  std::string list;
  for (std::size_t i = 0; i < cameras.size(); ++i) {
    if (ambiguous && std::find(matches.begin(), matches.end(), static_cast<int>(i)) == matches.end()) continue;
    list += (list.empty() ? "" : ", ") + cameras[i].identity;
  }
  if (!ambiguous) *complaint += list.empty() ? ", and there is none at all" : "; there are: ";
  *complaint += list;
  return -1;
}

}  // namespace handset

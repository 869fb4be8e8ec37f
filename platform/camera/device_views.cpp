#include "platform/camera/device_views.h"

#include <condition_variable>
#include <mutex>
#include <thread>

#include "platform/camera/v4l2_node.h"

namespace handset {
namespace {

/// The process's monitor, never stopped: stopping PipeWire's provider (0.3.65) while a camera comes or goes corrupts
/// the heap.
struct Monitor {
  std::mutex mutex;  ///< guards the rest
  std::condition_variable changed;
  bool answered = false;
  std::vector<DeviceView> views;
  std::function<void()> news;
};

std::string text_of(const GstStructure* structure, const char* field) {
  const char* value = structure != nullptr ? gst_structure_get_string(structure, field) : nullptr;
  return value != nullptr ? value : "";
}

std::string first_of(const GstStructure* properties, std::initializer_list<const char*> fields) {
  for (const char* field : fields) {
    const std::string value = text_of(properties, field);
    if (!value.empty()) return value;
  }
  return {};
}

/// Takes name and place of a view's node from where the node's own answers have them: the camera has one identity then.
void take_place(DeviceView* view) {
  if (view->node.empty()) return;
  const V4l2Place place = find_place(view->node);
  if (place.bus.empty() || "/dev/" + place.name == view->node) return;  // not there
  view->label = tidy_label(place.name);
  view->serial = place.serial;
  view->permanent = place.bus;
}

/// libcamera's names of USB cameras end in "-vvvv:pppp".
std::string usb_id_of(const std::string& libcamera_path) {
  if (libcamera_path.size() < 10) return {};
  const std::string end = libcamera_path.substr(libcamera_path.size() - 10);
  return end[0] == '-' && end[5] == ':' ? end.substr(1) : std::string();
}

std::vector<DeviceView> list_views(GstDeviceMonitor* monitor) {
  const Decoders decoders = installed_decoders();
  std::vector<DeviceView> views;
  GList* devices = gst_device_monitor_get_devices(monitor);
  for (GList* entry = devices; entry != nullptr; entry = entry->next) {
    auto device = ObjectPtr<GstDevice>::adopt(GST_DEVICE(entry->data));
    const GStringPtr label(gst_device_get_display_name(device.get()), g_free);
    GstStructure* properties = gst_device_get_properties(device.get());
    DeviceView view = read_view(label ? label.get() : "", properties);
    if (properties != nullptr) gst_structure_free(properties);
    take_place(&view);
    const CapsPtr caps = CapsPtr::adopt(gst_device_get_caps(device.get()));
    std::vector<std::string> refused;
    view.modes = camera_modes(caps.get(), decoders, &refused);
    for (const std::string& format : refused) {
      if (view.refused.find(format) == std::string::npos) view.refused += (view.refused.empty() ? "" : ", ") + format;
    }
    view.device = std::move(device);
    views.push_back(std::move(view));
  }
  g_list_free(devices);
  return views;
}

void publish(Monitor* shared, GstDeviceMonitor* monitor) {
  std::vector<DeviceView> views = list_views(monitor);
  std::function<void()> news;
  {
    const std::lock_guard lock(shared->mutex);
    shared->views = std::move(views);
    shared->answered = true;
    news = shared->news;
  }
  shared->changed.notify_all();
  if (news) news();
}

/// Starts the monitor and reads its news for as long as the process lives.
void watch(Monitor* shared) {
  gst_init(nullptr, nullptr);
  // The kernel is asked directly: its nodes need no second one who opens them.
  if (GstDeviceProviderFactory* own = gst_device_provider_factory_find("v4l2deviceprovider")) {
    gst_plugin_feature_set_rank(GST_PLUGIN_FEATURE(own), GST_RANK_NONE);
    gst_object_unref(own);
  }
  GstDeviceMonitor* monitor = gst_device_monitor_new();
  gst_device_monitor_add_filter(monitor, "Video/Source", nullptr);
  const BusPtr bus = BusPtr::adopt(gst_device_monitor_get_bus(monitor));
  gst_device_monitor_start(monitor);
  for (;;) {
    publish(shared, monitor);
    // Devices that come, change and go are all that is told on this bus.
    while (!MessagePtr::adopt(gst_bus_timed_pop(bus.get(), GST_CLOCK_TIME_NONE))) {
    }
    // The others that come with it are in the same list.
    while (const MessagePtr message = MessagePtr::adopt(gst_bus_pop(bus.get()))) {
    }
  }
}

Monitor& monitor() {
  static Monitor* const instance = [] {
    auto* fresh = new Monitor;  // its thread lives as long as the process
    std::thread(watch, fresh).detach();
    return fresh;
  }();
  return *instance;
}

}  // namespace

DeviceView read_view(const std::string& label, const GstStructure* properties) {
  DeviceView view;
  view.former = first_of(properties, {"device.serial", "device.bus-path", "udev-devpath", "v4l2.device.bus_info",
                                      "api.v4l2.cap.bus_info", "node.name"});
  view.former = view.former.empty() ? label : label + "@" + view.former;
  constexpr std::string_view suffix = " (V4L2)";
  view.label = label.ends_with(suffix) ? label.substr(0, label.size() - suffix.size()) : label;
  view.label = tidy_label(view.label);
  view.node = first_of(properties, {"api.v4l2.path", "device.path"});
  view.serial = text_of(properties, "device.serial");
  view.permanent =
      first_of(properties, {"device.bus-path", "api.libcamera.path", "api.v4l2.cap.bus_info", "node.name"});
  view.usb_id = usb_id_of(text_of(properties, "api.libcamera.path"));
  const std::string location = text_of(properties, "api.libcamera.location");
  view.location = location == "front"  ? CameraLocation::front
                  : location == "back" ? CameraLocation::rear
                                       : location_in(view.label);
  return view;
}

std::vector<DeviceView> device_views(std::chrono::milliseconds limit, bool* answered) {
  Monitor& shared = monitor();
  std::unique_lock lock(shared.mutex);
  *answered = shared.changed.wait_for(lock, limit, [&] { return shared.answered; });
  return shared.views;
}

void set_device_news(std::function<void()> callback) {
  Monitor& shared = monitor();
  const std::lock_guard lock(shared.mutex);
  shared.news = std::move(callback);
}

}  // namespace handset

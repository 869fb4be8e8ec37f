#include "platform/camera/device_views.h"

#include <condition_variable>
#include <mutex>
#include <string_view>
#include <thread>

#include "platform/camera/server_link.h"
#include "platform/camera/v4l2_node.h"

namespace handset {
namespace {

constexpr char server_gone[] = "server-gone";
constexpr char server_back[] = "server-back";
constexpr std::chrono::seconds connect_period{2};

/// Who tells of devices. Providers are never stopped: stopping PipeWire's (0.3.65) while a camera comes or goes
/// corrupts the heap. Nor does it notice that its server is gone: after a restart another one takes its place.
struct Providers {
  ObjectPtr<GstDeviceMonitor> monitor;
  BusPtr bus;                             ///< the monitor's, with news of all
  bool restarted = false;                 ///< PipeWire's devices are `pipewire`'s, no longer the monitor's
  GstDeviceProvider* pipewire = nullptr;  ///< on the server's newest connection; null while there is none
};

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

/// Takes over a list and its references.
std::vector<ObjectPtr<GstDevice>> take_devices(GList* list) {
  std::vector<ObjectPtr<GstDevice>> devices;
  for (GList* entry = list; entry != nullptr; entry = entry->next) {
    devices.push_back(ObjectPtr<GstDevice>::adopt(GST_DEVICE(entry->data)));
  }
  g_list_free(list);
  return devices;
}

std::vector<ObjectPtr<GstDevice>> list_devices(const Providers& providers) {
  auto devices = take_devices(gst_device_monitor_get_devices(providers.monitor.get()));
  if (!providers.restarted) return devices;
  std::erase_if(devices, [](const auto& device) {
    return std::string_view(G_OBJECT_TYPE_NAME(device.get())) == "GstPipeWireDevice";
  });
  if (providers.pipewire == nullptr) return devices;
  for (auto& device : take_devices(gst_device_provider_get_devices(providers.pipewire))) {
    if (gst_device_has_classes(device.get(), "Video/Source")) devices.push_back(std::move(device));
  }
  return devices;
}

std::vector<DeviceView> list_views(const Providers& providers) {
  const Decoders decoders = installed_decoders();
  std::vector<DeviceView> views;
  for (auto& device : list_devices(providers)) {
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
  return views;
}

void publish(Monitor* shared, const Providers& providers) {
  std::vector<DeviceView> views = list_views(providers);
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

/// Posts a message whenever the server at the other end of `fd` is gone, and one with a fresh connection when it, or
/// the first one, is there. Connections stay open: the plugin tells them apart by number.
[[noreturn]] void follow_server(int fd, GstBus* bus) {
  const auto tell = [bus](const char* what, int connection) {
    GstStructure* words = gst_structure_new(what, "fd", G_TYPE_INT, connection, nullptr);
    gst_bus_post(bus, gst_message_new_application(nullptr, words));
  };
  for (;;) {
    if (fd >= 0) {
      wait_for_hang_up(fd);
      tell(server_gone, -1);
      std::this_thread::sleep_for(connect_period);  // one that hangs up at once is not to keep us busy
    }
    while ((fd = connect_to_server()) < 0) std::this_thread::sleep_for(connect_period);
    tell(server_back, fd);
  }
}

/// A provider of PipeWire's devices on a connection of its own, never given up; null where the plugin is missing.
GstDeviceProvider* start_provider(int fd, GstBus* news) {
  const auto factory =
      ObjectPtr<GstDeviceProviderFactory>::adopt(gst_device_provider_factory_find("pipewiredeviceprovider"));
  const auto loaded =
      factory ? ObjectPtr<GstPluginFeature>::adopt(gst_plugin_feature_load(GST_PLUGIN_FEATURE(factory.get())))
              : ObjectPtr<GstPluginFeature>();
  if (!loaded) return nullptr;
  const GType type =
      gst_device_provider_factory_get_device_provider_type(reinterpret_cast<GstDeviceProviderFactory*>(loaded.get()));
  auto* provider = static_cast<GstDeviceProvider*>(g_object_new(type, "fd", fd, nullptr));
  const BusPtr bus = BusPtr::adopt(gst_device_provider_get_bus(provider));
  const auto pass_on = [](GstBus*, GstMessage* message, gpointer to) {
    gst_bus_post(static_cast<GstBus*>(to), message);
    return GST_BUS_DROP;
  };
  gst_bus_set_sync_handler(bus.get(), pass_on, news, nullptr);
  return gst_device_provider_start(provider) ? provider : nullptr;
}

/// Acts on what follow_server() tells.
void hear(const MessagePtr& message, Providers* providers) {
  if (!message || GST_MESSAGE_TYPE(message.get()) != GST_MESSAGE_APPLICATION) return;
  const GstStructure* words = gst_message_get_structure(message.get());
  int fd = -1;
  gst_structure_get_int(words, "fd", &fd);
  providers->restarted = true;
  providers->pipewire = fd >= 0 ? start_provider(fd, providers->bus.get()) : nullptr;
}

/// Starts the monitor and reads its news for as long as the process lives.
void watch(Monitor* shared) {
  gst_init(nullptr, nullptr);
  // The kernel is asked directly: its nodes need no second one who opens them.
  if (GstDeviceProviderFactory* own = gst_device_provider_factory_find("v4l2deviceprovider")) {
    gst_plugin_feature_set_rank(GST_PLUGIN_FEATURE(own), GST_RANK_NONE);
    gst_object_unref(own);
  }
  Providers providers;
  providers.monitor = ObjectPtr<GstDeviceMonitor>::adopt(gst_device_monitor_new());
  gst_device_monitor_add_filter(providers.monitor.get(), "Video/Source", nullptr);
  providers.bus = BusPtr::adopt(gst_device_monitor_get_bus(providers.monitor.get()));
  // Before the monitor: a server that starts in between is noticed.
  std::thread(follow_server, connect_to_server(), providers.bus.get()).detach();
  gst_device_monitor_start(providers.monitor.get());
  for (;;) {
    publish(shared, providers);
    hear(MessagePtr::adopt(gst_bus_timed_pop(providers.bus.get(), GST_CLOCK_TIME_NONE)), &providers);
    // The others that come with it are in the same list.
    while (const MessagePtr message = MessagePtr::adopt(gst_bus_pop(providers.bus.get()))) hear(message, &providers);
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

#include "tests/camera/fake_microphone.h"

#include <chrono>
#include <thread>

namespace {

GstElementClass* parent_class = nullptr;

GstPadProbeReturn see_first_block(GstPad* pad, GstPadProbeInfo* info, gpointer) {
  const auto element = handset::ElementPtr::adopt(gst_pad_get_parent_element(pad));
  const GstClockTime time = gst_element_get_base_time(element.get()) + GST_BUFFER_PTS(GST_PAD_PROBE_INFO_BUFFER(info));
  FakeMicrophone::instance().begin(static_cast<std::int64_t>(time));
  return GST_PAD_PROBE_REMOVE;
}

GstStateChangeReturn change_state(GstElement* element, GstStateChange transition) {
  FakeMicrophone& fake = FakeMicrophone::instance();
  if (!fake.change(element, transition)) return GST_STATE_CHANGE_FAILURE;
  if (transition == GST_STATE_CHANGE_NULL_TO_READY) {
    const auto pad = handset::ObjectPtr<GstPad>::adopt(gst_element_get_static_pad(element, "src"));
    gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, see_first_block, nullptr, nullptr);
  }
  const GstStateChangeReturn result = parent_class->change_state(element, transition);
  fake.changed(transition);
  return result;
}

void initialize_class(gpointer type, gpointer) {
  parent_class = static_cast<GstElementClass*>(g_type_class_peek_parent(type));
  static_cast<GstElementClass*>(type)->change_state = change_state;
}

void register_element() {
  gst_init(nullptr, nullptr);
  const auto found = handset::ObjectPtr<GstElementFactory>::adopt(gst_element_factory_find("audiotestsrc"));
  const auto loaded = handset::ObjectPtr<GstPluginFeature>::adopt(
      gst_plugin_feature_load(reinterpret_cast<GstPluginFeature*>(found.get())));
  const GType parent = gst_element_factory_get_element_type(reinterpret_cast<GstElementFactory*>(loaded.get()));
  GTypeQuery query;
  g_type_query(parent, &query);
  GTypeInfo info{};
  info.class_size = static_cast<guint16>(query.class_size);
  info.instance_size = static_cast<guint16>(query.instance_size);
  info.class_init = initialize_class;
  const GType type = g_type_register_static(parent, "FakeMicrophone", &info, static_cast<GTypeFlags>(0));
  gst_element_register(nullptr, "fakemicrophone", GST_RANK_NONE, type);
}

}  // namespace

FakeMicrophone& FakeMicrophone::instance() {
  static FakeMicrophone& fake = *[] {
    register_element();
    return new FakeMicrophone;
  }();
  return fake;
}

void FakeMicrophone::reset() {
  const std::lock_guard lock(mutex_);
  opening_time_ = 0;
  broken_ = opening_hangs_ = closing_hangs_ = false;
  opened_ = delivering_ = closed_ = 0;
  changed_.notify_all();
}

void FakeMicrophone::set_opening_time(int milliseconds) {
  const std::lock_guard lock(mutex_);
  opening_time_ = milliseconds;
}

void FakeMicrophone::set_broken(bool broken) {
  const std::lock_guard lock(mutex_);
  broken_ = broken;
}

void FakeMicrophone::set_opening_hangs(bool hangs) {
  const std::lock_guard lock(mutex_);
  opening_hangs_ = hangs;
  changed_.notify_all();
}

void FakeMicrophone::set_closing_hangs(bool hangs) {
  const std::lock_guard lock(mutex_);
  closing_hangs_ = hangs;
  changed_.notify_all();
}

int FakeMicrophone::opened() const {
  const std::lock_guard lock(mutex_);
  return opened_;
}

int FakeMicrophone::delivering() const {
  const std::lock_guard lock(mutex_);
  return delivering_;
}

int FakeMicrophone::closed() const {
  const std::lock_guard lock(mutex_);
  return closed_;
}

std::int64_t FakeMicrophone::delivering_since() const {
  const std::lock_guard lock(mutex_);
  return since_;
}

void FakeMicrophone::unplug() {
  std::unique_lock lock(mutex_);
  const auto element = handset::ElementPtr::share(element_.get());
  lock.unlock();
  GST_ELEMENT_ERROR(element.get(), RESOURCE, READ, ("unplugged"), (nullptr));
}

void FakeMicrophone::set_volume(double volume) {
  std::unique_lock lock(mutex_);
  const auto element = handset::ElementPtr::share(element_.get());
  lock.unlock();
  g_object_set(element.get(), "volume", volume, nullptr);
}

bool FakeMicrophone::change(GstElement* element, GstStateChange transition) {
  std::unique_lock lock(mutex_);
  if (transition == GST_STATE_CHANGE_NULL_TO_READY) {
    ++opened_;
    element_ = handset::ElementPtr::share(element);
    const auto time = std::chrono::milliseconds(opening_time_);
    changed_.wait(lock, [this] { return !opening_hangs_; });
    lock.unlock();
    std::this_thread::sleep_for(time);
    lock.lock();
    if (broken_) return false;
  }
  if (transition == GST_STATE_CHANGE_PLAYING_TO_PAUSED) changed_.wait(lock, [this] { return !closing_hangs_; });
  return true;
}

void FakeMicrophone::begin(std::int64_t first_block) {
  const std::lock_guard lock(mutex_);
  since_ = first_block;
  ++delivering_;
}

void FakeMicrophone::changed(GstStateChange transition) {
  const std::lock_guard lock(mutex_);
  if (transition == GST_STATE_CHANGE_READY_TO_NULL) ++closed_;
}

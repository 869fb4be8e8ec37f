#pragma once

// Owning handles for GStreamer. `adopt` takes over a reference that the caller holds (transfer full,
// or floating: it is sunk), `share` adds one (transfer none).

#include <gst/gst.h>

#include <memory>
#include <utility>

namespace handset {

/// Handle of a GstObject: element, pad, bus, device.
template <typename T>
class ObjectPtr {
 public:
  ObjectPtr() = default;
  ObjectPtr(const ObjectPtr& other) : ObjectPtr(share(other.object_)) {}
  ObjectPtr(ObjectPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  ObjectPtr& operator=(ObjectPtr other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~ObjectPtr() { reset(); }

  static ObjectPtr adopt(T* object) {
    if (object != nullptr && g_object_is_floating(object)) gst_object_ref_sink(object);
    return ObjectPtr(object);
  }
  static ObjectPtr share(T* object) {
    if (object != nullptr) gst_object_ref(object);
    return ObjectPtr(object);
  }

  T* get() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }
  void reset() {
    if (object_ != nullptr) gst_object_unref(std::exchange(object_, nullptr));
  }

 private:
  explicit ObjectPtr(T* object) : object_(object) {}
  T* object_ = nullptr;
};

/// Handle of a GstMiniObject: buffer, caps, message, sample.
template <typename T>
class MiniPtr {
 public:
  MiniPtr() = default;
  MiniPtr(MiniPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  MiniPtr& operator=(MiniPtr&& other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~MiniPtr() { reset(); }

  static MiniPtr adopt(T* object) { return MiniPtr(object); }
  static MiniPtr share(T* object) {
    if (object != nullptr) gst_mini_object_ref(GST_MINI_OBJECT_CAST(object));
    return MiniPtr(object);
  }
  MiniPtr share() const { return share(object_); }

  T* get() const { return object_; }
  T* release() { return std::exchange(object_, nullptr); }
  explicit operator bool() const { return object_ != nullptr; }
  void reset() {
    if (object_ != nullptr) gst_mini_object_unref(GST_MINI_OBJECT_CAST(std::exchange(object_, nullptr)));
  }

 private:
  explicit MiniPtr(T* object) : object_(object) {}
  T* object_ = nullptr;
};

using ElementPtr = ObjectPtr<GstElement>;
using BusPtr = ObjectPtr<GstBus>;
using BufferPtr = MiniPtr<GstBuffer>;
using CapsPtr = MiniPtr<GstCaps>;
using SamplePtr = MiniPtr<GstSample>;
using MessagePtr = MiniPtr<GstMessage>;

/// In a pad probe, replaces the caps event with one for other caps. Streaming thread.
inline void replace_caps_event(GstPadProbeInfo* info, const CapsPtr& caps) {
  gst_event_unref(gst_pad_probe_info_get_event(info));
  GST_PAD_PROBE_INFO_DATA(info) = gst_event_new_caps(caps.get());
}

/// String owned by GLib.
using GStringPtr = std::unique_ptr<char, decltype(&g_free)>;

}  // namespace handset

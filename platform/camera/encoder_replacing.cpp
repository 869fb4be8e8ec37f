#include <memory>
#include <utility>

#include "platform/camera/encoders.h"
#include "platform/camera/gst_ptr.h"
#include "platform/camera/handover.h"

namespace handset {
namespace {

struct Replacing {
  ElementPtr pipeline;
  ElementPtr old_one;
  ElementPtr new_one;
  bool done = false;
};

/// Called when no frame is between the pad and the pad after the encoder; none passes until it returns.
GstPadProbeReturn replace(GstPad* before, GstPadProbeInfo*, gpointer data) {
  const CalledBack scope(data);
  auto* replacing = static_cast<Replacing*>(data);
  if (std::exchange(replacing->done, true)) return GST_PAD_PROBE_REMOVE;
  GstElement* const old_one = replacing->old_one.get();
  GstElement* const new_one = replacing->new_one.get();
  const auto out = ObjectPtr<GstPad>::adopt(gst_element_get_static_pad(old_one, "src"));
  const auto after = ObjectPtr<GstPad>::adopt(gst_pad_get_peer(out.get()));
  gst_element_set_state(old_one, GST_STATE_NULL);
  gst_bin_remove(GST_BIN(replacing->pipeline.get()), old_one);
  gst_bin_add(GST_BIN(replacing->pipeline.get()), new_one);
  const auto sink = ObjectPtr<GstPad>::adopt(gst_element_get_static_pad(new_one, "sink"));
  const auto source = ObjectPtr<GstPad>::adopt(gst_element_get_static_pad(new_one, "src"));
  const bool linked = gst_pad_link(source.get(), after.get()) == GST_PAD_LINK_OK &&
                      gst_element_sync_state_with_parent(new_one) &&
                      gst_pad_link(before, sink.get()) == GST_PAD_LINK_OK;
  if (!linked) GST_ELEMENT_ERROR(new_one, CORE, NEGOTIATION, (nullptr), ("the encoder cannot be replaced"));
  return GST_PAD_PROBE_REMOVE;
}

}  // namespace

bool replace_video_encoder(GstElement* pipeline, const VideoEncoder& encoder, camera_res_t size, int frame_rate) {
  auto replacing = std::make_unique<Replacing>();
  replacing->pipeline = ElementPtr::share(pipeline);
  replacing->old_one = ElementPtr::adopt(gst_bin_get_by_name(GST_BIN(pipeline), "encoder"));
  replacing->new_one = ElementPtr::adopt(gst_parse_launch_full(
      video_encoder_element(encoder, size, frame_rate).c_str(), nullptr,
      static_cast<GstParseFlags>(GST_PARSE_FLAG_FATAL_ERRORS | GST_PARSE_FLAG_NO_SINGLE_ELEMENT_BINS), nullptr));
  if (!replacing->old_one || !replacing->new_one) return false;
  const auto in = ObjectPtr<GstPad>::adopt(gst_element_get_static_pad(replacing->old_one.get(), "sink"));
  const auto before = ObjectPtr<GstPad>::adopt(in ? gst_pad_get_peer(in.get()) : nullptr);
  if (!before) return false;
  handed_over(replacing.get());
  gst_pad_add_probe(before.get(), GST_PAD_PROBE_TYPE_IDLE, replace, replacing.release(), [](gpointer data) {
    taken_back(data);
    delete static_cast<Replacing*>(data);
  });
  return true;
}

}  // namespace handset

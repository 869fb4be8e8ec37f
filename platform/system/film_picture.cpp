#include "platform/system/film_picture.h"

#include <gst/app/gstappsink.h>

#include <algorithm>
#include <cmath>

#include "platform/camera/colorimetry.h"
#include "platform/camera/handover.h"
#include "platform/camera/range.h"

namespace handset {

namespace {

/// More than a display shows would only cost time.
constexpr int max_side = 1920;

const std::string frame_caps =
    std::string("video/x-raw,format=NV12,pixel-aspect-ratio=1/1,colorimetry=") + frame_colorimetry;

/// Lives as long as its bin. Streaming thread only.
struct PictureSink {
  std::function<void(const Frame&)> deliver;
  GstElement* filter = nullptr;  ///< in the bin
  bool limited_range = false;    ///< the converter leaves pictures in the film's limited range
  CapsPtr caps;
  std::shared_ptr<const GstVideoInfo> info;

  void set_input(GstPadProbeInfo* probe);
  GstFlowReturn take(SamplePtr sample);
};

void PictureSink::set_input(GstPadProbeInfo* probe) {
  GstCaps* input_caps = nullptr;
  gst_event_parse_caps(gst_pad_probe_info_get_event(probe), &input_caps);
  GstVideoInfo input;
  if (!gst_video_info_from_caps(&input, input_caps)) return;
  const PictureSize size = shown_size(GST_VIDEO_INFO_WIDTH(&input), GST_VIDEO_INFO_HEIGHT(&input),
                                      GST_VIDEO_INFO_PAR_N(&input), GST_VIDEO_INFO_PAR_D(&input), max_side);
  const CapsPtr wanted = CapsPtr::adopt(gst_caps_from_string(frame_caps.c_str()));
  gst_caps_set_simple(wanted.get(), "width", G_TYPE_INT, size.width, "height", G_TYPE_INT, size.height, nullptr);
  g_object_set(filter, "caps", wanted.get(), nullptr);
  limited_range = claim_full_range(probe, input);
}

GstFlowReturn PictureSink::take(SamplePtr sample) {
  if (!sample) return GST_FLOW_EOS;
  GstCaps* const sample_caps = gst_sample_get_caps(sample.get());
  if (caps.get() != sample_caps) {
    auto fresh = std::make_shared<GstVideoInfo>();
    if (!gst_video_info_from_caps(fresh.get(), sample_caps)) return GST_FLOW_NOT_NEGOTIATED;
    info = std::move(fresh);
    caps = CapsPtr::share(sample_caps);
  }
  BufferPtr picture = BufferPtr::share(gst_sample_get_buffer(sample.get()));
  sample.reset();
  if (limited_range) {
    // A decoder or the sink may still be reading it.
    GstBuffer* buffer = picture.get();
    if (!gst_buffer_is_writable(buffer) || !gst_buffer_is_all_memory_writable(buffer))
      picture = BufferPtr::adopt(gst_buffer_copy_deep(buffer));
    GstVideoFrame mapped;
    if (!picture || !gst_video_frame_map(&mapped, info.get(), picture.get(), GST_MAP_READWRITE)) return GST_FLOW_ERROR;
    expand_range(&mapped);
    gst_video_frame_unmap(&mapped);
  }
  deliver({std::move(picture), info, g_get_monotonic_time() * 1000});
  return GST_FLOW_OK;
}

GstPadProbeReturn on_input_event(GstPad*, GstPadProbeInfo* probe, gpointer data) {
  const CalledBack scope(data);
  if (GST_EVENT_TYPE(gst_pad_probe_info_get_event(probe)) == GST_EVENT_CAPS)
    static_cast<PictureSink*>(data)->set_input(probe);
  return GST_PAD_PROBE_OK;
}

GstFlowReturn on_preroll(GstAppSink* sink, gpointer data) {
  const CalledBack scope(data);
  return static_cast<PictureSink*>(data)->take(SamplePtr::adopt(gst_app_sink_pull_preroll(sink)));
}

GstFlowReturn on_sample(GstAppSink* sink, gpointer data) {
  const CalledBack scope(data);
  return static_cast<PictureSink*>(data)->take(SamplePtr::adopt(gst_app_sink_pull_sample(sink)));
}

int even(double length) {
  return std::max(2, static_cast<int>(std::lround(length / 2)) * 2);
}

}  // namespace

PictureSize shown_size(int width, int height, int par_numerator, int par_denominator, int max) {
  double w = width;
  double h = height;
  // Non-square pixels are stretched, so that no detail is lost.
  if (par_numerator > par_denominator) w = w * par_numerator / par_denominator;
  if (par_numerator < par_denominator) h = h * par_denominator / par_numerator;
  const double scale = std::min(1.0, max / std::max(w, h));
  return {even(w * scale), even(h * scale)};
}

ElementPtr make_film_picture_sink(std::function<void(const Frame&)> deliver, std::string* error) {
  GError* problem = nullptr;
  // A sink that reports lateness lets the decoder skip pictures instead of falling behind the sound.
  const std::string description =
      "videoconvertscale name=convert add-borders=false n-threads=2 ! capsfilter name=filter caps=" + frame_caps +
      " ! videoflip video-direction=auto ! " + "appsink name=sink max-buffers=1 qos=true enable-last-sample=false";
  ElementPtr bin = ElementPtr::adopt(
      gst_parse_bin_from_description_full(description.c_str(), TRUE, nullptr, GST_PARSE_FLAG_FATAL_ERRORS, &problem));
  if (!bin) {
    *error = problem->message;
    g_error_free(problem);
    return bin;
  }
  auto* state = new PictureSink;
  state->deliver = std::move(deliver);
  g_object_set_data_full(G_OBJECT(bin.get()), "picture-sink", state, [](gpointer data) {
    taken_back(data);
    delete static_cast<PictureSink*>(data);
  });
  const auto child = [&bin](const char* name) {
    return ElementPtr::adopt(gst_bin_get_by_name(GST_BIN(bin.get()), name));
  };
  state->filter = child("filter").get();
  const auto pad = ObjectPtr<GstPad>::adopt(gst_element_get_static_pad(child("convert").get(), "sink"));
  gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, on_input_event, state, nullptr);
  GstAppSinkCallbacks callbacks{};
  callbacks.new_preroll = on_preroll;
  callbacks.new_sample = on_sample;
  gst_app_sink_set_callbacks(GST_APP_SINK(child("sink").get()), &callbacks, state, nullptr);
  handed_over(state);
  return bin;
}

}  // namespace handset

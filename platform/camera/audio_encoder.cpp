#include "platform/camera/audio_encoder.h"

#include <gst/app/gstappsink.h>
#include <gst/app/gstappsrc.h>

#include <cmath>

#include "platform/camera/gst_ptr.h"
#include "platform/camera/microphone.h"

namespace handset {
namespace {

constexpr int click_at = 8192;  ///< in samples, beyond what any encoder needs to begin
constexpr int click_length = 3 * click_at;
/// The least that AAC's transform takes.
constexpr std::int64_t least_delay = 1024;
constexpr GstClockTime patience = 4 * GST_SECOND;

bool installed(const char* element) {
  return static_cast<bool>(ObjectPtr<GstElementFactory>::adopt(gst_element_factory_find(element)));
}

/// Silence with one loud sample.
BufferPtr click() {
  BufferPtr buffer = BufferPtr::adopt(gst_buffer_new_allocate(nullptr, click_length * audio_frame_bytes, nullptr));
  gst_buffer_memset(buffer.get(), 0, 0, gst_buffer_get_size(buffer.get()));
  const float loud[audio_channels] = {0.9F, 0.9F};
  gst_buffer_fill(buffer.get(), click_at * audio_frame_bytes, loud, sizeof loud);
  GST_BUFFER_PTS(buffer.get()) = 0;
  GST_BUFFER_DURATION(buffer.get()) = gst_util_uint64_scale(click_length, GST_SECOND, audio_rate);
  return buffer;
}

/// Looks for the loudest sample so far. @param found  its place in the track
void look_for_click(GstBuffer* buffer, float* loudest, std::int64_t* found) {
  GstMapInfo map;
  if (!gst_buffer_map(buffer, &map, GST_MAP_READ)) return;
  const auto* samples = reinterpret_cast<const float*>(map.data);
  const guint64 first = gst_util_uint64_scale_round(GST_BUFFER_PTS(buffer), audio_rate, GST_SECOND);
  for (gsize i = 0; i < map.size / sizeof(float); i += audio_channels) {
    if (std::fabs(samples[i]) <= *loudest) continue;
    *loudest = std::fabs(samples[i]);
    *found = static_cast<std::int64_t>(first + i / audio_channels);
  }
  gst_buffer_unmap(buffer, &map);
}

/// Samples.
std::int64_t measure_delay() {
  const ElementPtr pipeline = ElementPtr::adopt(gst_parse_launch_full(
      (std::string("appsrc name=in format=time caps=") + audio_caps + " ! " + audio_encoder_description() +
       " ! avdec_aac ! audioconvert ! " + audio_caps + " ! appsink name=out sync=false")
          .c_str(),
      nullptr, GST_PARSE_FLAG_FATAL_ERRORS, nullptr));
  if (!pipeline) return least_delay;
  gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
  const auto in = ElementPtr::adopt(gst_bin_get_by_name(GST_BIN(pipeline.get()), "in"));
  const auto out = ElementPtr::adopt(gst_bin_get_by_name(GST_BIN(pipeline.get()), "out"));
  gst_app_src_push_buffer(GST_APP_SRC(in.get()), click().release());
  gst_app_src_end_of_stream(GST_APP_SRC(in.get()));
  float loudest = 0.1F;
  std::int64_t found = -1;
  while (const SamplePtr sample = SamplePtr::adopt(gst_app_sink_try_pull_sample(GST_APP_SINK(out.get()), patience))) {
    look_for_click(gst_sample_get_buffer(sample.get()), &loudest, &found);
  }
  gst_element_set_state(pipeline.get(), GST_STATE_NULL);
  return found < click_at ? least_delay : found - click_at;
}

}  // namespace

std::string audio_encoder_description() {
  for (const char* element : {"fdkaacenc", "avenc_aac", "voaacenc"}) {
    if (installed(element)) return std::string("audioconvert ! ") + element + " bitrate=128000 ! aacparse name=aac";
  }
  return {};
}

std::int64_t audio_encoder_delay() {
  static const std::int64_t samples = measure_delay();
  return samples * 1'000'000'000 / audio_rate;
}

}  // namespace handset

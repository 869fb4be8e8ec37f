#include "platform/camera/drift_resampler.h"

#include <algorithm>
#include <cmath>

#include "platform/camera/microphone.h"

namespace handset {
namespace {

/// Seconds in which two thirds of a difference are made up for.
constexpr double settling = 4;
/// Less than a tenth of a semitone.
constexpr double steepest = 0.005;
/// Clocks do not differ by more than this.
constexpr double largest_difference = 0.001;

}  // namespace

double DriftLoop::next(double late, double elapsed) {
  difference_ =
      std::clamp(difference_ + late * elapsed / (4 * settling * settling), -largest_difference, largest_difference);
  return 1 + std::clamp(difference_ + late / settling, -steepest, steepest);
}

DriftResampler::DriftResampler() {
  GstStructure* options = gst_structure_new_empty("options");
  gst_audio_resampler_options_set_quality(GST_AUDIO_RESAMPLER_METHOD_KAISER, GST_AUDIO_RESAMPLER_QUALITY_DEFAULT,
                                          input_, resolution, options);
  // A table of every phase would take half a millisecond, and 120 MB of address space, at each change.
  gst_structure_set(options, GST_AUDIO_RESAMPLER_OPT_FILTER_MODE, GST_TYPE_AUDIO_RESAMPLER_FILTER_MODE,
                    GST_AUDIO_RESAMPLER_FILTER_MODE_INTERPOLATED, nullptr);
  resampler_.reset(gst_audio_resampler_new(GST_AUDIO_RESAMPLER_METHOD_KAISER, GST_AUDIO_RESAMPLER_FLAG_VARIABLE_RATE,
                                           GST_AUDIO_FORMAT_F32LE, audio_channels, input_, resolution, options));
  gst_structure_free(options);
}

void DriftResampler::begin() {
  gst_audio_resampler_reset(resampler_.get());
}

void DriftResampler::set_ratio(double ratio) {
  const int input = static_cast<int>(std::lround(resolution / ratio));
  input_ = input == resolution ? nearly_one : input;
  gst_audio_resampler_update(resampler_.get(), input_, resolution, nullptr);
}

BufferPtr DriftResampler::next(GstBuffer* block, std::int64_t skipped) {
  GstMapInfo from;
  if (!gst_buffer_map(block, &from, GST_MAP_READ)) return {};
  const gsize offset = static_cast<gsize>(skipped) * audio_frame_bytes;
  const gsize taken = (from.size - offset) / audio_frame_bytes;
  const gsize made = gst_audio_resampler_get_out_frames(resampler_.get(), taken);
  BufferPtr result = BufferPtr::adopt(gst_buffer_new_allocate(nullptr, made * audio_frame_bytes, nullptr));
  GstMapInfo to;
  if (gst_buffer_map(result.get(), &to, GST_MAP_WRITE)) {
    gpointer in[] = {from.data + offset};
    gpointer out[] = {to.data};
    gst_audio_resampler_resample(resampler_.get(), in, taken, out, made);
    gst_buffer_unmap(result.get(), &to);
  }
  gst_buffer_unmap(block, &from);
  return result;
}

}  // namespace handset

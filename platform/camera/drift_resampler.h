#pragma once

#include <gst/audio/audio.h>

#include <cstdint>
#include <memory>

#include "platform/camera/gst_ptr.h"

namespace handset {

/// Decides how much a microphone's sound is to be stretched, so that what is heard late or early comes back to its
/// time within seconds and so slowly that nobody hears it. Remembers the clocks' difference.
class DriftLoop {
 public:
  /// @param late     seconds by which the sound would be heard too early; negative when too late
  /// @param elapsed  seconds of sound since the last call
  /// @return samples to make of one
  double next(double late, double elapsed);

 private:
  double difference_ = 0;  ///< of the clocks, as found so far
};

/// Stretches sound (audio_caps of microphone.h) by ratios close to 1 that may change all the time. Used by one thread.
class DriftResampler {
 public:
  DriftResampler();

  /// What comes next does not follow what came before.
  void begin();
  /// @param ratio  samples to make of one, from now on
  void set_ratio(double ratio);
  /// The ratio that is used, which is not quite what was asked for.
  double ratio() const { return static_cast<double>(resolution) / input_; }

  /// Takes samples. @return what can be made of them and of those before; the first calls return a little less
  BufferPtr next(GstBuffer* block, std::int64_t skipped);

 private:
  /// Rates stand for a ratio; at this size they resolve two millionths.
  static constexpr int resolution = 480'000;
  /// At a ratio of exactly 1 the resampler copies, without its filter's delay: a step of 32 samples.
  static constexpr int nearly_one = resolution + 1;
  struct Free {
    void operator()(GstAudioResampler* resampler) const { gst_audio_resampler_free(resampler); }
  };

  std::unique_ptr<GstAudioResampler, Free> resampler_;
  int input_ = nearly_one;
};

}  // namespace handset

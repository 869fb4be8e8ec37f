#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <vector>

#include "platform/camera/drift_resampler.h"
#include "platform/camera/film_clock.h"
#include "platform/camera/microphone.h"
#include "platform/camera/sound_clock.h"

using handset::FilmClock;
using handset::SoundClock;

namespace {

constexpr std::int64_t ms = 1'000'000;
constexpr std::int64_t second = 1000 * ms;

TEST(FilmTime, GrowsWithTheFramesAndLastsAsTheyDo) {
  struct Step {
    std::int64_t time, own, pts, length;
  };
  const struct {
    const char* name;
    std::int64_t period;
    std::vector<Step> steps;
  } cases[] = {
      {"a gap says nothing of the frame behind it",
       40 * ms,
       {{0, 0, 0, 40 * ms}, {1150 * ms, 0, 1150 * ms, 1190 * ms}, {1190 * ms, 0, 1190 * ms, 1230 * ms}}},
      {"own durations", 40 * ms, {{0, 25 * ms, 0, 25 * ms}, {25 * ms, 200 * ms, 25 * ms, 225 * ms}}},
      {"a repeat and a step back, then at their own times again",
       40 * ms,
       {{0, 0, 0, 40 * ms},
        {40 * ms, 0, 40 * ms, 80 * ms},
        {40 * ms, 0, 41 * ms, 81 * ms},
        {20 * ms, 0, 42 * ms, 82 * ms},
        {120 * ms, 0, 120 * ms, 160 * ms}}},
      {"a clock that is set back",
       40 * ms,
       {{0, 0, 0, 40 * ms},
        {9000 * ms, 0, 9000 * ms, 9040 * ms},
        {2000 * ms, 0, 9040 * ms, 9080 * ms},
        {2050 * ms, 0, 9090 * ms, 9130 * ms}}},
      {"before the beginning", 40 * ms, {{-5 * ms, 0, 0, 40 * ms}, {40 * ms, 0, 40 * ms, 80 * ms}}},
      {"faster than anybody sees", 1000, {{0, 0, 0, 1000}, {1000, 0, 1000, 2000}, {1000, 0, 1501, 2501}}},
  };
  for (const auto& c : cases) {
    FilmClock clock(7 * second, c.period);
    EXPECT_EQ(clock.length(), 0);
    for (const Step& step : c.steps) {
      const FilmClock::Span span = clock.next(7 * second + step.time, step.own);
      EXPECT_EQ(span.pts, step.pts) << c.name;
      EXPECT_EQ(clock.length(), step.length) << c.name;
    }
  }
}

/// A microphone whose blocks of 10 ms are stamped late now and then.
TEST(SoundTime, FollowsTheClockAndNotTheLateness) {
  for (const double drift : {0.0, 200e-6, -200e-6}) {
    SoundClock clock(48000);
    double worst = 0;
    for (int i = 0; i < 30000; ++i) {
      const double heard = 9e9 + i * 10e6 * (1 + drift);
      const std::int64_t late = i % 5 == 4 ? 0 : (1 + i * 7 % 19) * ms + (i == 7000 ? 150 * ms : 0);
      const auto place = clock.next(static_cast<std::int64_t>(heard) + late, 480, false);
      if (i > 100) worst = std::max(worst, std::fabs(static_cast<double>(place.time) - heard));
      EXPECT_EQ(place.follows, i > 0) << i;
    }
    EXPECT_LT(worst, 0.5 * ms) << drift;
  }
}

TEST(SoundTime, TellsAGapFromLateness) {
  const struct {
    std::int64_t gap;
    bool told;
    int found;  ///< blocks later, at most
  } cases[] = {{80 * ms, true, 0}, {80 * ms, false, 26}, {1500 * ms, false, 0}, {-80 * ms, false, 0}};
  for (const auto& c : cases) {
    SoundClock clock(48000);
    int found = -1;
    for (int i = 0; i < 300; ++i) {
      const std::int64_t heard = i * 10 * ms + (i >= 150 ? c.gap : 0);
      const auto place = clock.next(heard, 480, c.told && i == 150);
      if (i > 0 && !place.follows) found = i - 150;
      if (i < 150 || found >= 0) {
        EXPECT_EQ(place.time, heard) << c.gap / ms;
      }
    }
    EXPECT_GE(found, 0) << c.gap / ms;
    EXPECT_LE(found, c.found) << c.gap / ms;
  }
}

TEST(DriftResampling, ChangesItsRatioWithoutAStep) {
  gst_init(nullptr, nullptr);
  handset::DriftResampler resampler;
  constexpr double turn = 2 * 3.14159265358979 * 1000 / handset::audio_rate;
  std::vector<float> heard;
  for (int block = 0, sample = 0; block < 400; ++block) {
    resampler.set_ratio(1 + (block < 200 ? 0.004 : 0.00004) * std::sin(block * 0.05));
    const auto in =
        handset::BufferPtr::adopt(gst_buffer_new_allocate(nullptr, 480 * handset::audio_frame_bytes, nullptr));
    for (gsize i = 0; i < 480; ++i, ++sample) {
      const float value[2] = {static_cast<float>(0.5 * std::sin(sample * turn)), 0.0F};
      gst_buffer_fill(in.get(), i * sizeof value, value, sizeof value);
    }
    const handset::BufferPtr out = resampler.next(in.get(), 0);
    for (gsize i = 0; i < gst_buffer_get_size(out.get()) / handset::audio_frame_bytes; ++i) {
      float value[2];
      gst_buffer_extract(out.get(), i * sizeof value, value, sizeof value);
      heard.push_back(value[0]);
      EXPECT_EQ(value[1], 0) << "channels mix";
    }
  }
  EXPECT_NEAR(static_cast<double>(heard.size()), 400 * 480, 400);
  // A smooth tone bends by its amplitude times the square of its turn from sample to sample, and a step by far more.
  double bend = 0;
  for (std::size_t i = 501; i + 1 < heard.size(); ++i) {
    bend = std::max(bend, std::fabs(double{heard[i - 1]} - 2 * double{heard[i]} + double{heard[i + 1]}));
  }
  EXPECT_LT(bend, 0.5 * turn * turn * 1.1);
}

}  // namespace

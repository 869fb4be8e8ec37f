#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <vector>

#include "platform/camera/colorimetry.h"
#include "platform/camera/film.h"
#include "platform/camera/sound_placer.h"
#include "tests/support/film.h"
#include "tests/support/temp_dir.h"

using handset::audio_channels;
using handset::audio_frame_bytes;
using handset::audio_rate;
using handset::BufferPtr;
using handset::SoundPlacer;

namespace {

constexpr std::int64_t second = 1'000'000'000;
constexpr std::int64_t start = 5000 * second;
constexpr int block_samples = 480;

/// When a world flashes and clicks, seconds: soon after the beginning, and then irregularly, about every second.
double event_time(int number) {
  return 0.04 + number + 0.01 * (number * 37 % 23);
}

/// A microphone in that world: a click is a short wave whose middle is at the event.
class Clicks {
 public:
  /// @param drift  how much faster than time its clock is
  explicit Clicks(double drift) : drift_(drift) {}

  /// The next 10 ms, as it counts them; stamps come late by up to 5 ms.
  handset::Microphone::Block next() {
    BufferPtr buffer = BufferPtr::adopt(gst_buffer_new_allocate(nullptr, block_samples * audio_frame_bytes, nullptr));
    std::array<float, block_samples * audio_channels> samples{};
    const double begin = time_of(sample_);
    for (int number = std::max(0, static_cast<int>(begin) - 1); number <= static_cast<int>(begin) + 1; ++number) {
      if (std::fabs(event_time(number) - begin) > 0.02) continue;
      for (int i = 0; i < block_samples; ++i) {
        samples[i * 2UL] = samples[i * 2UL + 1] = level(time_of(sample_ + i) - event_time(number));
      }
    }
    gst_buffer_fill(buffer.get(), 0, samples.data(), sizeof samples);
    const std::int64_t late = sample_ / block_samples * 7 % 6 * 1'000'000;
    const auto stamp = start + std::llround(time_of(sample_) * second) + late;
    sample_ += block_samples;
    return {std::move(buffer), stamp, false};
  }
  /// Until where it has heard, seconds.
  double heard() const { return time_of(sample_); }

 private:
  /// It is opened before the film begins.
  double time_of(std::int64_t sample) const { return static_cast<double>(sample) / audio_rate / (1 + drift_) - 0.3; }
  static float level(double off) {
    return static_cast<float>(0.8 * std::exp(-off * off * 9e6) * std::cos(off * 12000));
  }

  const double drift_;
  std::int64_t sample_ = 0;
};

/// Collects when clicks are heard in a track, seconds.
class ClickFinder {
 public:
  void take(const float* samples, std::size_t count, std::size_t channels, std::int64_t first) {
    for (std::size_t i = 0; i < count; ++i) {
      const float level = std::fabs(samples[i * channels]);
      const std::int64_t at = first + static_cast<std::int64_t>(i);
      if (level < 0.3F) continue;
      if (times.empty() || at - last_ > audio_rate / 10) {
        times.push_back(0);
        loudest_ = 0;
      }
      last_ = at;
      if (level > loudest_) times.back() = static_cast<double>(at) / audio_rate;
      loudest_ = std::max(loudest_, level);
    }
  }
  std::vector<double> times;

 private:
  std::int64_t last_ = 0;
  float loudest_ = 0;
};

/// Frames that are black, or white when the world has flashed since the frame before.
class Flashes {
 public:
  Flashes() {
    auto info = std::make_shared<GstVideoInfo>();
    gst_video_info_set_format(info.get(), GST_VIDEO_FORMAT_NV12, 160, 120);
    gst_video_colorimetry_from_string(&info->colorimetry, handset::frame_colorimetry);
    info_ = std::move(info);
  }
  const std::shared_ptr<const GstVideoInfo>& info() const { return info_; }

  handset::Frame next(double time) {
    const bool white = event_time(flashes_) <= time;
    if (white) {
      times.push_back(time);
      ++flashes_;
    }
    BufferPtr buffer = BufferPtr::adopt(gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(info_.get()), nullptr));
    gst_buffer_memset(buffer.get(), 0, white ? 255 : 0, 160 * 120);
    gst_buffer_memset(buffer.get(), 160 * 120, 128, 160 * 60);
    return {std::move(buffer), info_, start + std::llround(time * second)};
  }
  std::vector<double> times;  ///< of the white ones, seconds

 private:
  std::shared_ptr<const GstVideoInfo> info_;
  int flashes_ = 0;
};

/// When the frames of a camera are taken, whose light changes or which stands still for a while.
struct Pace {
  const char* name;
  int nominal;
  std::function<double(double)> period;  ///< seconds after a frame at that time
};

void make_film(const std::string& path, const Pace& pace, double drift, double length, Flashes* flashes) {
  write_file(path, "");
  std::string error;
  const auto film = handset::Film::start({.path = path,
                                          .info = flashes->info(),
                                          .rate_numerator = pace.nominal,
                                          .rate_denominator = 1,
                                          .sound = true,
                                          .start = start},
                                         &error);
  ASSERT_NE(film, nullptr) << error;
  const SoundPlacer::Push push = [&](BufferPtr block, std::uint64_t first) {
    film->push_audio(std::move(block), first);
  };
  Clicks microphone(drift);
  SoundPlacer placer;
  placer.begin(start);
  for (double time = 0; time < length; time += pace.period(time)) {
    ASSERT_TRUE(film->wait_ready(std::chrono::seconds(20)));
    film->push_video(flashes->next(time));
    while (microphone.heard() < static_cast<double>(film->length()) / second) placer.take(microphone.next());
    placer.place_until(film->length(), push);
  }
  placer.set_end(film->length());
  placer.fill_until(film->length(), push);
  ASSERT_EQ(film->finish(), 0) << film->failure();
}

TEST(FilmOfFlashesAndClicks, KeepsThemTogether) {
  gst_init(nullptr, nullptr);
  const Pace paces[] = {
      {"5", 5, [](double) { return 0.2; }},
      {"30", 30, [](double) { return 1 / 30.0; }},
      {"120", 120, [](double) { return 1 / 120.0; }},
      {"30, in low light 7", 30, [](double time) { return time < 2 ? 1 / 30.0 : 1 / 7.0; }},
      {"30, with a stall", 30, [](double time) { return time > 2 && time < 2.03 ? 1.15 : 1 / 30.0; }},
  };
  const TempDir dir;
  const std::string path = dir.file("film.mp4");
  for (const Pace& pace : paces) {
    const bool drifts = pace.nominal == 30;
    Flashes flashes;
    make_film(path, pace, drifts ? 200e-6 : 0, 5, &flashes);
    film::Film film = film::play(path);
    film::play_sound(path, &film);
    ASSERT_EQ(film.error, "") << pace.name;
    std::vector<double> seen;
    for (const film::Picture& picture : film.pictures) {
      if (picture.y(80, 60) > 128) seen.push_back(static_cast<double>(picture.pts) / second);
    }
    ASSERT_EQ(seen.size(), flashes.times.size()) << pace.name;
    for (const bool by_ffmpeg : {false, true}) {
      const std::vector<float> sound = by_ffmpeg ? film::sound_with_ffmpeg(path) : film.sound;
      ClickFinder clicks;
      clicks.take(sound.data(), sound.size(), 1, 0);
      ASSERT_GE(clicks.times.size(), 4U) << pace.name;
      for (std::size_t i = 0; i < std::min(clicks.times.size(), seen.size()); ++i) {
        EXPECT_NEAR(seen[i], flashes.times[i], 0.001) << pace.name;
        EXPECT_NEAR(clicks.times[i], event_time(static_cast<int>(i)), 0.002)
            << pace.name << (by_ffmpeg ? ", ffmpeg" : ", GStreamer");
      }
    }
  }
}

}  // namespace

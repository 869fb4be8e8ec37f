// The system sounds: what they are, and that nothing makes them hold anybody up.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "platform/device/sandbox.h"
#include "platform/sound/output.h"
#include "platform/sound/soundplayer.h"
#include "tests/support/temp_dir.h"

namespace {

using std::chrono::milliseconds;

constexpr char start_sound[] = "event_recording_start";
constexpr char stop_sound[] = "event_recording_stop";

template <typename Call>
milliseconds time_of(Call call) {
  const auto before = std::chrono::steady_clock::now();
  call();
  return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - before);
}

std::vector<std::int16_t> samples_of(const char* name) {
  const std::string bytes = read_file(find_package_dir() + "/native/assets/sounds/" + name + ".wav");
  if (bytes.size() < 44 || bytes.compare(0, 4, "RIFF") != 0 || bytes.compare(36, 4, "data") != 0) return {};
  std::vector<std::int16_t> samples((bytes.size() - 44) / 2);
  std::memcpy(samples.data(), bytes.data() + 44, samples.size() * 2);
  return samples;
}

/// Upward zero crossings of a stretch of samples, a second.
double pitch(const std::vector<std::int16_t>& samples, double from, double to) {
  int crossings = 0;
  for (auto i = static_cast<std::size_t>(from * 48000); i + 1 < static_cast<std::size_t>(to * 48000); ++i) {
    if (samples[i] < 0 && samples[i + 1] >= 0) ++crossings;
  }
  return crossings / (to - from);
}

class Sound : public testing::Test {
 protected:
  ~Sound() override { handset::set_sound_output("auto"); }
};

TEST(SoundFiles, RiseAtTheStartAndFallAtTheStop) {
  for (const char* name : {start_sound, stop_sound}) {
    const std::vector<std::int16_t> samples = samples_of(name);
    ASSERT_GT(samples.size(), 48000U / 5) << name;
    ASSERT_LT(samples.size(), 48000U / 2) << name;
    int peak = 0;
    for (const std::int16_t sample : samples) peak = std::max(peak, std::abs(int{sample}));
    EXPECT_GT(peak, 8000) << name;
    EXPECT_LT(peak, 24000) << name << " is no alarm";
    EXPECT_LT(std::abs(int{samples.front()}) + std::abs(int{samples.back()}), 64) << name << " clicks";
    const double first = pitch(samples, 0.01, 0.08);
    const double second = pitch(samples, 0.17, 0.24);
    if (name == start_sound) {
      EXPECT_GT(second, 1.2 * first);
    } else {
      EXPECT_LT(second, first / 1.2);
    }
  }
}

TEST_F(Sound, PlaysToItsEnd) {
  handset::set_sound_output("fakesink sync=true");
  int result = -1;
  const milliseconds took = time_of([&] { result = soundplayer_play_sound_blocking(start_sound); });
  EXPECT_EQ(result, 0);
  EXPECT_GE(took, milliseconds(250));
  EXPECT_LT(took, milliseconds(1500));
}

TEST_F(Sound, DoesNotWaitWithoutADevice) {
  handset::set_sound_output("none");
  const milliseconds took = time_of([] { EXPECT_EQ(soundplayer_play_sound_blocking(start_sound), ENODEV); });
  EXPECT_LT(took, milliseconds(100));
}

TEST_F(Sound, ForgetsADeviceThatHangsOrFails) {
  handset::set_sound_output("fakesink sync=true ts-offset=60000000000");
  const milliseconds took = time_of([] { EXPECT_EQ(soundplayer_play_sound_blocking(stop_sound), ETIMEDOUT); });
  EXPECT_GE(took, milliseconds(1450));
  EXPECT_LT(took, milliseconds(1700));
  handset::set_sound_output("fakesink state-error=ready-to-paused");
  EXPECT_EQ(soundplayer_play_sound_blocking(stop_sound), ENODEV);
  handset::set_sound_output("nosuchsink");
  EXPECT_EQ(soundplayer_play_sound_blocking(stop_sound), ENODEV);
}

TEST_F(Sound, AnAsynchronousOneReturnsAtOnceAndMakesWayForTheNext) {
  handset::set_sound_output("fakesink sync=true ts-offset=60000000000");
  const milliseconds took = time_of([] { EXPECT_EQ(soundplayer_play_sound(start_sound), 0); });
  EXPECT_LT(took, milliseconds(50));
  int result = -1;
  std::thread first([&] { result = soundplayer_play_sound_blocking(start_sound); });
  std::this_thread::sleep_for(milliseconds(100));
  handset::set_sound_output("fakesink sync=true");
  EXPECT_EQ(soundplayer_play_sound_blocking(stop_sound), 0);
  first.join();
  EXPECT_EQ(result, ECANCELED);
}

TEST_F(Sound, KnowsNoOtherNames) {
  for (const char* name : {"", "event_recording", "../sounds/event_recording_start", "event_recording_start.wav"}) {
    EXPECT_EQ(soundplayer_play_sound(name), ENOENT) << name;
    EXPECT_EQ(soundplayer_play_sound_blocking(name), ENOENT) << name;
  }
  EXPECT_EQ(soundplayer_play_sound(nullptr), ENOENT);
}

/// Whatever this machine has: the answer comes in time, and the second one at once.
TEST_F(Sound, LooksForADeviceWithinABound) {
  handset::set_sound_output("auto");
  std::string output;
  EXPECT_LT(time_of([&] { output = handset::sound_output(); }), milliseconds(400));
  EXPECT_LT(time_of([&] { EXPECT_EQ(handset::sound_output(), output); }), milliseconds(10));
  handset::lose_sound_output();
  EXPECT_EQ(handset::sound_output(), "");
}

}  // namespace

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <mutex>
#include <thread>

#include "platform/camera/camera.h"
#include "platform/camera/camera_config.h"
#include "platform/camera/capture.h"
#include "platform/camera/microphone_finder.h"
#include "platform/camera/recorder.h"
#include "platform/camera/sound_watch.h"
#include "tests/camera/fake_microphone.h"
#include "tests/camera/scene_frames.h"
#include "tests/support/film.h"
#include "tests/support/temp_dir.h"

using namespace std::chrono_literals;
using handset::FoundMicrophone;
using handset::Recorder;
using handset::SoundWatch;

namespace {

constexpr std::int64_t second = 1'000'000'000;
constexpr std::int64_t frame_ns = second / 30;
constexpr char fake_microphone[] = "gst:fakemicrophone is-live=true samplesperbuffer=480 volume=0.5";

/// Waits for something that other threads bring about. @return whether it came in time
bool soon(const std::function<bool()>& condition) {
  for (int i = 0; i < 10000 && !condition(); ++i) std::this_thread::sleep_for(2ms);
  return condition();
}

/// Recordings at the pace of time, with the fake microphone.
class Sound : public testing::Test {
 protected:
  Sound() { fake_.reset(); }
  ~Sound() override { fake_.reset(); }

  void start(const std::string& microphone = fake_microphone) {
    write_file(path_, "");
    first_ = 0;
    frames_ = 0;
    recorder_ = std::make_unique<Recorder>(Recorder::Setup{.path = path_,
                                                           .info = scene_.info(),
                                                           .rate_numerator = 30,
                                                           .rate_denominator = 1,
                                                           .microphone = microphone,
                                                           .wait_for_room = true,
                                                           .show_status =
                                                               [this](const std::string& status) {
                                                                 const std::lock_guard lock(mutex_);
                                                                 status_ = status;
                                                                 statuses_ += "[" + status + "]";
                                                               }},
                                           nullptr);
  }
  /// Films until a condition holds. @return whether it came in time
  bool film_until(const std::function<bool()>& condition) {
    if (first_ == 0) first_ = handset::monotonic_now();
    for (const std::uint64_t end = frames_ + 900; frames_ < end; ++frames_) {
      if (condition()) return true;
      const std::int64_t time = first_ + static_cast<std::int64_t>(frames_) * frame_ns;
      std::this_thread::sleep_until(std::chrono::steady_clock::time_point(std::chrono::nanoseconds(time)));
      EXPECT_TRUE(recorder_->push(scene_.make(frames_, time)));
    }
    return false;
  }
  void film_for(double seconds) {
    const std::uint64_t end = frames_ + static_cast<std::uint64_t>(seconds * 30);
    ASSERT_TRUE(film_until([&] { return frames_ >= end; }));
  }
  /// Ends the recording and plays it. @return how long ending it took, milliseconds
  int stop() {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(recorder_->stop(), 0);
    const auto took = std::chrono::steady_clock::now() - begin;
    recorder_.reset();
    film_ = film::play(path_);
    film::play_sound(path_, &film_);
    EXPECT_EQ(film_.error, "");
    EXPECT_EQ(film_.pictures.size(), frames_);
    EXPECT_NEAR(static_cast<double>(film_.sound_ns), static_cast<double>(frames_) * frame_ns, 0.06e9);
    return static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(took).count());
  }
  std::string status() {
    const std::lock_guard lock(mutex_);
    return status_;
  }
  /// Largest and smallest level between two moments of the film, seconds.
  std::pair<float, float> levels(double from, double to) const {
    const auto at = [&](double time) {
      return film_.levels.begin() +
             std::clamp<std::ptrdiff_t>(std::lround(time * 100), 0, static_cast<std::ptrdiff_t>(film_.levels.size()));
    };
    if (at(from) >= at(to)) return {0.0F, 0.0F};
    const auto [least, most] = std::minmax_element(at(from), at(to));
    return {*least, *most};
  }
  /// Where there is sound in the film, for people.
  std::string stretches() const {
    std::string text;
    bool loud = false;
    for (std::size_t i = 0; i <= film_.levels.size(); ++i) {
      const bool now = i < film_.levels.size() && film_.levels[i] > 0.4F;
      if (now != loud) text += (now ? " from " : " to ") + std::to_string(i * 10);
      loud = now;
    }
    return text + " ms";
  }
  /// Films until some time after the sound has come for the n-th time.
  bool film_past_joining(int times, double seconds) {
    return film_until(
        [&] { return fake_.delivering() == times && length() > film_time(fake_.delivering_since()) + seconds; });
  }
  /// A moment as a time of the film, seconds.
  double film_time(std::int64_t time) const { return static_cast<double>(time - first_) / second; }
  double length() const { return static_cast<double>(frames_) / 30; }

  FakeMicrophone& fake_ = FakeMicrophone::instance();
  const TempDir dir_;
  const std::string path_ = dir_.file("film.mp4");
  const SceneFrames scene_{160, 120};
  std::unique_ptr<Recorder> recorder_;
  std::int64_t first_ = 0;  ///< time of the first frame
  std::uint64_t frames_ = 0;
  film::Film film_;
  std::mutex mutex_;  ///< guards the rest
  std::string status_;
  std::string statuses_;
};

TEST_F(Sound, IsInTheFilmFromTheFirstFrameOn) {
  for (const bool delivers_late : {false, true}) {
    start(fake_microphone + std::string(delivers_late ? " ! queue min-threshold-time=400000000" : ""));
    ASSERT_TRUE(soon([&] { return fake_.delivering() > 0; }));
    film_for(1.5);
    stop();
    // What takes 400 ms to get here is cut off at the end.
    const auto [least, most] = levels(0.02, length() - (delivers_late ? 0.5 : 0.05));
    EXPECT_GT(least, 0.4F) << "delivers late: " << delivers_late << ", sound" << stretches();
    EXPECT_EQ(status(), "");
    fake_.reset();
  }
}

TEST_F(Sound, JoinsWhenTheMicrophoneIsThere) {
  for (const int late : {0, 80, 400, 2500}) {
    fake_.reset();
    fake_.set_opening_time(late);
    start();
    ASSERT_TRUE(film_past_joining(1, 0.7));
    stop();
    const double joined = std::max(0.0, film_time(fake_.delivering_since()));
    EXPECT_GT(levels(joined + 0.03, length() - 0.05).first, 0.4F)
        << late << " ms late, joined at " << joined << ", sound" << stretches();
    EXPECT_LT(levels(0, joined - 0.03).second, 0.01F)
        << late << " ms late, joined at " << joined << ", sound" << stretches();
    EXPECT_EQ(status(), "");
  }
}

TEST_F(Sound, ComesBackWithTheMicrophoneAndTheStatusSaysSo) {
  testing::internal::CaptureStderr();
  start();
  ASSERT_TRUE(film_past_joining(1, 0.5));
  const double joined = film_time(fake_.delivering_since());
  fake_.set_broken(true);
  const double lost = film_time(handset::monotonic_now());
  fake_.unplug();
  ASSERT_TRUE(film_until([&] { return status() == "no sound"; }));
  ASSERT_TRUE(film_until([&] { return fake_.opened() >= 2; })) << "nobody looks for it";
  fake_.set_broken(false);
  ASSERT_TRUE(film_past_joining(2, 0.3));
  ASSERT_TRUE(film_until([&] { return status().empty(); }));
  stop();
  const double back = film_time(fake_.delivering_since());
  EXPECT_GT(levels(joined + 0.03, lost - 0.05).first, 0.4F);
  EXPECT_LT(levels(lost + 0.1, back - 0.03).second, 0.01F);
  EXPECT_GT(levels(back + 0.03, length() - 0.05).first, 0.4F);
  EXPECT_EQ(statuses_, "[no sound][]");
  const std::string errors = testing::internal::GetCapturedStderr();
  EXPECT_LE(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
}

TEST_F(Sound, AMutedMicrophoneIsNoSound) {
  testing::internal::CaptureStderr();
  const std::int64_t started = handset::monotonic_now();
  start("gst:fakemicrophone is-live=true samplesperbuffer=480 volume=0");
  ASSERT_TRUE(film_until([&] { return status() == "no sound"; }));
  EXPECT_GE(handset::monotonic_now() - started, 3 * second);
  fake_.set_volume(0.5);
  ASSERT_TRUE(film_until([&] { return status().empty(); }));
  stop();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "no sound: the microphone gives only silence\n");
}

TEST_F(Sound, AMicrophoneThatHangsHoldsNobodyUp) {
  testing::internal::CaptureStderr();
  fake_.set_opening_hangs(true);
  start();
  film_for(0.1);
  EXPECT_EQ(recorder_->wait_started(10s), 0) << "a source that stands still";
  film_for(1);
  ASSERT_TRUE(film_until([&] { return status() == "no sound"; }));
  EXPECT_LT(stop(), 4000);
  EXPECT_EQ(status(), "");
  EXPECT_EQ(film_.sound_peak, 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "no sound: the microphone does not answer\n");

  fake_.reset();
  EXPECT_TRUE(soon([&] { return fake_.closed() == 1; })) << "what was left behind does not close";
  fake_.reset();
  fake_.set_closing_hangs(true);
  start();
  ASSERT_TRUE(film_past_joining(1, 0.5));
  EXPECT_LT(stop(), 4000);
  EXPECT_GT(film_.sound_peak, 0.4);
  EXPECT_EQ(fake_.closed(), 0);
  fake_.reset();
  EXPECT_TRUE(soon([&] { return fake_.closed() == 1; })) << "what was left behind does not close";
}

TEST(MicrophoneOfACamera, IsOnForARecordingOnly) {
  FakeMicrophone& fake = FakeMicrophone::instance();
  fake.reset();
  handset::CameraServiceConfig config;
  config.rear = "scene";
  config.microphone = fake_microphone;
  handset::configure_camera_service(config);
  camera_handle_t handle = CAMERA_HANDLE_INVALID;
  ASSERT_EQ(camera_open(CAMERA_UNIT_REAR, CAMERA_MODE_ALL, &handle), 0);
  ASSERT_EQ(
      camera_set_video_property(handle, CAMERA_IMGPROP_WIDTH, 160, CAMERA_IMGPROP_HEIGHT, 120, CAMERA_IMGPROP_END), 0);
  ASSERT_EQ(camera_set_vf_property(handle, CAMERA_IMGPROP_WIDTH, 160, CAMERA_IMGPROP_HEIGHT, 120, CAMERA_IMGPROP_END),
            0);
  ASSERT_EQ(camera_start_video_viewfinder(handle, nullptr, nullptr, nullptr), 0);
  std::this_thread::sleep_for(300ms);
  EXPECT_EQ(fake.opened(), 0);
  const TempDir dir;
  for (int recording = 1; recording <= 2; ++recording) {
    write_file(dir.file("film.mp4"), "");
    ASSERT_EQ(camera_start_video(handle, dir.file("film.mp4").c_str(), nullptr, nullptr, nullptr), 0);
    EXPECT_TRUE(soon([&] { return fake.delivering() == recording; }));
    EXPECT_EQ(camera_stop_video(handle), 0);
    EXPECT_TRUE(soon([&] { return fake.closed() == recording; }));
    EXPECT_EQ(fake.opened(), recording);
  }
  EXPECT_EQ(camera_close(handle), 0);
}

TEST(SoundWatching, TellsMissingFromSilentFromQuiet) {
  using Verdict = SoundWatch::Verdict;
  SoundWatch watch(0);
  EXPECT_EQ(watch.judge(second / 2), Verdict::open);
  EXPECT_EQ(watch.judge(second), Verdict::missing);
  watch.take(second * 5 / 4, 0);
  EXPECT_EQ(watch.judge(second * 5 / 4), Verdict::missing) << "a block of zeros takes nothing back";
  EXPECT_FALSE(watch.heard());
  watch.take(second * 3 / 2, 1.0F);
  EXPECT_EQ(watch.judge(second * 3 / 2), Verdict::sound);
  EXPECT_TRUE(watch.heard());

  constexpr float quiet_room = 4.5e-4F;   // -67 dBFS
  constexpr float muted_codec = 2.2e-4F;  // -73 dBFS
  std::int64_t now = second * 3 / 2;
  for (int i = 0; i < 1000; ++i) watch.take(now += second / 100, i % 250 == 0 ? quiet_room : muted_codec);
  EXPECT_EQ(watch.judge(now), Verdict::sound);
  const std::int64_t last_sound = now - watch.without_sound(now);
  while (now < last_sound + 3 * second - second / 50) watch.take(now += second / 100, muted_codec);
  EXPECT_EQ(watch.judge(now), Verdict::sound);
  watch.take(now += second / 50, muted_codec);
  EXPECT_EQ(watch.judge(now), Verdict::silent);
}

TEST(MicrophoneNames, AreFoundByUniquePartsWhateverTheirCase) {
  const std::vector<FoundMicrophone> found = {
      {"alsa_input.pci.analog", "Built-in Audio", true, false},
      {"alsa_input.usb-7", "USB Microphone Ü", false, false},
      {"alsa_input.usb-71", "USB", false, false},
      {"alsa_output.usb-9.monitor", "Monitor of Headphones", false, true},
  };
  const struct {
    const char* name;
    int index;
  } cases[] = {{"built-IN", 0}, {"usb microphone ü", 1},  // casefolding is Unicode's
               {"usb", 2},                                // a whole label goes before parts
               {"usb-7", -1},   {"alsa_input.usb-7", 1}, {"headphones", 3}, {"alsa_", -1}, {"pci", 0},
               {"phone", 1},  // and a microphone before a monitor
               {"\xff", -1},    {"Bluetooth", -1}};
  for (const auto& c : cases) {
    const handset::MicrophoneChoice choice = handset::choose_microphone(found, c.name);
    EXPECT_EQ(choice.index, c.index) << c.name;
    EXPECT_EQ(choice.complaint.empty(), c.index >= 0) << choice.complaint;
  }
  EXPECT_EQ(handset::choose_microphone(found, "Bluetooth").complaint,
            "no microphone is called \"Bluetooth\"; there are: Built-in Audio (alsa_input.pci.analog), "
            "USB Microphone Ü (alsa_input.usb-7), USB (alsa_input.usb-71), "
            "Monitor of Headphones (alsa_output.usb-9.monitor)");
  EXPECT_EQ(handset::choose_microphone({}, "x").complaint, "no microphone is called \"x\"; there is none");
  EXPECT_EQ(handset::choose_microphone(found, "usb-7").complaint.find("more than one"), 0U);

  for (const char* fine : {"default", "none", "tone", fake_microphone}) {
    FakeMicrophone::instance();
    EXPECT_EQ(handset::check_microphone(fine), "");
  }
  EXPECT_NE(handset::check_microphone("gst:nosuchelement"), "");
}

}  // namespace

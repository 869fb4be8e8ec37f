#include <gtest/gtest.h>

#include <filesystem>
#include <numeric>

#include "platform/camera/colorimetry.h"
#include "platform/camera/recorder.h"
#include "tests/camera/scene_frames.h"
#include "tests/support/film.h"
#include "tests/support/temp_dir.h"

using handset::Frame;
using handset::Recorder;

namespace {

constexpr int width = 320;
constexpr int height = 240;
constexpr std::int64_t frame_ns = 1'000'000'000 / 30;

class Recording : public testing::Test {
 protected:
  Recorder::Setup setup(const std::string& microphone = "none") {
    write_file(path_, "");
    return {.path = path_,
            .info = frames_.info(),
            .rate_numerator = 30,
            .rate_denominator = 1,
            .microphone = microphone,
            .wait_for_room = true};
  }
  /// With timestamps that begin somewhere.
  Frame scene_frame(std::uint64_t number) const {
    return frames_.make(number, 77'000'000'000 + static_cast<std::int64_t>(number) * frame_ns);
  }
  /// Frames at the pace of time, from now on.
  void push_in_time(Recorder& recorder, std::uint64_t count) const {
    const std::int64_t start = std::chrono::steady_clock::now().time_since_epoch().count();
    for (std::uint64_t i = 0; i < count; ++i) {
      const std::int64_t time = start + static_cast<std::int64_t>(i) * frame_ns;
      std::this_thread::sleep_until(std::chrono::steady_clock::time_point(std::chrono::nanoseconds(time)));
      recorder.push(frames_.make(i, time));
    }
  }
  std::vector<int> numbers(const film::Film& film) {
    std::vector<int> list;
    for (const film::Picture& picture : film.pictures) list.push_back(picture.strip_number());
    return list;
  }
  std::vector<int> range(int first, int count) {
    std::vector<int> list(static_cast<std::size_t>(count));
    std::iota(list.begin(), list.end(), first);
    return list;
  }

  const TempDir dir_;
  const std::string path_ = dir_.file("film.mp4");
  const SceneFrames frames_{width, height};
};

TEST_F(Recording, KeepsEveryFrameItsTimeAndItsColours) {
  Recorder recorder(setup(), nullptr);
  for (std::uint64_t i = 0; i < 45; ++i) ASSERT_TRUE(recorder.push(scene_frame(i)));
  EXPECT_EQ(recorder.wait_started(std::chrono::seconds(10)), 0);
  EXPECT_EQ(recorder.stop(), 0);
  EXPECT_EQ(recorder.stop(), 0) << "stopping twice";
  EXPECT_FALSE(recorder.push(scene_frame(99)));
  EXPECT_EQ(recorder.recorded(), 45U);

  const film::Film film = film::play(path_);
  EXPECT_EQ(film.error, "");
  EXPECT_EQ(film.colorimetry, handset::frame_colorimetry);
  EXPECT_EQ(numbers(film), range(0, 45));
  for (std::size_t i = 0; i < film.pictures.size(); ++i) {
    EXPECT_NEAR(static_cast<double>(film.pictures[i].pts), static_cast<double>(frame_ns) * static_cast<double>(i),
                50'000);
  }
  // The red chip of the colour card: Y 76, U 85, V 255 in full range.
  const film::Picture& picture = film.pictures[20];
  EXPECT_NEAR(picture.y(19, 202), 76, 8);
  EXPECT_NEAR(picture.u(19, 202), 85, 8);
  EXPECT_NEAR(picture.v(19, 202), 255, 8);
  EXPECT_EQ(film::count_with_ffprobe(path_), 45);
  const std::vector<std::string> boxes = film::boxes(path_);
  EXPECT_EQ(boxes, (std::vector<std::string>{"ftyp", "mdat", "moov"}));
}

TEST_F(Recording, RollsIntoTheNextFileBeforeAnIndexIsFull) {
  Recorder::Setup small = setup();
  small.part_length = std::chrono::seconds(3);
  {
    Recorder recorder(small, nullptr);
    for (std::uint64_t i = 0; i < 400; ++i) ASSERT_TRUE(recorder.push(scene_frame(i)));
    EXPECT_EQ(recorder.stop(), 0);
    EXPECT_EQ(recorder.recorded(), 400U);
    EXPECT_NEAR(static_cast<double>(recorder.length()), 400.0 * frame_ns, 1e9);
  }
  std::vector<int> all = numbers(film::play(path_));
  int files = 1;
  for (; std::filesystem::exists(dir_.file("film_" + std::to_string(files) + ".mp4")); ++files) {
    const film::Film part = film::play(dir_.file("film_" + std::to_string(files) + ".mp4"));
    EXPECT_EQ(part.error, "");
    ASSERT_FALSE(part.pictures.empty());
    EXPECT_LT(part.pictures.front().pts, 2 * frame_ns) << "each file begins at its own zero";
    const std::vector<int> more = numbers(part);
    all.insert(all.end(), more.begin(), more.end());
  }
  EXPECT_GE(files, 2);
  EXPECT_EQ(all, range(0, 400)) << "no frame is lost or doubled where files meet";
}

TEST_F(Recording, SoundRunsAlongAndSilenceStandsInForAMissingMicrophone) {
  for (const std::string microphone : {"tone", "default"}) {
    if (microphone == "default") setenv("PULSE_SERVER", "unix:/nonexistent", 1);
    Recorder::Setup with_sound = setup(microphone);
    testing::internal::CaptureStderr();
    {
      Recorder recorder(with_sound, nullptr);
      push_in_time(recorder, 60);
      EXPECT_EQ(recorder.stop(), 0);
    }
    const std::string errors = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), microphone == "tone" ? 0 : 1) << errors;
    film::Film film = film::play(path_);
    film::play_sound(path_, &film);
    EXPECT_EQ(film.error, "") << microphone;
    EXPECT_EQ(film.pictures.size(), 60U) << microphone;
    EXPECT_NEAR(static_cast<double>(film.sound_ns), 60.0 * frame_ns, 0.06e9) << microphone;
    EXPECT_EQ(film.sound_peak > 0.1, microphone == "tone");
  }
  unsetenv("PULSE_SERVER");
}

TEST_F(Recording, SoundGoesOnSampleBySampleWhereFilesMeet) {
  Recorder::Setup small = setup("tone");
  small.part_length = std::chrono::milliseconds(1300);
  {
    Recorder recorder(small, nullptr);
    push_in_time(recorder, 100);
    EXPECT_EQ(recorder.stop(), 0);
    EXPECT_EQ(recorder.recorded() + recorder.dropped(), 100U);
    EXPECT_EQ(recorder.dropped(), 0U);
  }
  const std::string stem = path_.substr(0, path_.rfind(".mp4"));
  EXPECT_FALSE(std::filesystem::exists(stem + "_3.mp4"));
  std::vector<int> all;
  for (const std::string& path : {path_, stem + "_1.mp4", stem + "_2.mp4"}) {
    film::Film part = film::play(path);
    film::play_sound(path, &part);
    EXPECT_EQ(part.error, "");
    const std::vector<int> more = numbers(part);
    all.insert(all.end(), more.begin(), more.end());
    EXPECT_NEAR(static_cast<double>(part.sound_ns), static_cast<double>(part.pictures.size()) * frame_ns, 0.06e9);
    if (path == path_) continue;  // the microphone opens meanwhile
    for (std::size_t i = 5; i + 5 < part.levels.size(); ++i) {
      ASSERT_GT(part.levels[i], 0.05) << "silence in " << path << " at " << i * 10 << " ms";
    }
  }
  EXPECT_EQ(all, range(0, 100)) << "no frame is lost or doubled";
}

TEST_F(Recording, FullDiskEndsItWithALineAndAPlayableFilm) {
  Recorder::Setup full = setup();
  full.disk_margin = std::uint64_t{1} << 60;  // no disk has that much room
  std::atomic<int> ended = 0;
  testing::internal::CaptureStderr();
  Recorder recorder(full, [&](int error) { ended = error; });
  for (std::uint64_t i = 0; i < 100 && recorder.push(scene_frame(i)); ++i) {
  }
  EXPECT_EQ(recorder.stop(), ENOSPC);
  EXPECT_EQ(ended, ENOSPC);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "recording ended: No space left on device\n");
  const film::Film film = film::play(path_);
  EXPECT_EQ(film.error, "");
  EXPECT_EQ(film.pictures.size(), recorder.recorded());
  EXPECT_GE(film.pictures.size(), 1U);
}

TEST_F(Recording, SaysWhenItCannotBegin) {
  Recorder::Setup nowhere = setup();
  nowhere.path = dir_.file("missing/film.mp4");
  testing::internal::CaptureStderr();
  Recorder recorder(nowhere, nullptr);
  recorder.push(scene_frame(0));
  EXPECT_NE(recorder.wait_started(std::chrono::seconds(10)), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr().find("recording ended: "), 0U);

  Recorder starved(setup(), nullptr);
  EXPECT_EQ(starved.wait_started(std::chrono::milliseconds(50)), ETIMEDOUT);
}

TEST(VideoFile, IsNeverAnExistingOne) {
  const TempDir dir;
  for (const char* expected : {"VID.mp4", "VID_1.mp4", "VID_2.mp4"}) {
    std::string path;
    int fd = -1;
    ASSERT_EQ(handset::create_video_file(dir.file("VID"), 0, &path, &fd), 0);
    EXPECT_EQ(path, dir.file(expected));
    close(fd);
  }
  std::string path;
  int fd = -1;
  EXPECT_EQ(handset::create_video_file(dir.file("missing/VID"), 0, &path, &fd), ENOENT);
}

}  // namespace

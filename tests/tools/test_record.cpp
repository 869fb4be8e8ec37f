#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <QImage>
#include <chrono>
#include <filesystem>
#include <random>
#include <thread>

#include "tests/support/film.h"
#include "tests/support/temp_dir.h"
#include "tests/tools/process.h"

using namespace std::chrono_literals;

namespace {

std::vector<std::string> command(std::vector<std::string> words) {
  words.insert(words.begin(), MORVANE_RECORD);
  return words;
}

bool wait_for_data(const std::string& path) {
  for (int i = 0; i < 2000; ++i) {
    std::error_code error;
    if (std::filesystem::file_size(path, error) > 0 && !error) return true;
    std::this_thread::sleep_for(5ms);
  }
  return false;
}

class Record : public testing::Test {
 protected:
  /// Two seconds of the built-in scene, to be used as a clip.
  static void SetUpTestSuite() {
    dir_ = new TempDir;
    Process process(
        command({"--source", "scene", "--size", "320x240", "--seconds", "2", "--microphone", "none", clip()}));
    ASSERT_EQ(process.wait(), 0) << process.errors();
  }
  static void TearDownTestSuite() {
    delete dir_;
    dir_ = nullptr;
  }
  static std::string clip() { return dir_->file("clip.mp4"); }
  static std::string out(const std::string& name) { return dir_->file(name); }

  static TempDir* dir_;
};

TempDir* Record::dir_ = nullptr;

TEST_F(Record, SceneInSepia) {
  Process process(command({"--source", "scene", "--size", "320x240", "--filter", "5", "--seconds", "1.5",
                           "--microphone", "tone", out("sepia.mp4")}));
  ASSERT_EQ(process.wait(), 0) << process.errors();
  EXPECT_EQ(process.errors(), "");
  EXPECT_NE(process.output().find(" frames, "), std::string::npos) << process.output();
  EXPECT_NE(process.output().find(out("sepia.mp4")), std::string::npos);
  film::Film film = film::play(out("sepia.mp4"));
  film::play_sound(out("sepia.mp4"), &film);
  EXPECT_EQ(film.error, "");
  EXPECT_NEAR(static_cast<double>(film.pictures.size()), 46, 4);
  EXPECT_GT(film.sound_peak, 0.1);
  EXPECT_EQ(film::count_with_ffprobe(out("sepia.mp4")), static_cast<int>(film.pictures.size()));
  int last = -1;
  for (const film::Picture& picture : film.pictures) {
    for (const int x : {4, 100, 200, 310}) {
      ASSERT_NEAR(picture.u(x, 60), 110, 3);
      ASSERT_NEAR(picture.v(x, 60), 140, 3);
    }
    ASSERT_GT(picture.strip_number(), last) << "a frame is doubled or out of order";
    last = picture.strip_number();
  }
}

TEST_F(Record, UnpacedClipGivesExactlyItsFrames) {
  const film::Film original = film::play(clip());
  for (const char* filter : {"-1", "11"}) {
    const std::string path = out(std::string("clip") + filter + ".mp4");
    Process process(command({"--source", "clip:" + clip(), "--unpaced", "--filter", filter, path}));
    ASSERT_EQ(process.wait(), 0) << process.errors();
    EXPECT_NE(process.output().find(", 0 drops, "), std::string::npos) << process.output();
    const film::Film copy = film::play(path);
    EXPECT_EQ(copy.error, "");
    ASSERT_EQ(copy.pictures.size(), original.pictures.size());
    for (std::size_t i = 0; i < copy.pictures.size(); ++i) {
      ASSERT_EQ(copy.pictures[i].strip_number(), original.pictures[i].strip_number());
      ASSERT_NEAR(static_cast<double>(copy.pictures[i].pts - original.pictures[i].pts), 0, 1e6);
    }
    // The colour card's chips: red stays under the red filter, green and blue go grey.
    const film::Picture& picture = copy.pictures[30];
    EXPECT_GT(picture.v(19, 202), 230);
    EXPECT_EQ(std::abs(picture.v(32, 202) - 127) < 6, *filter == '1');
    EXPECT_EQ(std::abs(picture.u(45, 202) - 127) < 6, *filter == '1');
  }
}

/// Has ffmpeg make a clip of moving bars.
void make_clip(const std::string& path, const std::vector<std::string>& options) {
  std::vector<std::string> words = {"ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=s=320x240:r=30:d=1"};
  words.insert(words.end(), options.begin(), options.end());
  words.push_back(path);
  Process process(words);
  ASSERT_EQ(process.wait(), 0) << process.errors();
}

TEST_F(Record, ClipsOfEveryKindEndInOrder) {
  const std::vector<std::string> h264 = {"-c:v", "libx264", "-pix_fmt", "yuv420p"};
  const struct {
    const char* name;
    std::vector<std::string> options;
    const char* complaint;  ///< of a clip that plays once; null: it loops
  } clips[] = {
      {"once.ts", h264, "the clip has ended"},
      {"still.png", {"-frames:v", "1"}, nullptr},
      {"alpha.webm", {"-vf", "format=yuva420p", "-c:v", "libvpx-vp9", "-cpu-used", "8", "-auto-alt-ref", "0"}, nullptr},
  };
  for (const auto& clip : clips) {
    SCOPED_TRACE(clip.name);
    make_clip(out(clip.name), clip.options);
    const std::string path = out(std::string(clip.name) + ".mp4");
    Process process(command({"--source", "clip:" + out(clip.name), "--seconds", "1.5", "--microphone", "none", path}));
    EXPECT_EQ(process.wait(), clip.complaint != nullptr ? 1 : 0) << process.errors();
    EXPECT_NE(process.errors().find(clip.complaint != nullptr ? clip.complaint : ""), std::string::npos)
        << process.errors();
    const film::Film film = film::play(path);
    EXPECT_EQ(film.error, "");
    const double seconds = clip.complaint != nullptr ? 1 : 1.5;
    EXPECT_GT(film.pictures.size(), 5 * seconds) << "the clip stood still";
    EXPECT_LT(film.pictures.size(), 40 * seconds) << "the clip has lost its pace";
    EXPECT_FALSE(std::filesystem::exists(out(std::string(clip.name) + "_1.mp4")));
  }
  // Without a length asked for, the clip's end is the film's.
  Process whole(command({"--source", "clip:" + out("once.ts"), "--microphone", "none", out("whole.mp4")}));
  EXPECT_EQ(whole.wait(), 0) << whole.errors();
}

TEST_F(Record, OpaqueOverlaysKeepTheirColoursFromPngToFilm) {
  QImage picture(64, 48, QImage::Format_ARGB32);
  picture.fill(QColor(200, 40, 60));
  ASSERT_TRUE(picture.save(QString::fromStdString(out("card.png"))));
  for (const bool own : {false, true}) {
    const std::string path = out(own ? "own.mp4" : "tinted.mp4");
    std::vector<std::string> words = {"--source",  "scene",     "--size",        "320x240",    "--filter",
                                      "5",         "--texture", out("card.png"), "--position", "2",
                                      "--seconds", "0.5",       "--microphone",  "none",       path};
    if (own) words.emplace_back("--own-colors");
    Process process(command(words));
    ASSERT_EQ(process.wait(), 0) << process.errors();
    const film::Film film = film::play(path);
    ASSERT_GT(film.pictures.size(), 10U);
    // Y 90, U 111, V 206 by the engine's formulas; sepia's chroma where the filter colours the overlay.
    const film::Picture& shown = film.pictures[8];
    EXPECT_NEAR(shown.y(288, 24), 90, 3);
    EXPECT_NEAR(shown.u(288, 24), own ? 111 : 110, 3);
    EXPECT_NEAR(shown.v(288, 24), own ? 206 : 140, 3);
    EXPECT_NEAR(shown.v(200, 100), 140, 3) << "the picture beside the overlay is not sepia";
  }
}

TEST_F(Record, StampTicksEverySecondAndTexturesComeFromThePackage) {
  const std::string path = out("stamped.mp4");
  const std::string home = out("home");
  std::filesystem::create_directory(home);
  Process process(command({"--source", "gst:videotestsrc is-live=true pattern=solid-color foreground-color=0xff808080",
                           "--size", "640x480", "--texture", "brick", "--stamp", "1", "--stamp-position", "2",
                           "--seconds", "3.2", "--microphone", "none", path}),
                  [&] {
                    for (const char* name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME"}) unsetenv(name);
                    setenv("HOME", home.c_str(), 1);
                  });
  ASSERT_EQ(process.wait(), 0) << process.errors();
  const film::Film film = film::play(path);
  ASSERT_GT(film.pictures.size(), 80U);
  // Brick is red at the edge; the middle is open and holds the stamp: 488 x 28 at (76, 226).
  EXPECT_GT(film.pictures[40].v(6, 300), 133);
  int ticks = 0;
  for (std::size_t i = 1; i < film.pictures.size(); ++i) {
    // The last digit of the seconds stands before the AM/PM sign, 24 pixels wide.
    int difference = 0;
    for (int x = 76 + 401; x < 76 + 440; ++x) {
      difference += std::abs(film.pictures[i].y(x, 238) - film.pictures[i - 1].y(x, 238));
    }
    if (difference > 400) ++ticks;
  }
  EXPECT_GE(ticks, 2);
  EXPECT_LE(ticks, 4);
}

TEST_F(Record, SignalsCompleteTheFile) {
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
    const std::string path = out("signal" + std::to_string(number) + ".mp4");
    Process process(command({"--source", "scene", "--size", "320x240", "--microphone", "none", path}));
    ASSERT_TRUE(wait_for_data(path));
    std::this_thread::sleep_for(700ms);
    process.signal(number);
    EXPECT_EQ(process.wait(), 0);
    const film::Film film = film::play(path);
    EXPECT_EQ(film.error, "");
    EXPECT_GT(film.pictures.size(), 12U);
    const std::vector<std::string> boxes = film::boxes(path);
    EXPECT_EQ(std::count(boxes.begin(), boxes.end(), "moov"), 1);
  }
}

TEST_F(Record, KilledRecordingsPlayToWithinASecondAndAHalf) {
  std::mt19937 random(20261122);
  std::uniform_int_distribution<int> moment(1300, 4000);
  for (int i = 0; i < 4; ++i) {
    const std::string path = out("killed" + std::to_string(i) + ".mp4");
    Process process(command({"--source", "scene", "--size", "640x480", "--microphone", "tone", path}));
    ASSERT_TRUE(wait_for_data(path));
    const int lived = moment(random);
    std::this_thread::sleep_for(std::chrono::milliseconds(lived));
    process.signal(SIGKILL);
    EXPECT_EQ(process.wait(), -SIGKILL);
    const film::Film film = film::play(path);
    EXPECT_EQ(film.error, "");
    EXPECT_GE(static_cast<double>(film.pictures.size()), (lived - 1500) * 0.030) << "lived " << lived << " ms";
    EXPECT_EQ(film::count_with_ffprobe(path), static_cast<int>(film.pictures.size()));
  }
}

TEST_F(Record, LoopingClipGoesOnPastItsEnd) {
  const std::string path = out("loop.mp4");
  Process process(command({"--source", "clip:" + clip(), "--seconds", "4.5", "--microphone", "none", path}));
  ASSERT_EQ(process.wait(), 0) << process.errors();
  const film::Film film = film::play(path);
  EXPECT_EQ(film.error, "");
  EXPECT_GT(film.pictures.size(), 110U);
  for (std::size_t i = 1; i < film.pictures.size(); ++i) {
    const std::int64_t step = film.pictures[i].pts - film.pictures[i - 1].pts;
    ASSERT_GT(step, 0);
    ASSERT_LT(step, 150'000'000) << "the loop's seam shows at " << i;
  }
}

TEST_F(Record, FullDiskExitsWithOneAndAPlayableFilm) {
  const std::string path = out("full.mp4");
  // Room for some of the film; then every write fails.
  Process process(command({"--source", "gst:videotestsrc is-live=true pattern=snow", "--size", "1280x720",
                           "--microphone", "none", "--seconds", "30", path}),
                  [] {
                    const rlimit limit{3'000'000, 3'000'000};
                    setrlimit(RLIMIT_FSIZE, &limit);
                  });
  EXPECT_EQ(process.wait(), 1);
  EXPECT_NE(process.errors().find("recording ended: "), std::string::npos) << process.errors();
  const film::Film film = film::play(path);
  EXPECT_GT(film.pictures.size(), 5U);
}

TEST_F(Record, FilmThatFailsAtItsVeryEndExitsWithOne) {
  Process process(command({"--source", "clip:" + clip(), "--unpaced", out("end.mp4")}), [] {
    // Less than the first fragment: its failure comes too late to be noticed before the clip is through.
    const rlimit limit{4'000, 4'000};
    setrlimit(RLIMIT_FSIZE, &limit);
  });
  EXPECT_EQ(process.wait(), 1);
  EXPECT_NE(process.errors().find("recording ended: "), std::string::npos) << process.errors();
}

TEST_F(Record, EachImpossibilityExitsWithOneAndSaysSo) {
  write_file(out("existing.mp4"), "precious");
  write_file(out("noise.bin"), std::string(3000, 'n'));
  const struct {
    std::vector<std::string> words;
    const char* said;
    int lines = 1;
  } cases[] = {
      {{"--source", "scene", "--seconds", "1", out("existing.mp4")}, "cannot create"},
      {{"--source", "scene", "--seconds", "1", out("no/such/folder.mp4")}, "cannot create"},
      {{"--source", "scene", "--seconds", "1", dir_->path()}, "cannot create"},
      {{"--source", "clip:" + out("missing.mp4"), out("x.mp4")}, "cannot open clip"},
      {{"--source", "clip:" + out("noise.bin"), out("x.mp4")}, "cannot decode clip"},
      {{"--source", "gst:nothing-like-that", out("x.mp4")}, "camera: no element"},
      {{"--source", "gst:videotestsrc ! video/x-raw", "--size", "15x15", out("x.mp4")}, "bad value"},
      {{"--source", "telescope", out("x.mp4")}, "unknown camera source"},
      {{"--source", "scene", "--texture", out("noise.bin"), out("x.mp4")}, "logo is null\n", 2},
      {{"--frobnicate", out("x.mp4")}, "unknown option"},
  };
  for (const auto& c : cases) {
    Process process(command(c.words));
    EXPECT_EQ(process.wait(), 1) << c.said;
    EXPECT_NE(process.errors().find(c.said), std::string::npos) << process.errors();
    EXPECT_EQ(std::count(process.errors().begin(), process.errors().end(), '\n'), c.lines) << process.errors();
    EXPECT_FALSE(std::filesystem::exists(out("x.mp4"))) << c.said;
  }
  EXPECT_EQ(read_file(out("existing.mp4")), "precious");
}

TEST_F(Record, LostCameraExitsWithOneAndAPlayableFilm) {
  const std::string path = out("lost.mp4");
  Process process(command({"--source", "gst:videotestsrc is-live=true ! identity error-after=60", "--size", "320x240",
                           "--microphone", "none", "--filter", "7", path}));
  EXPECT_EQ(process.wait(), 1);
  EXPECT_NE(process.errors().find("Resource are being revoked!\n"), std::string::npos) << process.errors();
  const film::Film film = film::play(path);
  EXPECT_EQ(film.error, "");
  EXPECT_GT(film.pictures.size(), 30U);
}

}  // namespace

#include <gst/gst.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "platform/camera/audio_encoder.h"
#include "platform/camera/colorimetry.h"
#include "platform/camera/encoder_proof.h"
#include "platform/camera/overload.h"
#include "platform/camera/recorder.h"
#include "tests/camera/scene_frames.h"
#include "tests/support/film.h"
#include "tests/support/temp_dir.h"

using handset::VideoEncoder;

namespace {

constexpr std::int64_t frame_ns = 1'000'000'000 / 30;

class Encoders : public testing::Test {
 protected:
  static void SetUpTestSuite() { gst_init(nullptr, nullptr); }
  void TearDown() override { handset::use_video_encoders({}); }

  static std::string prove(const std::string& element, const std::string& settings, bool describe = false) {
    return handset::prove_video_encoder({element, "NV12", settings, true, false, describe}, {320, 240}, 30).reason;
  }
  handset::Film::Setup film_setup() const {
    write_file(dir_.file("film.mp4"), "");
    return {.path = dir_.file("film.mp4"),
            .info = frames_.info(),
            .rate_numerator = 30,
            .rate_denominator = 1,
            .sound = false,
            .start = 0};
  }
  /// Films the scene. @param lighten_at  frames before which the encoder is made lighter
  film::Film make_film(const handset::Film::Setup& setup, int count, const std::vector<int>& lighten_at) {
    std::string error;
    const auto film = handset::Film::start(setup, &error);
    EXPECT_NE(film, nullptr) << error;
    if (!film) return {};
    for (int i = 0; i < count; ++i) {
      const bool lighten = std::find(lighten_at.begin(), lighten_at.end(), i) != lighten_at.end();
      EXPECT_TRUE(!lighten || film->lighten());
      EXPECT_TRUE(film->wait_ready(std::chrono::seconds(30)));
      film->push_video(frames_.make(static_cast<std::uint64_t>(i), i * frame_ns));
    }
    EXPECT_EQ(film->finish(), 0) << film->failure();
    return film::play(setup.path);
  }
  static void expect_whole(const film::Film& film, int count) {
    EXPECT_EQ(film.error, "");
    EXPECT_EQ(film.colorimetry, handset::frame_colorimetry);
    ASSERT_EQ(film.pictures.size(), static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) EXPECT_EQ(film.pictures[static_cast<std::size_t>(i)].strip_number(), i);
  }

  const TempDir dir_;
  const SceneFrames frames_{320, 240};
};

TEST_F(Encoders, AWorkingOneIsFoundForEverySizeThatUnitsList) {
  for (const camera_res_t size : {camera_res_t{16, 16}, camera_res_t{640, 480}, camera_res_t{1920, 1080}}) {
    EXPECT_TRUE(handset::proven_video_encoder(size, 30)) << size.width << "x" << size.height;
  }
  EXPECT_NE(handset::audio_encoder_description(), "");
}

TEST_F(Encoders, OnesThatLieAreFoundOut) {
  EXPECT_EQ(prove("x264enc", "tune=zerolatency"), "");
  EXPECT_EQ(prove("no-such-encoder", ""), "not installed");
  EXPECT_EQ(prove("videobalance", "saturation=0 ! x264enc tune=zerolatency"), "its picture is wrong");
  EXPECT_EQ(prove("identity", "drop-probability=1 ! x264enc tune=zerolatency"), "it swallowed frames");
  EXPECT_EQ(prove("x264enc", "tune=zerolatency insert-vui=false"), handset::no_colour_description);
  EXPECT_EQ(prove("x264enc", "tune=zerolatency insert-vui=false", true), "");
  EXPECT_NE(prove("identity", "error-after=2 ! x264enc tune=zerolatency"), "");
}

TEST_F(Encoders, TheFirstThatKeepsUpIsChosenElseTheFastest) {
  using std::chrono::milliseconds;
  struct Answer {
    std::string reason;
    int frame_ms;
    bool describable = false;
    bool last_resort = false;
  };
  const Answer slow{"", 40};
  const Answer quick{"", 20};
  const Answer fair{"", 25};
  const Answer broken{"it does not start", 0};
  const Answer bare{handset::no_colour_description, 10, true};
  const Answer hopeless{handset::no_colour_description, 10};
  const Answer last{"", 5, false, true};
  const struct {
    std::vector<Answer> answers;
    int rate;
    int chosen;
    bool described;
  } cases[] = {{{quick, quick}, 30, 0, false},     {{slow, quick}, 30, 1, false}, {{slow, quick, slow}, 60, 1, false},
               {{broken, slow}, 30, 1, false},     {{bare, quick}, 30, 0, true},  {{hopeless, slow}, 30, 1, false},
               {{hopeless, broken}, 30, 0, false}, {{broken}, 30, -1, false},     {{slow, last}, 30, 0, false},
               {{broken, last}, 30, 1, false},     {{quick, fair}, 42, 0, false}};
  for (const auto& row : cases) {
    std::vector<VideoEncoder> candidates;
    for (std::size_t i = 0; i < row.answers.size(); ++i) {
      candidates.push_back({std::to_string(i), "", "", false, row.answers[i].last_resort});
    }
    const auto prove = [&](const VideoEncoder& encoder) -> handset::EncoderProof {
      const Answer& answer = row.answers[std::stoul(encoder.element)];
      const bool mended = answer.describable && encoder.describe;
      return {mended ? "" : answer.reason, milliseconds(answer.frame_ms)};
    };
    const auto chosen = handset::choose_video_encoder(candidates, prove, row.rate);
    ASSERT_EQ(chosen.has_value(), row.chosen >= 0);
    if (!chosen) continue;
    EXPECT_EQ(chosen->element, std::to_string(row.chosen));
    EXPECT_EQ(chosen->describe, row.described);
  }
}

TEST_F(Encoders, AFilmOfOneThatLeavesTheColoursOutHasThem) {
  handset::use_video_encoders({{"x264enc", "NV12", "tune=zerolatency insert-vui=false", true},
                               {"openh264enc", "I420", "rate-control=bitrate complexity=low", false}});
  ASSERT_TRUE(handset::proven_video_encoder({320, 240}, 30)->describe);
  expect_whole(make_film(film_setup(), 20, {}), 20);
}

TEST_F(Encoders, AFilmGoesOnWithALighterOne) {
  std::vector<VideoEncoder> rows;
  for (const VideoEncoder& row : handset::video_encoder_candidates()) {
    if (row.element == "x264enc") rows.push_back(row);
  }
  ASSERT_EQ(rows.size(), 3U);
  handset::use_video_encoders(rows);
  // However busy this machine is: no other rate of the test is proven before, and 1 frame/s is always kept up with.
  ASSERT_EQ(handset::proven_video_encoder({320, 240}, 1)->settings, rows[0].settings);
  handset::Film::Setup setup = film_setup();
  setup.rate_numerator = 1;
  expect_whole(make_film(setup, 40, {10, 25}), 40);
  EXPECT_EQ(film::count_with_ffprobe(setup.path), 40);
}

TEST(Overload, IsSeenBeforeFramesAreLostAndHiccupsAreForgiven) {
  const auto lightened_at = [](const std::vector<std::size_t>& waiting) {
    handset::OverloadWatch watch(10);
    std::vector<std::size_t> steps;
    for (std::size_t i = 0; i < waiting.size(); ++i) {
      if (watch.must_lighten(waiting[i])) steps.push_back(i);
    }
    return steps;
  };
  using Steps = std::vector<std::size_t>;
  EXPECT_EQ(lightened_at({0, 4, 6, 7, 6, 5, 4, 3, 2, 1, 0, 5, 7, 4, 0}), Steps{});
  EXPECT_EQ(lightened_at({1, 3, 5, 6, 8}), Steps{4}) << "twice too slow";
  EXPECT_EQ(lightened_at({5, 5, 5, 5, 6, 6, 6, 6, 6, 7, 7}), Steps{9}) << "a little too slow";
  const std::vector<std::size_t> always(25, 9);
  EXPECT_EQ(lightened_at(always), (Steps{0, 11, 22})) << "each step is given time";
}

TEST(Overload, LossesAreToldForAWhile) {
  using handset::LossWatch;
  LossWatch watch;
  const auto at = [](int seconds) { return LossWatch::Clock::time_point(std::chrono::seconds(seconds)); };
  EXPECT_FALSE(watch.losing(7, at(100))) << "lost before the recording";
  EXPECT_FALSE(watch.losing(7, at(101)));
  EXPECT_TRUE(watch.losing(8, at(102)));
  EXPECT_TRUE(watch.losing(8, at(104)));
  EXPECT_FALSE(watch.losing(8, at(105)));
}

}  // namespace

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>

#include "platform/camera/stabilizer.h"
#include "tests/camera/textured_scene.h"

using handset::Motion;
using handset::MotionEstimator;
using handset::Stabilizer;

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr int rate = 30;
constexpr std::int64_t frame_ns = 1'000'000'000 / rate;

struct Place {
  double x, y;
};
/// Where the content is at a time in seconds.
using Way = std::function<Place(double)>;

Way shaken(double amplitude, double hertz, double phase = 0) {
  return [=](double t) {
    return Place{amplitude * std::sin(2 * pi * hertz * t + phase), amplitude * std::cos(2 * pi * hertz * t + phase)};
  };
}

/// A stabilizer that is shown a scene; what is left of the content's way follows from the views that it chooses.
class Rig {
 public:
  Rig(camera_res_t size, int reach)
      : size_(size),
        canvas_(Stabilizer::canvas_of(size)),
        scene_(static_cast<int>(canvas_.width), static_cast<int>(canvas_.height), reach),
        stabilizer_(size) {}

  TexturedScene& scene() { return scene_; }
  /// Shows what the scene has painted. @return how far the view is from the middle
  Place show() {
    const Stabilizer::View view = stabilizer_.next(scene_.luma(), scene_.width(), frames_++ * frame_ns);
    EXPECT_EQ(view.left % 2 + view.top % 2, 0);
    EXPECT_TRUE(view.left >= 0 && view.left + size_.width <= canvas_.width);
    EXPECT_TRUE(view.top >= 0 && view.top + size_.height < canvas_.height) << "rows must end inside the canvas";
    return {view.left - (static_cast<int>(canvas_.width) - static_cast<int>(size_.width)) / 2.0,
            view.top - (static_cast<int>(canvas_.height) - static_cast<int>(size_.height) - 2) / 2.0};
  }
  /// Content positions in the pictures that are shown.
  std::vector<Place> follow(const Way& way, int frames, double contrast, double noise) {
    std::vector<Place> shown;
    for (int i = 0; i < frames; ++i) {
      Place at = way(static_cast<double>(i) / rate);
      if (size_.width > 1280) at = {std::round(at.x), std::round(at.y)};
      scene_.paint(at.x, at.y, contrast, noise);
      const Place view = show();
      shown.push_back({at.x - view.x, at.y - view.y});
    }
    return shown;
  }

 private:
  const camera_res_t size_, canvas_;
  TexturedScene scene_;
  Stabilizer stabilizer_;
  std::int64_t frames_ = 0;
};

struct Spread {
  double rms = 0, peak = 0;
};

/// About the mean, from a frame on.
Spread spread(const std::vector<Place>& places, double Place::*part, std::size_t from) {
  double mean = 0;
  Spread spread;
  const auto count = static_cast<double>(places.size() - from);
  for (std::size_t i = from; i < places.size(); ++i) mean += places[i].*part / count;
  for (std::size_t i = from; i < places.size(); ++i) {
    const double away = places[i].*part - mean;
    spread.rms += away * away / count;
    spread.peak = std::max(spread.peak, std::abs(away));
  }
  spread.rms = std::sqrt(spread.rms);
  return spread;
}

struct ShakeCase {
  camera_res_t size;
  double amplitude, hertz, contrast, noise;
};

class Shake : public testing::TestWithParam<ShakeCase> {};

TEST_P(Shake, IsReducedToAQuarterOnBothAxes) {
  const ShakeCase& c = GetParam();
  Rig rig(c.size, static_cast<int>(c.amplitude) + 1);
  const std::vector<Place> shown = rig.follow(shaken(c.amplitude, c.hertz, 0.4), 5 * rate / 2, c.contrast, c.noise);
  for (double Place::*const axis : {&Place::x, &Place::y}) {
    const Spread left = spread(shown, axis, rate);
    EXPECT_LT(left.rms, c.amplitude / std::sqrt(2) / 4) << (axis == &Place::x ? "x" : "y");
    EXPECT_LT(left.peak, c.amplitude / 4) << (axis == &Place::x ? "x" : "y");
    RecordProperty(axis == &Place::x ? "x_rms_share" : "y_rms_share",
                   std::to_string(left.rms / c.amplitude * std::sqrt(2)));
    RecordProperty(axis == &Place::x ? "x_peak_share" : "y_peak_share", std::to_string(left.peak / c.amplitude));
  }
}

INSTANTIATE_TEST_SUITE_P(AtManyRatesAndSizes, Shake,
                         testing::Values(ShakeCase{{1920, 1080}, 12, 2, 1, 4}, ShakeCase{{1920, 1080}, 12, 4, 1, 4},
                                         ShakeCase{{1920, 1080}, 12, 6, 1, 4},
                                         ShakeCase{{1920, 1080}, 12, 3.3, 0.15, 6}, ShakeCase{{1280, 720}, 12, 2, 1, 4},
                                         ShakeCase{{1280, 720}, 12, 5, 0.3, 8}, ShakeCase{{3840, 2160}, 24, 2, 1, 4},
                                         ShakeCase{{640, 480}, 8, 3, 1, 4}, ShakeCase{{320, 240}, 6, 4, 1, 3},
                                         ShakeCase{{1080, 1920}, 12, 2, 1, 4}),
                         [](const auto& instance) {
                           const ShakeCase& c = instance.param;
                           return std::to_string(c.size.width) + "x" + std::to_string(c.size.height) + "_" +
                                  std::to_string(static_cast<int>(c.hertz * 10)) + "dHz_" +
                                  std::to_string(static_cast<int>(c.contrast * 100)) + "percent";
                         });

/// A pan of `speed` pixels a second from second 1 to second 4.
Way panned(double speed) {
  return [=](double t) {
    return Place{-speed * std::clamp(t - 1, 0.0, 3.0), 0.3 * speed * std::clamp(t - 1, 0.0, 3.0)};
  };
}

TEST(Pan, KeepsItsSpeedAndStartsAndStopsWithoutAJump) {
  for (const double speed : {40.0, 150.0, 400.0}) {
    SCOPED_TRACE(speed);
    Rig rig({1280, 720}, static_cast<int>(3 * speed) + 2);
    const std::vector<Place> shown = rig.follow(panned(speed), 6 * rate, 1, 3);
    const auto x = [&](double seconds) { return shown[static_cast<std::size_t>(seconds * rate)].x; };
    EXPECT_NEAR(x(1), 0, 1) << "it moves before it has to";
    EXPECT_NEAR((x(4) - x(2.5)) / 1.5, -speed, 0.02 * speed + 2);
    for (std::size_t i = rate + 1; i < shown.size(); ++i) {
      // A step is the view's own two pixels more than the content's, and never back.
      const double step = shown[i - 1].x - shown[i].x;
      EXPECT_LE(step, 1.25 * speed / rate + 3) << "at frame " << i;
      EXPECT_GE(step, -2.5) << "at frame " << i;
    }
    EXPECT_NEAR(x(5.5), -3 * speed, 3) << "it does not come to rest where the camera does";
  }
}

TEST(Pan, WithShakeIsNotShakenMore) {
  Rig rig({1280, 720}, 500);
  const Way pan = panned(150), shake = shaken(8, 4);
  const std::vector<Place> shown = rig.follow(
      [&](double t) {
        return Place{pan(t).x + shake(t).x, pan(t).y + shake(t).y};
      },
      4 * rate, 1, 3);
  std::vector<Place> swing;
  for (std::size_t i = 2 * rate; i < shown.size(); ++i) {
    const Place way = pan(static_cast<double>(i) / rate);
    swing.push_back({shown[i].x - way.x, shown[i].y - way.y});
  }
  EXPECT_LT(spread(swing, &Place::x, 0).rms, 8 / std::sqrt(2));
  EXPECT_LT(spread(swing, &Place::y, 0).rms, 8 / std::sqrt(2));
}

TEST(Cut, StartsAnewInTheMiddle) {
  Rig rig({640, 480}, 400);
  rig.follow([](double t) { return Place{100 * t, -60 * t}; }, 2 * rate, 1, 3);
  TexturedScene other(rig.scene().width(), rig.scene().height(), 400, 77);
  std::swap(rig.scene(), other);
  for (int i = 0; i < 20; ++i) {
    rig.scene().paint(0, 0, 1, 3);
    const Place view = rig.show();
    EXPECT_EQ(view.x, 0) << i;
    EXPECT_EQ(view.y, 0) << i;
  }
}

TEST(Stillness, IsWhereTheViewStays) {
  struct {
    const char* what;
    double contrast, noise;
  } const cases[] = {
      {"a camera on a stand", 1, 5}, {"a faint scene", 0.1, 4}, {"nothing to see", 0, 0}, {"noise in the dark", 0, 12}};
  for (const auto& c : cases) {
    Rig rig({640, 480}, 2);
    for (int i = 0; i < rate; ++i) {
      rig.scene().paint(0, 0, c.contrast, c.noise);
      const Place view = rig.show();
      ASSERT_EQ(view.x, 0) << c.what << ", frame " << i;
      ASSERT_EQ(view.y, 0) << c.what << ", frame " << i;
    }
  }
}

TEST(Object, ThatMovesByItselfIsNotFollowed) {
  for (const double contrast : {1.0, 0.2, 0.0}) {
    Rig rig({1280, 720}, 2);
    for (int i = 0; i < 3 * rate; ++i) {
      rig.scene().paint(0, 0, contrast, 3);
      const double t = static_cast<double>(i) / rate;
      rig.scene().paint_object(static_cast<int>(i * 11 % 1400) - 200, 240 + static_cast<int>(60 * std::sin(9 * t)),
                               220);
      const Place view = rig.show();
      ASSERT_EQ(view.x, 0) << "frame " << i << " over contrast " << contrast;
      ASSERT_EQ(view.y, 0) << "frame " << i << " over contrast " << contrast;
    }
  }
}

TEST(PeriodicTexture, IsNeverShakenMore) {
  for (const double period : {9.0, 24.0, 80.0}) {
    Rig rig({1280, 720}, 2);
    TexturedScene& scene = rig.scene();
    std::vector<Place> shown;
    const Way way = shaken(4, 3);
    for (int i = 0; i < 3 * rate; ++i) {
      const Place at = way(static_cast<double>(i) / rate);
      const auto wave = [period](double place) { return 50 * std::sin(2 * pi * place / period); };
      std::vector<double> columns;
      for (int column = 0; column < scene.width(); ++column) columns.push_back(wave(column - at.x));
      for (int row = 0; row < scene.height(); ++row) {
        std::uint8_t* line = scene.luma() + row * scene.width();
        const double of_row = 128 + wave(row - at.y);
        for (const double of_column : columns) *line++ = static_cast<std::uint8_t>(of_row + of_column);
      }
      const Place view = rig.show();
      shown.push_back({at.x - view.x, at.y - view.y});
    }
    EXPECT_LE(spread(shown, &Place::x, rate).rms, 4 / std::sqrt(2) + 0.01) << period;
    EXPECT_LE(spread(shown, &Place::y, rate).rms, 4 / std::sqrt(2) + 0.01) << period;
  }
}

TEST(Estimator, MeasuresFractionsOfAPixelUpToItsReach) {
  TexturedScene scene(1280, 720, 60);
  for (const Place& step : {Place{0.3, -0.2}, Place{-2.6, 1.4}, Place{13.5, 9.25}, Place{-31, 22}, Place{45, 0}}) {
    MotionEstimator estimator(1280, 720);
    scene.paint(0, 0, 1, 4);
    EXPECT_EQ(estimator.next(scene.luma(), 1280).kind, Motion::Kind::unclear) << "one picture has no motion";
    scene.paint(step.x, step.y, 0.9, 4);  // and the light has changed
    const Motion motion = estimator.next(scene.luma(), 1280);
    EXPECT_EQ(motion.kind, Motion::Kind::followed);
    EXPECT_NEAR(motion.x, step.x, 0.2);
    EXPECT_NEAR(motion.y, step.y, 0.2);
  }
}

TEST(Estimator, TakesPicturesOfEverySizeAndStride) {
  for (const auto& [width, height] : {std::pair{16, 16}, {17, 33}, {50, 18}, {161, 90}, {641, 481}, {2000, 20}}) {
    MotionEstimator estimator(width, height);
    const int stride = width + 13;
    std::vector<std::uint8_t> luma(static_cast<std::size_t>((height - 1) * stride + width));
    std::minstd_rand random(5);
    for (std::uint8_t& sample : luma) sample = static_cast<std::uint8_t>(random());
    for (int i = 0; i < 3; ++i) {
      const Motion motion = estimator.next(luma.data(), stride);
      EXPECT_NEAR(motion.x, 0, 1e-6);
      EXPECT_NEAR(motion.y, 0, 1e-6);
    }
  }
}

TEST(Canvas, TakesAtMostEightPercent) {
  for (const camera_res_t size : {camera_res_t{320, 240},
                                  {640, 480},
                                  {960, 540},
                                  {1280, 720},
                                  {1920, 1080},
                                  {3840, 2160},
                                  {8192, 4320},
                                  {16, 16}}) {
    const camera_res_t canvas = Stabilizer::canvas_of(size);
    EXPECT_LE(canvas.width - size.width, 0.08 * size.width);
    EXPECT_LE(canvas.height - size.height, 0.08 * size.height);
    EXPECT_EQ(canvas.width % 2 + canvas.height % 2, 0U);
  }
  EXPECT_EQ(Stabilizer::canvas_of({1920, 1080}).width, 1920U + 2 * 76);
  EXPECT_EQ(Stabilizer::canvas_of({16, 16}).width, 16U) << "too small to be moved";
}

}  // namespace

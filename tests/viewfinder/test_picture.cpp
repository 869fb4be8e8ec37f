#include <gtest/gtest.h>

#include "camera/rotation.h"
#include "platform/cascades/viewfinder_notice.h"
#include "platform/cascades/viewfinder_picture.h"
#include "tests/viewfinder/posted_frame.h"

using handset::Stance;

namespace {

constexpr int all_angles[] = {0, 90, 180, 270};
const QColor colours[4] = {Qt::red, Qt::green, Qt::blue, Qt::white};

class Nv12Picture {
 public:
  Nv12Picture(int width, int height) : frame_(quadrants(width, height, colours)) {
    gst_buffer_map(frame_.buffer.get(), &map_, GST_MAP_READ);
  }
  ~Nv12Picture() { gst_buffer_unmap(frame_.buffer.get(), &map_); }
  Nv12Picture(const Nv12Picture&) = delete;
  Nv12Picture& operator=(const Nv12Picture&) = delete;

  handset::Nv12 view() const {
    const GstVideoInfo& info = *frame_.info;
    return {map_.data, info.stride[0], map_.data + info.offset[1], info.stride[1], info.width, info.height};
  }

 private:
  handset::Frame frame_;
  GstMapInfo map_{};
};

/// Colours in the middle of the quadrants, from the top left clockwise.
std::vector<QColor> quadrants_of(const QImage& image) {
  const int w = image.width();
  const int h = image.height();
  return {image.pixelColor(w / 4, h / 4), image.pixelColor(w * 3 / 4, h / 4), image.pixelColor(w * 3 / 4, h * 3 / 4),
          image.pixelColor(w / 4, h * 3 / 4)};
}

bool near(const QColor& a, const QColor& b) {
  return std::abs(a.red() - b.red()) <= colour_tolerance && std::abs(a.green() - b.green()) <= colour_tolerance &&
         std::abs(a.blue() - b.blue()) <= colour_tolerance;
}

/// The quadrants, mirrored and then turned clockwise, worked out by moving them about.
std::vector<QColor> expected(Stance stance) {
  std::vector<QColor> all(std::begin(colours), std::end(colours));
  if (stance.mirror) all = {all[1], all[0], all[3], all[2]};
  for (int turned = 0; turned < stance.angle; turned += 90) all = {all[3], all[0], all[1], all[2]};
  return all;
}

TEST(Picture, StandsAsItIsTurnedAndMirroredAtEverySize) {
  const Nv12Picture frame(322, 182);
  handset::PictureConverter converter;
  for (const int angle : all_angles) {
    for (const bool mirror : {false, true}) {
      for (const QSize upright : {QSize(322, 182), QSize(77, 45), QSize(161, 91), QSize(700, 401), QSize(20, 400)}) {
        const Stance stance{angle, mirror};
        const QSize size = stance.lies() ? upright.transposed() : upright;
        const QImage image = converter.convert(frame.view(), size, stance);
        ASSERT_EQ(image.size(), size);
        const std::vector<QColor> seen = quadrants_of(image);
        for (std::size_t i = 0; i < 4; ++i) {
          EXPECT_TRUE(near(seen[i], expected(stance)[i]))
              << "quadrant " << i << " at " << angle << (mirror ? " mirrored" : "") << " is "
              << seen[i].name().toStdString();
        }
      }
    }
  }
}

TEST(Picture, EveryColourComesThrough) {
  handset::PictureConverter converter;
  for (const QColor& colour : {QColor(200, 30, 90), QColor(12, 200, 180), QColor(128, 128, 128), QColor(Qt::yellow),
                               QColor(Qt::cyan), QColor(Qt::magenta), QColor(Qt::black), QColor(250, 128, 3)}) {
    const handset::Frame frame = quadrants(64, 48, {colour, colour, colour, colour});
    GstMapInfo map;
    ASSERT_TRUE(gst_buffer_map(frame.buffer.get(), &map, GST_MAP_READ));
    const GstVideoInfo& info = *frame.info;
    const QImage image = converter.convert(
        {map.data, info.stride[0], map.data + info.offset[1], info.stride[1], 64, 48}, {30, 22}, {0, false});
    gst_buffer_unmap(frame.buffer.get(), &map);
    EXPECT_TRUE(near(image.pixelColor(15, 11), colour)) << colour.name().toStdString();
  }
}

TEST(Picture, ImagesAreUsedAgainButNotWhileSomebodyHoldsThem) {
  const Nv12Picture frame(64, 48);
  handset::PictureConverter converter;
  const auto convert = [&] { return converter.convert(frame.view(), {64, 48}, {0, false}); };
  QImage shown = convert();
  QImage next = convert();
  EXPECT_NE(shown.constBits(), next.constBits());
  const uchar* first = shown.constBits();
  shown = {};
  EXPECT_EQ(convert().constBits(), first);
  std::vector<QImage> hoarded;
  for (int i = 0; i < 6; ++i) {
    hoarded.push_back(convert());
    for (std::size_t j = 0; j + 1 < hoarded.size(); ++j) EXPECT_NE(hoarded[j].constBits(), hoarded.back().constBits());
  }
}

TEST(Picture, FillsWhereTheShapesAreAlikeAndStandsInTheMiddleElsewhere) {
  const QRectF landscape(0, 0, 1280, 768);
  EXPECT_EQ(handset::place_of({640, 480}, landscape.size()), landscape);
  EXPECT_EQ(handset::place_of({1920, 1080}, landscape.size()), landscape);
  EXPECT_EQ(handset::place_of({1920, 1080}, {768, 1280}), QRectF(0, 424, 768, 432));
  EXPECT_EQ(handset::place_of({1080, 1920}, landscape.size()), QRectF(424, 0, 432, 768));
  EXPECT_EQ(handset::place_of({640, 480}, {720, 720}), QRectF(0, 0, 720, 720));
  EXPECT_EQ(handset::place_of({1600, 900}, {720, 720}), QRectF(0, 157.5, 720, 405));
  EXPECT_TRUE(handset::place_of({640, 480}, {0, 100}).isEmpty());
}

/// The picture's stance when the application has set what it works out for a direction.
Stance shown(const rotation_state_s& state) {
  return handset::stance_of(state.mWindowAngle, state.mMirror, state.mVfAngle, state.mDisplayAngle);
}

TEST(Picture, IsUprightAtEveryDirectionBeforeInAndAfterARecording) {
  const std::vector<int> angles(std::begin(all_angles), std::end(all_angles));
  for (const bool front : {false, true}) {
    for (const bool separate : {false, true}) {
      for (const int stored : all_angles) {
        for (const int held : all_angles) {
          for (const int after : all_angles) {
            rotation_inputs_s inputs{.front = front,
                                     .camera_open = true,
                                     .mChooseVideoAngle = false,
                                     .mSeparateVfRotation = separate,
                                     .mVideoRotations = angles};
            rotation_state_s state{.mVideoAngle = stored, .mVfAngle = stored};
            const Stance upright{0, front};
            state = update_angles(state, held, inputs).state;
            EXPECT_EQ(shown(state), upright);
            inputs.mChooseVideoAngle = true;
            state = update_angles(state, held, inputs).state;
            EXPECT_EQ(shown(state), upright);
            inputs.mChooseVideoAngle = false;
            state = update_angles(state, after, inputs).state;
            EXPECT_EQ(shown(state), upright);
          }
        }
      }
    }
  }
}

TEST(Picture, ABackdropIsDarkKeepsTheHuesAndHasNoEdges) {
  const Nv12Picture frame(320, 180);
  handset::Backdrop backdrop;
  const QImage image = backdrop.follow(frame.view(), {120, 200}, {0, false});
  ASSERT_EQ(image.size(), QSize(120, 200));
  const QColor corner = image.pixelColor(4, 4);
  EXPECT_GT(corner.red(), corner.blue());
  for (int y = 1; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      const QColor colour = image.pixelColor(x, y);
      ASSERT_LE(colour.lightness(), 140);
      ASSERT_LE(std::abs(colour.red() - image.pixelColor(x, y - 1).red()), 8) << x << ", " << y;
    }
  }
}

TEST(Picture, ABackdropFollowsSlowlyAndForgetsAtOnce) {
  const Nv12Picture bright(64, 48);
  const handset::Frame black = quadrants(64, 48, {Qt::black, Qt::black, Qt::black, Qt::black});
  GstMapInfo map;
  ASSERT_TRUE(gst_buffer_map(black.buffer.get(), &map, GST_MAP_READ));
  const GstVideoInfo& info = *black.info;
  const handset::Nv12 dark{map.data, info.stride[0], map.data + info.offset[1], info.stride[1], 64, 48};
  handset::Backdrop backdrop;
  const auto red = [&](const handset::Nv12& frame) {
    return backdrop.follow(frame, {32, 32}, {0, false}).pixelColor(4, 4).red();
  };
  const int before = red(bright.view());
  const int after = red(dark);
  EXPECT_LT(after, before);
  EXPECT_GT(after, before / 3);
  backdrop.forget();
  EXPECT_EQ(red(dark), 0);
  gst_buffer_unmap(black.buffer.get(), &map);
}

}  // namespace

#include <gtest/gtest.h>

#include <cmath>
#include <thread>

#include "platform/camera/capture.h"
#include "platform/camera/colorimetry.h"
#include "platform/camera/scene_painter.h"
#include "platform/camera/scene_source.h"

using handset::Capture;
using handset::Frame;
using handset::Source;

namespace {

Source custom(const std::string& description) {
  gst_init(nullptr, nullptr);
  Source source;
  source.kind = Source::Kind::custom;
  source.argument = description;
  return source;
}

struct Pixel {
  int y, u, v;
};

Pixel centre_of(const Frame& frame) {
  GstVideoFrame mapped;
  if (!handset::map_frame(frame, GST_MAP_READ, &mapped)) return {-1, -1, -1};
  const int row = GST_VIDEO_FRAME_HEIGHT(&mapped) / 2;
  const int column = (GST_VIDEO_FRAME_WIDTH(&mapped) / 2) & ~1;
  const auto* y = static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&mapped, 0)) +
                  row * GST_VIDEO_FRAME_PLANE_STRIDE(&mapped, 0) + column;
  const auto* uv = static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&mapped, 1)) +
                   row / 2 * GST_VIDEO_FRAME_PLANE_STRIDE(&mapped, 1) + column;
  const Pixel pixel = {*y, uv[0], uv[1]};
  gst_video_frame_unmap(&mapped);
  return pixel;
}

/// The first frame that a source gives at a size.
Frame first_frame(const Source& source, camera_res_t size) {
  std::mutex mutex;
  Frame first;
  std::string error;
  auto capture = Capture::start(
      {&source, size, 30, false},
      [&](Frame frame) {
        const std::lock_guard lock(mutex);
        if (!first) first = std::move(frame);
      },
      &error);
  EXPECT_NE(capture, nullptr) << error;
  if (capture) {
    EXPECT_TRUE(capture->wait_first_frame(std::chrono::seconds(5)));
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    capture->stop();
    EXPECT_EQ(capture->copied(), 0U) << "frames that the engine could not have edited where they are";
  }
  return first;
}

TEST(CaptureColours, AreFullRangeBt601WhateverTheSourceSays) {
  // Pure red: full-range BT.601 has it at Y 76, U 85, V 255, whatever matrix and range it came in.
  for (const char* caps : {"format=I420,colorimetry=bt601", "format=I420,colorimetry=bt709",
                           "format=YUY2,colorimetry=bt601", "format=UYVY,colorimetry=bt709", "format=BGRx"}) {
    const Frame frame =
        first_frame(custom("videotestsrc is-live=true pattern=red ! capsfilter caps=video/x-raw,width=320,height=240," +
                           std::string(caps)),
                    {320, 240});
    ASSERT_TRUE(frame) << caps;
    const Pixel pixel = centre_of(frame);
    EXPECT_NEAR(pixel.y, 76, 3) << caps;
    EXPECT_NEAR(pixel.u, 85, 3) << caps;
    EXPECT_NEAR(pixel.v, 255, 3) << caps;
    EXPECT_TRUE(gst_buffer_is_writable(frame.buffer.get()) && gst_buffer_is_all_memory_writable(frame.buffer.get()));
  }
}

TEST(CaptureColours, OfAFullRangeSourceArePassedThrough) {
  handset::register_scene_source();
  const Frame frame =
      first_frame(custom("morvanescene ! capsfilter caps=video/x-raw,width=320,height=240"), {320, 240});
  ASSERT_TRUE(frame);
  GstVideoFrame mapped;
  ASSERT_TRUE(handset::map_frame(frame, GST_MAP_READ, &mapped));
  const auto* luma = static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&mapped, 0));
  const int stride = GST_VIDEO_FRAME_PLANE_STRIDE(&mapped, 0);
  // The ends of the grey ramp.
  EXPECT_EQ(luma[223 * stride + 24], 0);
  EXPECT_EQ(luma[223 * stride + 296], 255);
  gst_video_frame_unmap(&mapped);
}

TEST(CaptureShape, IsFilledWithoutBorders) {
  // White everywhere: where a border were left it would show black.
  const Frame frame = first_frame(
      custom("videotestsrc is-live=true pattern=white ! capsfilter caps=video/x-raw,width=640,height=480"), {720, 720});
  ASSERT_TRUE(frame);
  GstVideoFrame mapped;
  ASSERT_TRUE(handset::map_frame(frame, GST_MAP_READ, &mapped));
  for (const int row : {0, 359, 719}) {
    for (const int column : {0, 359, 719}) {
      EXPECT_GT(static_cast<std::uint8_t*>(
                    GST_VIDEO_FRAME_PLANE_DATA(&mapped, 0))[row * GST_VIDEO_FRAME_PLANE_STRIDE(&mapped, 0) + column],
                250)
          << column << "," << row;
    }
  }
  gst_video_frame_unmap(&mapped);
}

TEST(CaptureErrors, AreReported) {
  std::string error;
  const Source nonsense = custom("no-such-element ! identity");
  EXPECT_EQ(Capture::start(
                {&nonsense, {320, 240}, 30, false}, [](Frame) {}, &error),
            nullptr);
  EXPECT_NE(error, "");

  const Source failing = custom("videotestsrc is-live=true ! identity error-after=5");
  auto capture = Capture::start(
      {&failing, {320, 240}, 30, false}, [](Frame) {}, &error);
  ASSERT_NE(capture, nullptr);
  Capture::Event event = Capture::Event::none;
  for (int i = 0; i < 100 && event == Capture::Event::none; ++i) event = capture->poll(std::chrono::milliseconds(50));
  EXPECT_EQ(event, Capture::Event::failed);
  EXPECT_NE(capture->failure(), "");
}

TEST(Scene, MovesAndSpellsItsFrameNumber) {
  constexpr int w = 640;
  constexpr int h = 360;
  const handset::ScenePainter painter(w, h);
  std::vector<std::uint8_t> first(w * h * 3 / 2 + 64, 0xEE);
  std::vector<std::uint8_t> second = first;
  painter.paint({first.data(), first.data() + w * h, w, h, w, w}, 0xA5C3, 0.0);
  painter.paint({second.data(), second.data() + w * h, w, h, w, w}, 0xA5C4, 0.5);
  EXPECT_NE(first, second);
  for (std::size_t i = first.size() - 64; i < first.size(); ++i) ASSERT_EQ(first[i], 0xEE) << "painted past the end";
  const handset::SceneStrip strip = handset::scene_strip(w, h);
  int number = 0;
  for (int bit = 0; bit < handset::scene_strip_cells; ++bit) {
    number = number << 1 |
             (first[static_cast<std::size_t>((strip.y + 1) * w + strip.x + bit * strip.cell + 1)] > 128 ? 1 : 0);
  }
  EXPECT_EQ(number, 0xA5C3);
  // Saturated red, green, blue and yellow are in it, so that every colour filter shows.
  bool red = false, green = false, blue = false, yellow = false;
  for (std::size_t i = w * h; i + 1 < static_cast<std::size_t>(w) * h * 3 / 2; i += 2) {
    const int u = first[i];
    const int v = first[i + 1];
    red = red || (v > 250 && u < 90);
    green = green || (v < 25 && u < 50);
    blue = blue || (u > 250 && v < 115);
    yellow = yellow || (u < 5 && v > 145 && v < 155);
  }
  EXPECT_TRUE(red && green && blue && yellow);
  for (const int size : {16, 18, 50}) {
    handset::ScenePainter small(size, size);
    std::vector<std::uint8_t> tiny(static_cast<std::size_t>(size * size * 3 / 2));
    small.paint({tiny.data(), tiny.data() + size * size, size, size, size, size}, 1, 3.7);
  }
}

}  // namespace

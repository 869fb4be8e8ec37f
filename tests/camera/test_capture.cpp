#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
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

/// Lent to a capture that does not outlive it.
std::shared_ptr<const Source> lend(const Source& source) {
  return {std::shared_ptr<const Source>(), &source};
}

/// The first frame that a source gives at a size.
Frame first_frame(const Source& source, camera_res_t size) {
  std::mutex mutex;
  Frame first;
  std::string error;
  auto capture = Capture::start(
      {lend(source), size, 30, false},
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

/// A source that does not name its colors; what they are is said to those who make the pixels.
std::string unnamed(const std::string& format, const std::string& size, const std::string& colors) {
  const std::string caps = "video/x-raw,format=" + format + "," + size + ",framerate=30/1";
  return "videotestsrc is-live=true pattern=red ! capsfilter caps=" + caps + ",colorimetry=" + colors +
         " ! capssetter replace=true caps=" + caps;
}

TEST(CaptureColours, OfCamerasThatDoNotNameThemAreBt601) {
  const char* const hd = "width=1280,height=720";
  const char* const vga = "width=640,height=480";
  const std::string sources[] = {
      unnamed("YUY2", vga, "bt601"),
      unnamed("YUY2", hd, "bt601"),  // GStreamer would read it as BT.709
      unnamed("NV12", hd, "bt601"),
      "videotestsrc is-live=true pattern=red ! capsfilter caps=video/x-raw,format=BGRx,width=1280,height=720 "
      "! videoconvert ! capsfilter caps=video/x-raw,format=I420,colorimetry=1:4:0:0 ! jpegenc quality=95 ! capssetter "
      "replace=true "
      "caps=image/jpeg,width=1280,height=720,framerate=30/1 ! jpegdec",
      // One that does name them is believed.
      "videotestsrc is-live=true pattern=red ! capsfilter caps=video/x-raw,format=NV12,width=1280,height=720,"
      "colorimetry=bt709",
  };
  for (const std::string& source : sources) {
    const Frame frame = first_frame(custom(source), {1280, 720});
    ASSERT_TRUE(frame) << source;
    const Pixel pixel = centre_of(frame);
    EXPECT_NEAR(pixel.y, 76, 3) << source;
    EXPECT_NEAR(pixel.u, 85, 3) << source;
    EXPECT_NEAR(pixel.v, 255, 3) << source;
  }
}

TEST(CaptureColours, OfAGreyCameraAreGrey) {
  for (const char* format : {"GRAY8", "GRAY16_LE"}) {
    const Frame frame = first_frame(
        custom(
            "videotestsrc is-live=true pattern=white ! capsfilter caps=video/x-raw,format=BGRx,width=320,height=240 ! "
            "videoconvert ! capsfilter caps=video/x-raw,format=" +
            std::string(format)),
        {320, 240});
    ASSERT_TRUE(frame) << format;
    const Pixel pixel = centre_of(frame);
    EXPECT_GE(pixel.y, 252) << format;
    EXPECT_NEAR(pixel.u, 128, 1) << format;
    EXPECT_NEAR(pixel.v, 128, 1) << format;
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

/// Width of a bright box in the row through the center, and its height in the column.
std::pair<int, int> extent_of_box(const Frame& frame) {
  GstVideoFrame mapped;
  if (!gst_video_frame_map(&mapped, frame.info.get(), frame.buffer.get(), GST_MAP_READ)) return {0, 0};
  const auto* luma = static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&mapped, 0));
  const int stride = GST_VIDEO_FRAME_PLANE_STRIDE(&mapped, 0);
  const int width = GST_VIDEO_FRAME_WIDTH(&mapped);
  const int height = GST_VIDEO_FRAME_HEIGHT(&mapped);
  int wide = 0;
  int high = 0;
  for (int x = 0; x < width; ++x) wide += luma[height / 2 * stride + x] > 128 ? 1 : 0;
  for (int y = 0; y < height; ++y) high += luma[y * stride + width / 2] > 128 ? 1 : 0;
  gst_video_frame_unmap(&mapped);
  return {wide, high};
}

TEST(CaptureShape, OfUnequalPixelsIsMadeSquare) {
  // A white box on black, 120 x 160 pixels that are a third wider than high.
  const Source source = custom(
      "videotestsrc is-live=true pattern=white ! capsfilter caps=video/x-raw,format=I420,width=120,height=160"
      " ! videobox left=-180 right=-180 top=-100 bottom=-100"
      " ! capssetter caps=video/x-raw,pixel-aspect-ratio=4/3");
  for (const camera_res_t size : {camera_res_t{640, 360}, camera_res_t{640, 480}, camera_res_t{320, 320}}) {
    const Frame frame = first_frame(source, size);
    ASSERT_TRUE(frame);
    const auto [width, height] = extent_of_box(frame);
    const double scale = std::max(size.width / 640.0, size.height / 360.0);
    EXPECT_NEAR(width, 160 * scale, 3) << size.width << " x " << size.height;
    EXPECT_NEAR(height, 160 * scale, 3) << size.width << " x " << size.height;
  }
}

TEST(CaptureShape, OfAnAnamorphicClipIsTheOneThatItIsShownIn) {
  gst_init(nullptr, nullptr);
  const std::string path = testing::TempDir() + "anamorphic.mkv";
  GstElement* pipeline = gst_parse_launch(("videotestsrc num-buffers=5 ! video/x-raw,format=I420,width=720,height=576,"
                                           "framerate=25/1,pixel-aspect-ratio=64/45 ! jpegenc ! matroskamux ! filesink "
                                           "location=" +
                                           path)
                                              .c_str(),
                                          nullptr);
  ASSERT_NE(pipeline, nullptr);
  gst_element_set_state(pipeline, GST_STATE_PLAYING);
  const auto bus = handset::BusPtr::adopt(gst_element_get_bus(pipeline));
  const auto types = static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR);
  const auto end = handset::MessagePtr::adopt(gst_bus_timed_pop_filtered(bus.get(), 60 * GST_SECOND, types));
  gst_element_set_state(pipeline, GST_STATE_NULL);
  gst_object_unref(pipeline);
  ASSERT_TRUE(end && GST_MESSAGE_TYPE(end.get()) == GST_MESSAGE_EOS);
  Source source;
  handset::CameraServiceConfig config;
  config.rear = "clip:" + path;
  EXPECT_EQ(handset::resolve_source(config, CAMERA_UNIT_REAR, &source), 0);
  ASSERT_FALSE(source.sizes.empty());
  EXPECT_EQ(source.sizes[0].width, 1024U);
  EXPECT_EQ(source.sizes[0].height, 576U);
  std::remove(path.c_str());
}

TEST(CaptureErrors, AreReported) {
  std::string error;
  const Source nonsense = custom("no-such-element ! identity");
  EXPECT_EQ(Capture::start(
                {lend(nonsense), {320, 240}, 30, false}, [](Frame) {}, &error),
            nullptr);
  EXPECT_NE(error, "");

  const Source failing = custom("videotestsrc is-live=true ! identity error-after=5");
  auto capture = Capture::start(
      {lend(failing), {320, 240}, 30, false}, [](Frame) {}, &error);
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

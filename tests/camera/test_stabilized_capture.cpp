// Stabilization where it meets the rest: the converter, the exchange, the screen, the encoder.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <thread>

#include "platform/camera/camera_config.h"
#include "platform/camera/capture.h"
#include "platform/camera/frame_exchange.h"
#include "platform/camera/scene_painter.h"
#include "platform/camera/scene_source.h"
#include "platform/camera/viewfinder_slot.h"
#include "tests/camera/editor.h"
#include "tests/camera/textured_scene.h"
#include "tests/support/film.h"
#include "tests/support/temp_dir.h"

using handset::Capture;
using handset::Frame;
using handset::Source;
using handset::Stabilizer;
using namespace std::chrono_literals;

namespace {

constexpr int width = 640;
constexpr int height = 480;
constexpr int frames = 75;
constexpr double swing = 8;

/// A raw clip of a scene that a shaking camera looks at.
void write_shaken_clip(const std::string& path) {
  TexturedScene scene(width, height, 10);
  std::ofstream file(path, std::ios::binary);
  const std::vector<char> chroma(width * height / 2, '\x80');
  for (int i = 0; i < frames; ++i) {
    const double angle = 2 * 3.14159265 * 3 * i / 30;
    scene.paint(swing * std::sin(angle), swing * std::cos(angle), 1, 2);
    file.write(reinterpret_cast<const char*>(scene.luma()), width * height);
    file.write(chroma.data(), static_cast<std::streamsize>(chroma.size()));
  }
}

using Luma = std::vector<std::uint8_t>;

Luma luma_of(const Frame& frame) {
  GstVideoFrame mapped;
  if (!handset::map_frame(frame, GST_MAP_READ, &mapped)) return {};
  EXPECT_EQ(GST_VIDEO_FRAME_WIDTH(&mapped), width);
  EXPECT_EQ(GST_VIDEO_FRAME_HEIGHT(&mapped), height);
  Luma luma;
  for (int row = 0; row < height; ++row) {
    const auto* line = static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&mapped, 0)) +
                       static_cast<std::ptrdiff_t>(row) * GST_VIDEO_FRAME_PLANE_STRIDE(&mapped, 0);
    luma.insert(luma.end(), line, line + width);
  }
  gst_video_frame_unmap(&mapped);
  return luma;
}

/// Where the middle of one picture is found in another, by trying every place: pixels down or right.
std::pair<int, int> displacement(const Luma& from, const Luma& to) {
  constexpr int patch = 64, reach = 24;
  const int left = (width - patch) / 2, top = (height - patch) / 2;
  std::pair<int, int> best;
  long least = -1;
  for (int dy = -reach; dy <= reach; ++dy) {
    for (int dx = -reach; dx <= reach; ++dx) {
      long sum = 0;
      for (int y = 0; y < patch; y += 2) {
        for (int x = 0; x < patch; x += 2) {
          sum += std::abs(from[static_cast<std::size_t>((top + y) * width + left + x)] -
                          to[static_cast<std::size_t>((top + y + dy) * width + left + x + dx)]);
        }
      }
      if (least < 0 || sum < least) {
        least = sum;
        best = {dx, dy};
      }
    }
  }
  return best;
}

/// Root mean square of how far pictures are from their mean place, right and down, after the first second.
std::pair<double, double> shake_of(const std::vector<Luma>& pictures) {
  double x = 0, y = 0, xx = 0, yy = 0, count = 0;
  for (std::size_t i = 30; i < pictures.size(); ++i, ++count) {
    const auto [dx, dy] = displacement(pictures[30], pictures[i]);
    x += dx, y += dy, xx += dx * dx, yy += dy * dy;
  }
  return {std::sqrt(xx / count - x * x / count / count), std::sqrt(yy / count - y * y / count / count)};
}

/// Every picture of a clip, as the camera delivers it.
std::vector<Luma> filmed(const Source& source, bool stabilized) {
  std::vector<Luma> pictures;
  std::string error;
  auto capture = Capture::start(
      {.source = {std::shared_ptr<const Source>(), &source},
       .size = {width, height},
       .frame_rate = 30,
       .unpaced = true,
       .stabilized = stabilized},
      [&](Frame frame) {
        EXPECT_EQ(static_cast<bool>(frame.canvas), stabilized);
        EXPECT_TRUE(gst_buffer_is_all_memory_writable(frame.buffer.get()));
        pictures.push_back(luma_of(frame));
        const Frame for_encoder{handset::wrap_picture(frame), frame.info, 0};
        EXPECT_EQ(luma_of(for_encoder), pictures.back());
      },
      &error);
  EXPECT_NE(capture, nullptr) << error;
  if (!capture) return {};
  for (int i = 0; i < 300 && capture->poll(100ms) == Capture::Event::none;) ++i;
  EXPECT_EQ(capture->copied(), 0U);
  EXPECT_EQ(GST_VIDEO_INFO_WIDTH(capture->picture().get()), width);
  capture->stop();
  return pictures;
}

TEST(StabilizedCapture, TakesTheShakeOutOfAClip) {
  gst_init(nullptr, nullptr);
  const TempDir dir;
  const std::string path = dir.file("shaken.nv12");
  write_shaken_clip(path);
  Source source;
  source.kind = Source::Kind::custom;
  for (const std::string colorimetry : {"1:4:0:0", "2:4:5:1"}) {  // full range, and limited, which is stretched
    source.argument = "filesrc location=" + path +
                      " ! rawvideoparse format=nv12 width=640 height=480 framerate=30/1 colorimetry=" + colorimetry;
    const std::vector<Luma> plain = filmed(source, false);
    const std::vector<Luma> steady = filmed(source, true);
    ASSERT_EQ(plain.size(), static_cast<std::size_t>(frames));
    ASSERT_EQ(steady.size(), static_cast<std::size_t>(frames));
    const auto [plain_x, plain_y] = shake_of(plain);
    const auto [steady_x, steady_y] = shake_of(steady);
    EXPECT_NEAR(plain_x, swing / std::sqrt(2), 0.5);
    EXPECT_NEAR(plain_y, swing / std::sqrt(2), 0.5);
    EXPECT_LT(steady_x, plain_x / 4);
    EXPECT_LT(steady_y, plain_y / 4);
  }
}

TEST(FrameOfACanvas, IsFoundWithAndWithoutADescriptionOfTheBuffer) {
  gst_init(nullptr, nullptr);
  auto canvas = std::make_shared<GstVideoInfo>(), picture = std::make_shared<GstVideoInfo>();
  gst_video_info_set_format(canvas.get(), GST_VIDEO_FORMAT_NV12, 40, 24);
  gst_video_info_set_format(picture.get(), GST_VIDEO_FORMAT_NV12, 32, 16);
  for (const bool described : {false, true}) {
    // A described buffer has rows of another length, and something in front of each plane.
    gint strides[] = {described ? 50 : 40, described ? 60 : 40};
    gsize offsets[] = {described ? 7U : 0U, described ? 1300U : 40U * 24U};
    std::vector<std::uint8_t> bytes(2100, 1);
    const auto at = [&](int plane, int row, int column) -> std::uint8_t& {
      return bytes[offsets[plane] + static_cast<std::size_t>(row * strides[plane] + column)];
    };
    at(0, 6, 4) = 11, at(0, 21, 35) = 12, at(1, 3, 4) = 13, at(1, 10, 35) = 14;
    GstBuffer* buffer = gst_buffer_new_allocate(nullptr, bytes.size(), nullptr);
    gst_buffer_fill(buffer, 0, bytes.data(), bytes.size());
    if (described) {
      gst_buffer_add_video_meta_full(buffer, GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_NV12, 40, 24, 2, offsets,
                                     strides);
    }
    const Frame frame{handset::BufferPtr::adopt(buffer), picture, 5, canvas, 4, 6};
    const Frame wrapped{handset::wrap_picture(frame), picture, 5};
    for (const Frame& one : {frame.share(), wrapped.share(), frame.share()}) {
      GstVideoFrame mapped;
      ASSERT_TRUE(handset::map_frame(one, GST_MAP_READ, &mapped));
      const camera_buffer_t shown = handset::describe_frame(mapped, 5);
      EXPECT_EQ(shown.nv12.width, 32U);
      EXPECT_EQ(shown.nv12.height, 16U);
      EXPECT_EQ(shown.data[0], 11);
      EXPECT_EQ(shown.data[15 * shown.nv12.stride + 31], 12);
      EXPECT_EQ(shown.data[shown.nv12.uv_offset], 13);
      EXPECT_EQ(shown.data[shown.nv12.uv_offset + 7 * shown.nv12.uv_stride + 31], 14);
      gst_video_frame_unmap(&mapped);
    }
  }
}

constexpr int scene_side = 480;

class StabilizedCamera : public testing::Test {
 protected:
  void SetUp() override {
    gst_init(nullptr, nullptr);
    handset::CameraServiceConfig config;
    // With borders left and right, so that all of its number is in the middle.
    config.rear =
        "gst:morvanescene ! capsfilter caps=video/x-raw,width=480,height=480,framerate=30/1 ! "
        "videoconvertscale add-borders=true ! "
        "capsfilter caps=video/x-raw,width=640,height=480,pixel-aspect-ratio=1/1";
    handset::register_scene_source();
    config.microphone = "none";
    handset::configure_camera_service(config);
    ASSERT_EQ(camera_open(CAMERA_UNIT_REAR, CAMERA_MODE_ALL, &handle_), 0);
    ASSERT_EQ(
        camera_set_vf_property(handle_, CAMERA_IMGPROP_WIDTH, width, CAMERA_IMGPROP_HEIGHT, height,
                               CAMERA_IMGPROP_WIN_GROUPID, "steady", CAMERA_IMGPROP_WIN_ID, "id", CAMERA_IMGPROP_END),
        0);
  }
  void TearDown() override { camera_close(handle_); }

  void stabilize(bool on) {
    ASSERT_EQ(camera_set_video_property(handle_, CAMERA_IMGPROP_STABILIZATION, on ? 1 : 0, CAMERA_IMGPROP_END), 0);
  }
  void wait_recorded(std::uint64_t more) {
    handset::CameraStatistics statistics{};
    handset::camera_get_statistics(handle_, &statistics);
    const std::uint64_t end = statistics.recorded + more;
    for (int i = 0; i < 2000 && statistics.recorded < end; ++i) {
      std::this_thread::sleep_for(5ms);
      handset::camera_get_statistics(handle_, &statistics);
    }
    ASSERT_GE(statistics.recorded, end);
  }

  camera_handle_t handle_ = CAMERA_HANDLE_INVALID;
  const TempDir dir_;
};

/// What the scene's strip spells in a film of it; -1 when it cannot be read.
/// @param stabilized  the picture is the middle of a larger one
int number_in(const film::Picture& picture, bool stabilized) {
  const handset::SceneStrip strip = handset::scene_strip(scene_side, scene_side);
  const camera_res_t whole = stabilized ? Stabilizer::canvas_of({width, height}) : camera_res_t{width, height};
  const auto place = [](double at, std::uint32_t length, int shown) {
    return static_cast<int>(at * length / shown) - static_cast<int>(length - static_cast<unsigned>(shown)) / 2;
  };
  const int row = place(strip.y + 0.5 * strip.cell, whole.height, height);
  int number = 0;
  for (int bit = 0; bit < handset::scene_strip_cells; ++bit) {
    const double at = (width - scene_side) / 2 + strip.x + (bit + 0.5) * strip.cell;
    const int value = picture.y(place(at, whole.width, width), row);
    if (value > 64 && value < 192) return -1;
    number = number << 1 | (value > 128 ? 1 : 0);
  }
  return number;
}

TEST_F(StabilizedCamera, CanBeSwitchedWhileItFilmsWithoutAWrongFrame) {
  stabilize(true);
  ASSERT_EQ(camera_start_video_viewfinder(handle_, nullptr, nullptr, nullptr), 0);
  const auto slot = handset::viewfinder_slot("steady", "id");
  std::atomic<int> wrong_sizes = 0;
  Editor editor(handle_, [&](const camera_buffer_t& out) {
    if (out.nv12.width != width || out.nv12.height != height) ++wrong_sizes;
    // Corners of the picture: a wrong stride or offset anywhere after this moves them.
    for (std::uint32_t row = 0; row < height; ++row) {
      if (row >= 16 && row < height - 16) continue;
      std::uint8_t* line = out.data + row * out.nv12.stride;
      std::fill_n(line, 16, std::uint8_t{250});
      std::fill_n(line + width - 16, 16, std::uint8_t{5});
      std::uint8_t* pairs = out.data + out.nv12.uv_offset + row / 2 * out.nv12.uv_stride;
      std::fill_n(pairs, 16, std::uint8_t{128});
      std::fill_n(pairs + width - 16, 16, std::uint8_t{128});
    }
  });
  const std::string path = dir_.file("film.mp4");
  write_file(path, "");
  ASSERT_EQ(camera_start_video(handle_, path.c_str(), nullptr, nullptr, nullptr), 0);
  for (const bool on : {true, false, true, false, true}) {
    stabilize(on);
    wait_recorded(12);
  }
  ASSERT_EQ(camera_stop_video(handle_), 0);
  bool same = false;
  for (int i = 0; i < 1000 && !same; ++i) {  // at some moment the newest picture is the one that was edited last
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    const Frame newest = slot->latest();
    ASSERT_TRUE(newest.canvas);
    GstVideoFrame mapped;
    ASSERT_TRUE(handset::map_frame(newest, GST_MAP_READ, &mapped));
    same = GST_VIDEO_FRAME_PLANE_DATA(&mapped, 0) == editor.last_data();
    gst_video_frame_unmap(&mapped);
  }
  EXPECT_TRUE(same) << "the screen was given a copy";
  editor.stop();
  EXPECT_EQ(wrong_sizes, 0);

  const film::Film film = film::play(path);
  EXPECT_EQ(film.error, "");
  ASSERT_GE(film.pictures.size(), 60U);
  int last = -1, plain = 0, steady = 0;
  for (const film::Picture& picture : film.pictures) {
    ASSERT_EQ(picture.width, width);
    ASSERT_EQ(picture.height, height);
    for (const int row : {8, height - 8}) {
      EXPECT_NEAR(picture.y(8, row), 250, 12);
      EXPECT_NEAR(picture.y(width - 8, row), 5, 12);
      EXPECT_NEAR(picture.u(8, row), 128, 12);
      EXPECT_NEAR(picture.v(width - 8, row), 128, 12);
    }
    const int in_picture = number_in(picture, false), in_canvas = number_in(picture, true);
    const bool is_plain = in_picture > last && (last < 0 || in_picture < last + 100);
    const int number = is_plain ? in_picture : in_canvas;
    ++(is_plain ? plain : steady);
    EXPECT_GT(number, last) << "a frame is wrong, doubled or out of order";
    last = number;
  }
  EXPECT_GT(plain, 15);
  EXPECT_GT(steady, 25);
}

}  // namespace

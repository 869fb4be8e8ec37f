// The filter thread on a real camera with a real recording: editing, handing over to screen and encoder, and
// letting go of older frames must cost it no allocation.

#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <vector>

#include "engine/color_filter.h"
#include "engine/filter_thread.h"
#include "platform/camera/camera_config.h"
#include "platform/camera/stabilizer.h"
#include "tests/support/allocation_counter.h"
#include "tests/support/temp_dir.h"

namespace {

constexpr int warm_up = 30;  ///< frames until pools and queues have their size
std::atomic<int> frames = 0;

/// Runs on the filter thread, for every frame that it has returned.
void on_frame(camera_handle_t, camera_buffer_t*, void*) {
  allocation_counter::counting = ++frames > warm_up;
}

class Allocations : public testing::TestWithParam<int> {};

TEST_P(Allocations, ARecordedFrameCostsTheFilterThreadNone) {
  frames = 0;
  allocation_counter::allocations = 0;
  handset::CameraServiceConfig config;
  config.rear = "scene";
  config.microphone = "none";
  handset::configure_camera_service(config);
  camera_handle_t handle = CAMERA_HANDLE_INVALID;
  ASSERT_EQ(camera_open(CAMERA_UNIT_REAR, CAMERA_MODE_ALL, &handle), 0);
  ASSERT_EQ(camera_set_vf_property(handle, CAMERA_IMGPROP_WIDTH, 640, CAMERA_IMGPROP_HEIGHT, 480,
                                   CAMERA_IMGPROP_FRAMERATE, 60, CAMERA_IMGPROP_END),
            0);
  ASSERT_EQ(camera_set_video_property(handle, CAMERA_IMGPROP_STABILIZATION, GetParam(), CAMERA_IMGPROP_END), 0);
  ASSERT_EQ(camera_start_video_viewfinder(handle, on_frame, nullptr, nullptr), 0);
  _cur_camera_filter = 11;
  filter_init(0.5, filter_match_red);
  ASSERT_EQ(start_filter_thread(handle), 0);
  const TempDir dir;
  const std::string path = dir.file("film.mp4");
  write_file(path, "");
  ASSERT_EQ(camera_start_video(handle, path.c_str(), nullptr, nullptr, nullptr), 0);
  for (int i = 0; i < 1000 && frames < warm_up + 120; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  EXPECT_GE(frames, warm_up + 120);
  EXPECT_EQ(allocation_counter::allocations, 0);
  EXPECT_EQ(camera_stop_video(handle), 0);
  kill_thread();
  camera_close(handle);
}

INSTANTIATE_TEST_SUITE_P(Stabilization, Allocations, testing::Values(0, 1));

TEST(Stabilizer, AViewIsChosenWithoutAllocating) {
  handset::Stabilizer stabilizer({1280, 720});
  const camera_res_t canvas = handset::Stabilizer::canvas_of({1280, 720});
  std::vector<std::uint8_t> luma(canvas.width * canvas.height);
  for (std::size_t i = 0; i < luma.size(); ++i) luma[i] = static_cast<std::uint8_t>(i * i >> 9);
  const int before = allocation_counter::allocations;
  allocation_counter::counting = true;
  for (int i = 0; i < 5; ++i) stabilizer.next(luma.data(), static_cast<std::ptrdiff_t>(canvas.width), i * 33'333'333);
  allocation_counter::counting = false;
  EXPECT_EQ(allocation_counter::allocations, before);
}

}  // namespace

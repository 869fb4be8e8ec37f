// Films begin and end with their effects, and on a disk that hangs nobody waits.

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/statvfs.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <string>
#include <thread>

#include "platform/camera/camera.h"
#include "platform/camera/camera_config.h"
#include "platform/camera/viewfinder_slot.h"
#include "tests/camera/editor.h"
#include "tests/support/film.h"
#include "tests/support/temp_dir.h"

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

std::atomic<bool> disk_hangs{false};

}  // namespace

/// Stands in for the C library's: a network mount whose server is away.
extern "C" int statvfs(const char* path, struct statvfs* disk) noexcept {
  disk_hangs.wait(true);
  using Function = int (*)(const char*, struct statvfs*);
  static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "statvfs"));
  return real(path, disk);
}

namespace {

constexpr int width = 320, height = 240;
constexpr std::uint8_t before = 60, after = 190;

std::atomic<int> failure{0};

class WholeFilms : public testing::Test {
 protected:
  WholeFilms() {
    handset::CameraServiceConfig config;
    config.rear = "scene";
    config.microphone = "none";
    config.wait_for_film = false;
    handset::configure_camera_service(config);
    write_file(path_, "");
    failure = 0;
    EXPECT_EQ(camera_open(CAMERA_UNIT_REAR, CAMERA_MODE_ALL, &handle_), 0);
    EXPECT_EQ(
        camera_set_vf_property(handle_, CAMERA_IMGPROP_WIDTH, width, CAMERA_IMGPROP_HEIGHT, height,
                               CAMERA_IMGPROP_WIN_GROUPID, "group", CAMERA_IMGPROP_WIN_ID, "whole", CAMERA_IMGPROP_END),
        0);
    const auto note = [](camera_handle_t, camera_devstatus_t status, std::uint16_t extra, void*) {
      if (status == CAMERA_STATUS_VIDEO_FAILED) failure = extra;
    };
    EXPECT_EQ(camera_start_video_viewfinder(handle_, nullptr, note, nullptr), 0);
  }
  ~WholeFilms() override {
    disk_hangs = false;
    disk_hangs.notify_all();
    camera_close(handle_);
    EXPECT_TRUE(handset::wait_for_films(30s));
  }

  handset::CameraStatistics statistics() const {
    handset::CameraStatistics now{};
    camera_get_statistics(handle_, &now);
    return now;
  }
  template <typename Condition>
  static bool soon(Condition condition) {
    const auto end = Clock::now() + 30s;
    while (!condition() && Clock::now() < end) std::this_thread::sleep_for(2ms);
    return condition();
  }
  bool recorded_more(std::uint64_t frames) const {
    const auto now = statistics().recorded;
    return soon([&] { return statistics().recorded >= now + frames; });
  }

  const TempDir dir_;
  const std::string path_ = dir_.file("film.mp4");
  camera_handle_t handle_ = CAMERA_HANDLE_INVALID;
};

TEST_F(WholeFilms, BeginAndEndWithTheirEffects) {
  std::atomic<std::uint8_t> colour{before};
  Editor editor(handle_, [&](const camera_buffer_t& output) {
    const std::uint8_t now = colour;
    for (std::uint32_t row = 0; row < output.nv12.height / 2; ++row)
      std::fill_n(output.data + output.nv12.uv_offset + row * output.nv12.uv_stride, output.nv12.width, now);
    std::this_thread::sleep_for(20ms);  // a pair is out when the effect changes
  });
  ASSERT_EQ(handset::camera_hold_video(handle_, true), 0);
  ASSERT_EQ(camera_start_video(handle_, path_.c_str(), nullptr, nullptr, nullptr), 0);
  const auto edited = editor.edited();
  ASSERT_TRUE(soon([&] { return editor.edited() > edited + 5; }));
  EXPECT_EQ(statistics().recorded, 0U) << "held";
  colour = after;
  ASSERT_EQ(handset::camera_hold_video(handle_, false), 0);
  ASSERT_TRUE(recorded_more(15));
  editor.stop();
  const auto arrived = statistics().arrived;
  ASSERT_TRUE(soon([&] { return statistics().arrived > arrived + 10; }));
  ASSERT_EQ(camera_close(handle_), 0);
  ASSERT_TRUE(handset::wait_for_films(30s));
  const film::Film made = film::play(path_);
  EXPECT_EQ(made.error, "");
  EXPECT_GE(made.pictures.size(), 15U);
  for (std::size_t i = 0; i < made.pictures.size(); ++i)
    ASSERT_NEAR(made.pictures[i].u(width / 2, height / 2), after, 4) << "frame " << i << " of " << made.pictures.size();
}

TEST_F(WholeFilms, AHangingDiskEndsTheRecordingAndKeepsTheFilm) {
  const auto slot = handset::viewfinder_slot("group", "whole");
  ASSERT_EQ(camera_start_video(handle_, path_.c_str(), nullptr, nullptr, nullptr), 0);
  ASSERT_TRUE(recorded_more(30));
  disk_hangs = true;
  ASSERT_TRUE(soon([] { return failure != 0; }));
  EXPECT_EQ(failure, ETIMEDOUT) << "told to the viewfinder's client, where the recording has none";
  EXPECT_EQ(slot->status().notice, "Recording ended: the storage does not answer");
  const auto begin = Clock::now();
  EXPECT_EQ(camera_stop_video(handle_), EINPROGRESS);
  EXPECT_LT(Clock::now() - begin, 5s);
  disk_hangs = false;
  disk_hangs.notify_all();
  ASSERT_TRUE(handset::wait_for_films(30s));
  const film::Film made = film::play(path_);
  EXPECT_EQ(made.error, "");
  EXPECT_GE(made.pictures.size(), 30U);
}

}  // namespace

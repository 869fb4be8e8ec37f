#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <numeric>

#include "platform/camera/camera.h"
#include "platform/camera/camera_config.h"
#include "platform/camera/device_finder.h"
#include "platform/camera/viewfinder_slot.h"
#include "tests/camera/editor.h"
#include "tests/support/film.h"
#include "tests/support/temp_dir.h"

using namespace std::chrono_literals;
using handset::CameraServiceConfig;

namespace {

constexpr char frames_then_error[] = "gst:videotestsrc is-live=true ! identity error-after=20";
constexpr char frames_then_nothing[] = "gst:videotestsrc is-live=true ! identity sleep-time=4000000";
constexpr char frames_then_end[] = "gst:videotestsrc is-live=true num-buffers=25";

/// Waits for something that other threads bring about. @return whether it came in time
template <typename Condition>
bool soon(Condition condition, std::chrono::milliseconds limit = 5s) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!condition() && std::chrono::steady_clock::now() < end) std::this_thread::sleep_for(2ms);
  return condition();
}

struct StatusLog {
  std::atomic<int> revoked{0};
  std::atomic<int> failed{0};
  std::atomic<bool> close_from_callback{false};
  std::atomic<int> closed{-1};

  static void on_status(camera_handle_t handle, camera_devstatus_t status, std::uint16_t extra, void* arg) {
    auto* log = static_cast<StatusLog*>(arg);
    if (status == CAMERA_STATUS_VIDEO_FAILED) log->failed = extra;
    if (status != CAMERA_STATUS_RESOURCES_REVOKED) return;
    if (log->close_from_callback) log->closed = camera_close(handle);
    ++log->revoked;
  }
};

class Service : public testing::Test {
 protected:
  ~Service() override {
    for (const camera_handle_t handle : opened_) camera_close(handle);
  }

  camera_handle_t open(const std::string& rear, camera_unit_t unit = CAMERA_UNIT_REAR) {
    CameraServiceConfig config;
    config.rear = rear;
    config.front = "scene";
    config.microphone = "none";
    config.disk_margin = disk_margin_;
    handset::configure_camera_service(config);
    camera_handle_t handle = CAMERA_HANDLE_INVALID;
    EXPECT_EQ(camera_open(unit, CAMERA_MODE_ALL, &handle), 0);
    opened_.push_back(handle);
    return handle;
  }
  static int configure(camera_handle_t handle, int width = 320, int height = 240) {
    const int error = camera_set_video_property(handle, CAMERA_IMGPROP_WIDTH, width, CAMERA_IMGPROP_HEIGHT, height,
                                                CAMERA_IMGPROP_END);
    return error != 0 ? error
                      : camera_set_vf_property(handle, CAMERA_IMGPROP_WIDTH, width, CAMERA_IMGPROP_HEIGHT, height,
                                               CAMERA_IMGPROP_WIN_GROUPID, "group", CAMERA_IMGPROP_WIN_ID, "id",
                                               CAMERA_IMGPROP_END);
  }
  camera_handle_t start(const std::string& rear) {
    const camera_handle_t handle = open(rear);
    EXPECT_EQ(configure(handle), 0);
    EXPECT_EQ(camera_start_video_viewfinder(handle, nullptr, StatusLog::on_status, &log_), 0);
    return handle;
  }
  std::string new_film() {
    const std::string path = dir_.file("film" + std::to_string(films_++) + ".mp4");
    write_file(path, "");
    return path;
  }

  StatusLog log_;
  const TempDir dir_;
  std::uint64_t disk_margin_ = CameraServiceConfig().disk_margin;
  int films_ = 0;
  std::vector<camera_handle_t> opened_;
};

TEST_F(Service, RefusesWhatItShould) {
  camera_handle_t handle = CAMERA_HANDLE_INVALID;
  EXPECT_EQ(camera_open(static_cast<camera_unit_t>(4), CAMERA_MODE_ALL, &handle), EINVAL);
  EXPECT_EQ(camera_open(CAMERA_UNIT_REAR, 0, &handle), EINVAL);
  EXPECT_EQ(camera_open(CAMERA_UNIT_REAR, 64, &handle), EINVAL);
  const camera_handle_t rear = open("scene");
  EXPECT_EQ(camera_open(CAMERA_UNIT_REAR, CAMERA_MODE_ALL, &handle), EBUSY);
  EXPECT_EQ(errno, EBUSY);
  const camera_handle_t front = open("scene", CAMERA_UNIT_FRONT);
  EXPECT_NE(front, rear);
  EXPECT_EQ(camera_close(rear), 0);
  EXPECT_EQ(camera_close(rear), EBADF);
  EXPECT_NE(open("scene"), rear) << "a stale handle must not reach the next camera";
  EXPECT_EQ(camera_set_zoom(rear, 1, true), EBADF);
  EXPECT_FALSE(camera_has_feature(rear, CAMERA_FEATURE_VIDEO));
}

TEST_F(Service, BadSourcesGiveOneLineAndLeaveTheUnitFree) {
  const TempDir dir;
  write_file(dir.file("noise.mp4"), std::string(5000, 'n'));
  const struct {
    std::string source;
    int error;
  } cases[] = {{"webcam", EINVAL},
               {"clip:", EINVAL},
               {"clip:" + dir.file("missing.mp4"), ENOENT},
               {"clip:" + dir.path(), EIO},
               {"clip:" + dir.file("noise.mp4"), EIO}};
  for (const auto& c : cases) {
    CameraServiceConfig config;
    config.rear = c.source;
    handset::configure_camera_service(config);
    camera_handle_t handle = CAMERA_HANDLE_INVALID;
    testing::internal::CaptureStderr();
    EXPECT_EQ(camera_open(CAMERA_UNIT_REAR, CAMERA_MODE_ALL, &handle), c.error) << c.source;
    const std::string line = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1) << line;
  }
  open("scene");
}

TEST_F(Service, PropertiesTakeEffectTogetherOrNotAtAll) {
  const camera_handle_t handle = open("scene");
  EXPECT_EQ(configure(handle, 640, 480), 0);
  EXPECT_EQ(
      camera_set_video_property(handle, CAMERA_IMGPROP_ROTATION, 90, CAMERA_IMGPROP_WIDTH, 641, CAMERA_IMGPROP_END),
      EINVAL);
  EXPECT_EQ(camera_set_video_property(handle, CAMERA_IMGPROP_ROTATION, 45, CAMERA_IMGPROP_END), EINVAL);
  EXPECT_EQ(camera_set_video_property(handle, CAMERA_IMGPROP_WIN_ID, "id", CAMERA_IMGPROP_END), EINVAL);
  EXPECT_EQ(camera_set_video_property(handle, 55, 1, CAMERA_IMGPROP_END), EINVAL);
  int width = 0, height = 0, rotation = -1, format = -1;
  EXPECT_EQ(
      camera_get_video_property(handle, CAMERA_IMGPROP_WIDTH, &width, CAMERA_IMGPROP_HEIGHT, &height,
                                CAMERA_IMGPROP_ROTATION, &rotation, CAMERA_IMGPROP_FORMAT, &format, CAMERA_IMGPROP_END),
      0);
  EXPECT_EQ(width, 640);
  EXPECT_EQ(height, 480);
  EXPECT_EQ(rotation, 0);
  EXPECT_EQ(format, CAMERA_FRAMETYPE_NV12);
  EXPECT_EQ(camera_start_video_viewfinder(handle, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(camera_start_video_viewfinder(handle, nullptr, nullptr, nullptr), EALREADY);
  EXPECT_EQ(camera_set_vf_property(handle, CAMERA_IMGPROP_WIDTH, 320, CAMERA_IMGPROP_END), EBUSY);
  EXPECT_EQ(camera_set_vf_property(handle, CAMERA_IMGPROP_ROTATION, 270, CAMERA_IMGPROP_END), 0);
}

TEST_F(Service, ViewfinderNeedsAPossibleSize) {
  const camera_handle_t handle = open("scene");
  EXPECT_EQ(camera_start_video_viewfinder(handle, nullptr, nullptr, nullptr), EINVAL);
  EXPECT_EQ(configure(handle, 9000, 10), 0);
  EXPECT_EQ(camera_start_video_viewfinder(handle, nullptr, nullptr, nullptr), EINVAL);
  EXPECT_EQ(camera_set_vf_property(handle, CAMERA_IMGPROP_WIDTH, 320, CAMERA_IMGPROP_HEIGHT, 240, CAMERA_IMGPROP_END),
            0);
  EXPECT_EQ(camera_start_video_viewfinder(handle, nullptr, nullptr, nullptr), EINVAL) << "streams of two sizes";
  EXPECT_EQ(configure(handle), 0);
  EXPECT_EQ(camera_start_video_viewfinder(handle, nullptr, nullptr, nullptr), 0);
}

TEST_F(Service, ListsSizesRotationsFeaturesAndLimits) {
  const camera_handle_t handle = open("scene");
  unsigned count = 0;
  ASSERT_EQ(camera_get_video_vf_resolutions(handle, 0, &count, nullptr), 0);
  ASSERT_GE(count, 4U);
  std::vector<camera_res_t> sizes(count);
  EXPECT_EQ(camera_get_video_vf_resolutions(handle, 2, &count, sizes.data()), 0);
  EXPECT_EQ(count, 2U);
  int rotations = 0;
  int degrees[4] = {};
  EXPECT_EQ(camera_get_supported_video_rotations(handle, CAMERA_FRAMETYPE_NV12, 0, &rotations, nullptr), 0);
  ASSERT_EQ(rotations, 4);
  EXPECT_EQ(camera_get_supported_video_rotations(handle, CAMERA_FRAMETYPE_NV12, 4, &rotations, degrees), 0);
  EXPECT_EQ(degrees[3], 270);
  EXPECT_TRUE(camera_has_feature(handle, CAMERA_FEATURE_VIDEOLIGHT));
  EXPECT_EQ(camera_config_videolight(handle, CAMERA_VIDEOLIGHT_ON), 0);
  EXPECT_EQ(camera_set_scene_mode(handle, CAMERA_SCENE_NIGHT), 0);
  EXPECT_EQ(camera_set_scene_mode(handle, static_cast<camera_scenemode_t>(77)), EINVAL);
  EXPECT_FALSE(handset::camera_light_is_lamp(handle));
  EXPECT_FALSE(camera_has_feature(handle, CAMERA_FEATURE_FOCUS));
  EXPECT_EQ(camera_set_focus_mode(handle, CAMERA_FOCUSMODE_CONTINUOUS_AUTO), ENOTSUP);
  EXPECT_EQ(camera_set_focus_mode(handle, static_cast<camera_focusmode_t>(4)), EINVAL);
  int low = -1, high = -1;
  bool smooth = false;
  EXPECT_EQ(camera_get_zoom_limits(handle, &low, &high, &smooth), 0);
  EXPECT_EQ(camera_set_zoom(handle, high, true), 0);
  EXPECT_EQ(camera_set_zoom(handle, high + 1, true), EINVAL);
  EXPECT_EQ(camera_set_zoom(handle, low - 1, true), EINVAL);
  const camera_handle_t front = open("scene", CAMERA_UNIT_FRONT);
  EXPECT_EQ(camera_config_videolight(front, CAMERA_VIDEOLIGHT_ON), ENOTSUP);
}

/// Mean luma of the newest picture on the screen; 0 while there is none.
double brightness(const handset::ViewfinderSlot& slot) {
  const handset::Frame frame = slot.latest();
  GstVideoFrame mapped;
  if (!frame || !gst_video_frame_map(&mapped, frame.info.get(), frame.buffer.get(), GST_MAP_READ)) return 0;
  double sum = 0;
  const int width = GST_VIDEO_FRAME_WIDTH(&mapped), height = GST_VIDEO_FRAME_HEIGHT(&mapped);
  for (int row = 0; row < height; ++row) {
    const auto* luma = static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&mapped, 0)) +
                       row * GST_VIDEO_FRAME_PLANE_STRIDE(&mapped, 0);
    sum = std::accumulate(luma, luma + width, sum);
  }
  gst_video_frame_unmap(&mapped);
  return sum / width / height;
}

TEST_F(Service, TheLightOfACameraWithoutALampBrightensThePicture) {
  // Limited range, whose stretching is on the same way.
  const camera_handle_t handle = start(
      "gst:videotestsrc is-live=true pattern=solid-color foreground-color=0xff505050 ! "
      "capsfilter caps=video/x-raw,format=I420,width=320,height=240,colorimetry=bt601");
  const auto slot = handset::viewfinder_slot("group", "id");
  ASSERT_TRUE(soon([&] { return std::abs(brightness(*slot) - 0x50) < 2; })) << brightness(*slot);
  EXPECT_EQ(camera_config_videolight(handle, CAMERA_VIDEOLIGHT_ON), 0);
  EXPECT_TRUE(soon([&] { return std::abs(brightness(*slot) - 0x50 * 1.367) < 2; })) << brightness(*slot);
  EXPECT_EQ(camera_config_videolight(handle, CAMERA_VIDEOLIGHT_OFF), 0);
  EXPECT_TRUE(soon([&] { return std::abs(brightness(*slot) - 0x50) < 2; })) << brightness(*slot);
}

TEST_F(Service, EditedFramesReachScreenAndFilmInTheMemoryThatWasEdited) {
  const camera_handle_t handle = start("scene");
  const auto slot = handset::viewfinder_slot("group", "id");
  Editor editor(handle,
                [](const camera_buffer_t& out) { std::fill_n(out.data, out.nv12.stride * 16, std::uint8_t{200}); });
  ASSERT_TRUE(soon([&] { return editor.edited() > 2; }));
  const std::string path = new_film();
  ASSERT_EQ(camera_start_video(handle, path.c_str(), nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(camera_start_video(handle, path.c_str(), nullptr, nullptr, nullptr), EALREADY);
  handset::CameraStatistics statistics{};
  ASSERT_TRUE(soon([&] {
    handset::camera_get_statistics(handle, &statistics);
    return statistics.recorded > 20;
  }));
  EXPECT_EQ(camera_stop_video(handle), 0);
  EXPECT_EQ(camera_stop_video(handle), EINVAL);
  // At some moment the newest picture is the one that was edited last.
  EXPECT_TRUE(soon([&] {
    const handset::Frame newest = slot->latest();
    GstMapInfo map;
    if (!newest || !gst_buffer_map(newest.buffer.get(), &map, GST_MAP_READ)) return false;
    const bool same = map.data == editor.last_data();
    gst_buffer_unmap(newest.buffer.get(), &map);
    return same;
  })) << "the screen was given a copy";
  editor.stop();

  const film::Film film = film::play(path);
  EXPECT_EQ(film.error, "");
  EXPECT_GT(film.pictures.size(), 20U);
  for (const film::Picture& picture : film.pictures) ASSERT_NEAR(picture.y(100, 4), 200, 4);
  EXPECT_EQ(camera_close(handle), 0);
  EXPECT_FALSE(slot->latest()) << "a closed camera leaves no picture";
}

TEST_F(Service, LostSourcesAreRevokedInTimeAndLeaveAPlayableFilm) {
  for (const std::string source : {frames_then_error, frames_then_nothing, frames_then_end}) {
    StatusLog log;
    const camera_handle_t handle = open(source);
    ASSERT_EQ(configure(handle), 0);
    testing::internal::CaptureStderr();
    ASSERT_EQ(camera_start_video_viewfinder(handle, nullptr, StatusLog::on_status, &log), 0) << source;
    const std::string path = new_film();
    const bool filming = camera_start_video(handle, path.c_str(), nullptr, nullptr, nullptr) == 0;
    EXPECT_TRUE(soon([&] { return log.revoked > 0; }, 10s)) << source;
    EXPECT_EQ(camera_stop_video(handle), filming ? 0 : EINVAL);
    EXPECT_EQ(camera_start_video(handle, path.c_str(), nullptr, nullptr, nullptr), EIO);
    EXPECT_EQ(camera_close(handle), 0);
    EXPECT_EQ(log.revoked, 1) << source;
    const std::string errors = "\n" + testing::internal::GetCapturedStderr();  // a slow encoder has its own line
    EXPECT_NE(errors.find("\ncamera: "), std::string::npos) << errors;
    if (filming) {
      EXPECT_EQ(film::play(path).error, "") << source;
    }
  }
}

TEST_F(Service, ALostCameraLeavesAReasonAndNoPicture) {
  const auto slot = handset::viewfinder_slot("group", "id");
  testing::internal::CaptureStderr();
  // Time to see its picture, on a busy machine too.
  const camera_handle_t handle = start("gst:videotestsrc is-live=true ! identity error-after=90");
  ASSERT_TRUE(soon([&] { return static_cast<bool>(slot->latest()); }));
  EXPECT_EQ(slot->status().trouble, "");
  // Its editor holds a pair when the camera goes, and returns it later.
  Editor editor(handle, [](const camera_buffer_t&) { std::this_thread::sleep_for(50ms); });
  ASSERT_TRUE(soon([&] { return log_.revoked > 0; }));
  std::this_thread::sleep_for(100ms);
  editor.stop();
  EXPECT_FALSE(slot->latest());
  EXPECT_EQ(slot->status().trouble, "The camera has stopped: Failed after iterations as requested.");
  EXPECT_EQ(camera_close(handle), 0);
  EXPECT_EQ(slot->status().trouble, "The camera has stopped: Failed after iterations as requested.");
  testing::internal::GetCapturedStderr();
  start("scene");
  EXPECT_EQ(slot->status().trouble, "");
  EXPECT_TRUE(soon([&] { return static_cast<bool>(slot->latest()); }));
}

TEST_F(Service, AFullDiskEndsTheRecordingWithANotice) {
  disk_margin_ = std::uint64_t{1} << 60;  // no disk has that much room
  const auto slot = handset::viewfinder_slot("group", "id");
  testing::internal::CaptureStderr();
  const camera_handle_t handle = start("scene");
  const std::string path = new_film();
  const int error = camera_start_video(handle, path.c_str(), nullptr, StatusLog::on_status, &log_);
  if (error == 0) {
    EXPECT_TRUE(soon([&] { return log_.failed != 0; }));
    EXPECT_EQ(log_.failed, ENOSPC);
    EXPECT_EQ(camera_stop_video(handle), ENOSPC);
    EXPECT_EQ(film::play(path).error, "");
  } else {
    EXPECT_EQ(error, ENOSPC);
  }
  EXPECT_EQ(slot->status().notice, "Recording ended: the storage is full");
  EXPECT_TRUE(slot->latest());
  testing::internal::GetCapturedStderr();
}

TEST_F(Service, OnlyASceneInPlaceOfACameraSaysSo) {
  const auto slot = handset::viewfinder_slot("group", "id");
  const camera_handle_t handle = start("scene");
  EXPECT_EQ(slot->status().trouble, "");
  EXPECT_EQ(camera_close(handle), 0);
  if (!handset::find_cameras().empty()) return;  // this machine has one
  start("auto");
  EXPECT_EQ(slot->status().trouble, "No camera found. This scene is drawn by the program.");
}

TEST_F(Service, RotationsReachTheScreenAndTurnNoFilm) {
  const auto slot = handset::viewfinder_slot("group", "id");
  const camera_handle_t handle = open("scene");
  ASSERT_EQ(configure(handle, 640, 480), 0);
  ASSERT_EQ(camera_set_vf_property(handle, CAMERA_IMGPROP_ROTATION, 90, CAMERA_IMGPROP_END), 0);
  ASSERT_EQ(camera_start_video_viewfinder(handle, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(slot->status().rotation, 90);
  for (const int angle : {0, 90, 180, 270}) {
    EXPECT_EQ(camera_set_vf_property(handle, CAMERA_IMGPROP_ROTATION, angle, CAMERA_IMGPROP_END), 0);
    EXPECT_EQ(camera_set_video_property(handle, CAMERA_IMGPROP_ROTATION, angle, CAMERA_IMGPROP_END), 0);
    EXPECT_EQ(slot->status().rotation, angle);
    const std::string path = new_film();
    ASSERT_EQ(camera_start_video(handle, path.c_str(), nullptr, nullptr, nullptr), 0);
    handset::CameraStatistics statistics{};
    ASSERT_TRUE(soon([&] {
      handset::camera_get_statistics(handle, &statistics);
      return statistics.recorded > 8;
    }));
    ASSERT_EQ(camera_stop_video(handle), 0);
    EXPECT_EQ(film::rotation_with_ffprobe(path), "");
    const film::Film film = film::play(path);
    ASSERT_FALSE(film.pictures.empty());
    EXPECT_EQ(film.orientation, "");
    // The strip is read where it stands in an upright picture.
    for (const film::Picture& picture : film.pictures) {
      EXPECT_EQ(picture.width, 640);
      EXPECT_EQ(picture.height, 480);
      EXPECT_GE(picture.strip_number(), 0) << angle;
    }
  }
}

TEST_F(Service, MayBeClosedFromItsOwnStatusCallback) {
  log_.close_from_callback = true;
  testing::internal::CaptureStderr();
  const camera_handle_t handle = start(frames_then_error);
  EXPECT_TRUE(soon([&] { return log_.revoked > 0; }));
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(log_.closed, 0);
  EXPECT_EQ(camera_close(handle), EBADF);
  open("scene");
}

TEST_F(Service, ClosingWaitsForThePairAndNeverForEver) {
  const camera_handle_t handle = start("scene");
  const int chid = ChannelCreate(0);
  const int coid = ConnectAttach(0, 0, chid, side_channel_index, 0);
  const pulse_event_t event = make_pulse_event(coid, -1, 5, 0);
  camera_eventkey_t key = 0;
  ASSERT_EQ(camera_enable_viewfinder_event(handle, CAMERA_EVENTMODE_READWRITE, &key, &event), 0);
  pulse_t pulse{};
  ASSERT_EQ(MsgReceivePulse(chid, &pulse, sizeof pulse, nullptr), 0);
  camera_buffer_t input{};
  camera_buffer_t output{};
  ASSERT_EQ(camera_get_viewfinder_buffers(handle, key, &input, &output), 0);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(camera_close(handle), 0);
  const auto took = std::chrono::steady_clock::now() - begin;
  EXPECT_GE(took, handset::camera_timeouts::pair_return);
  EXPECT_LT(took, 5s);
  // The editor is late, and its memory is still there.
  std::fill_n(output.data, output.data_size, std::uint8_t{3});
  EXPECT_EQ(camera_return_buffer(handle, &input), 0);
  EXPECT_EQ(camera_return_buffer(handle, &output), 0);
  EXPECT_EQ(camera_return_buffer(handle, &output), EBADF) << "the pair was kept although it is back";
  ConnectDetach(coid);
  ChannelDestroy(chid);
}

TEST_F(Service, ClosingARecordingCameraCompletesTheFilm) {
  const camera_handle_t handle = start("scene");
  Editor editor(handle, [](const camera_buffer_t&) {});
  const std::string path = new_film();
  ASSERT_EQ(camera_start_video(handle, path.c_str(), nullptr, nullptr, nullptr), 0);
  std::this_thread::sleep_for(400ms);
  std::thread stopper([&] { camera_stop_video(handle); });
  EXPECT_EQ(camera_close(handle), 0);
  stopper.join();
  const film::Film film = film::play(path);
  EXPECT_EQ(film.error, "");
  EXPECT_GT(film.pictures.size(), 5U);
}

TEST_F(Service, StartsAndStopsOverAndOver) {
  for (int i = 0; i < 12; ++i) {
    const camera_handle_t handle = start("scene");
    Editor editor(handle, [](const camera_buffer_t&) {});
    if (i % 2 == 0) editor.stop();
    ASSERT_EQ(camera_close(handle), 0);
  }
}

TEST_F(Service, CameraRollMakesNewFilesInTheUsersVideos) {
  const camera_handle_t handle = open("scene");
  char name[256];
  int fd = -1;
  EXPECT_EQ(camera_roll_open_video(handle, &fd, name, 20, CAMERA_ROLL_VIDEO_FMT_DEFAULT), ENAMETOOLONG);
  ASSERT_EQ(camera_roll_open_video(handle, &fd, name, sizeof name, CAMERA_ROLL_VIDEO_FMT_DEFAULT), 0);
  const std::filesystem::path path(name);
  EXPECT_EQ(path.parent_path().filename(), "Camera");
  EXPECT_EQ(path.filename().string().size(), std::string("VID_20260101_000000.mp4").size());
  EXPECT_TRUE(std::filesystem::exists(path));
  EXPECT_EQ(camera_roll_close_video(fd), ENODATA);
  EXPECT_NE(camera_roll_close_video(fd), 0);
  EXPECT_FALSE(std::filesystem::exists(path)) << "nothing was recorded";
  ASSERT_EQ(camera_roll_open_video(handle, &fd, name, sizeof name, CAMERA_ROLL_VIDEO_FMT_DEFAULT), 0);
  write_file(name, "a film");
  EXPECT_EQ(camera_roll_close_video(fd), 0);
  EXPECT_TRUE(std::filesystem::remove(name));
}

}  // namespace

#include "tools/record/session.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <thread>
#include <vector>

#include "camera/resolution.h"
#include "engine/color_filter.h"
#include "engine/filter_thread.h"
#include "platform/camera/camera.h"
#include "platform/camera/camera_config.h"
#include "platform/camera/long_wait.h"
#include "platform/camera/microphone_finder.h"
#include "platform/camera/overload.h"
#include "tools/record/overlays.h"

namespace record {
namespace {

constexpr int turn_ms = 100;
constexpr std::chrono::seconds longest_delay{2};  ///< of a film behind the clock
constexpr int another_camera = 2;                 ///< the one that was tried does not start, and there is another one
constexpr int most_cameras = 8;                   ///< that are tried

sigset_t stop_signals() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGINT);
  sigaddset(&set, SIGTERM);
  sigaddset(&set, SIGHUP);
  return set;
}

/// The desktop's user may be asked something: a signal that is to be read later ends that as well.
void wait_for_user(const std::function<bool()>& done) {
  const sigset_t signals = stop_signals();
  const auto is_asked_to_stop = [&] {
    sigset_t pending;
    return sigpending(&pending) == 0 && sigandset(&pending, &pending, &signals) == 0 && sigisemptyset(&pending) == 0;
  };
  while (!done() && !is_asked_to_stop()) std::this_thread::sleep_for(std::chrono::milliseconds(turn_ms));
}

int complain(const std::string& line) {
  std::fprintf(stderr, "morvane-record: %s\n", line.c_str());
  return 1;
}

int complain(const char* what, const std::string& detail, int error) {
  std::fprintf(stderr, "morvane-record: %s%s%s: %s\n", what, detail.empty() ? "" : " ", detail.c_str(),
               std::strerror(error));
  return 1;
}

/// News from the camera service's threads.
struct News {
  std::atomic<bool> revoked{false};
  std::atomic<bool> finished{false};
  std::atomic<int> failed{0};
  int wake = eventfd(0, EFD_CLOEXEC);

  ~News() { close(wake); }
  void tell() const { eventfd_write(wake, 1); }
};

void on_status(camera_handle_t handle, camera_devstatus_t status, std::uint16_t extra, void* arg) {
  filter_status_callback(handle, status, extra, nullptr);
  auto* news = static_cast<News*>(arg);
  if (status == CAMERA_STATUS_RESOURCES_REVOKED) news->revoked = true;
  if (status == CAMERA_STATUS_VIDEO_FINISHED) news->finished = true;
  if (status == CAMERA_STATUS_VIDEO_FAILED) news->failed = extra;
  news->tell();
}

/// An open camera, closed at the end of the scope: filter thread first.
struct Camera {
  camera_handle_t handle = CAMERA_HANDLE_INVALID;
  ~Camera() {
    kill_thread();
    if (handle != CAMERA_HANDLE_INVALID) camera_close(handle);
  }
};

/// The size to record in: the asked one, a clip's own, else the preferred one.
camera_res_t choose_size(const Options& options, camera_handle_t handle) {
  if (options.width != 0) return {options.width, options.height};
  unsigned count = 0;
  camera_get_video_vf_resolutions(handle, 0, &count, nullptr);
  std::vector<camera_res_t> sizes(count);
  camera_get_video_vf_resolutions(handle, count, &count, sizes.data());
  if (sizes.empty()) return {};  // which the camera refuses
  if (options.source.starts_with("clip:")) return sizes.front();
  return sizes[preferred_resolution(sizes)];
}

void choose_effect(const Options& options) {
  changeCustomColor(1, static_cast<float>(options.u));
  changeCustomColor(2, static_cast<float>(options.v));
  _cur_camera_filter = options.filter;
  changeFilterColor(options.tolerance);
}

/// Opens and starts the camera that the service gives. What is wrong with a source the service says.
/// @return 0, 1 with everything said, or another_camera
int open_and_start(const Options& options, Camera* camera, News* news, camera_res_t* size) {
  if (camera_open(CAMERA_UNIT_REAR, CAMERA_MODE_ALL, &camera->handle) != 0) {
    camera->handle = CAMERA_HANDLE_INVALID;
    return 1;
  }
  *size = choose_size(options, camera->handle);
  const int width = static_cast<int>(size->width);
  const int height = static_cast<int>(size->height);
  int error = camera_set_video_property(camera->handle, CAMERA_IMGPROP_WIDTH, width, CAMERA_IMGPROP_HEIGHT, height,
                                        CAMERA_IMGPROP_END);
  if (error == 0) {
    error = camera_set_vf_property(camera->handle, CAMERA_IMGPROP_WIDTH, width, CAMERA_IMGPROP_HEIGHT, height,
                                   CAMERA_IMGPROP_END);
  }
  if (error != 0) return complain("cannot set the camera up", "", error);
  error = camera_start_video_viewfinder(camera->handle, nullptr, on_status, news);
  if (error == 0) return 0;
  if (error == EINVAL) return complain("cannot start the camera", "", error);
  return handset::camera_may_be_replaced(camera->handle) ? another_camera : 1;
}

int start_camera(const Options& options, Camera* camera, News* news, Stamp* stamp) {
  handset::CameraServiceConfig config = handset::config_from_device_profile();
  config.rear = options.source;
  config.unpaced = options.unpaced;
  config.edited_only = true;
  if (!options.microphone.empty()) config.microphone = options.microphone;
  const std::string complaint = config.unpaced ? "" : handset::check_microphone(config.microphone);
  if (!complaint.empty()) return complain(complaint);
  handset::configure_camera_service(config);
  handset::set_long_wait(wait_for_user);

  camera_res_t size{};
  int error = open_and_start(options, camera, news, &size);
  // Where there is another camera, that one is opened now.
  for (int tries = 0; error == another_camera && tries < most_cameras; ++tries) {
    camera_close(camera->handle);
    error = open_and_start(options, camera, news, &size);
  }
  if (error != 0) return 1;
  const camera_handle_t handle = camera->handle;
  const int width = static_cast<int>(size.width);
  const int height = static_cast<int>(size.height);
  _screen_wid = width;
  _screen_hi = height;
  choose_effect(options);
  const std::string overlay_complaint = load_overlay(options);
  if (!overlay_complaint.empty()) return complain(overlay_complaint);
  if (!stamp->refresh()) return complain("cannot draw the stamp");
  error = start_filter_thread(handle);
  return error != 0 ? complain("cannot start the filter thread", "", error) : 0;
}

void show_progress(camera_handle_t handle) {
  handset::CameraStatistics statistics{};
  if (handset::camera_get_statistics(handle, &statistics) != 0) return;
  std::printf("\r%8.1f s %8llu frames %6llu drops", static_cast<double>(statistics.recorded_ns) / 1e9,
              static_cast<unsigned long long>(statistics.recorded),
              static_cast<unsigned long long>(statistics.replaced + statistics.not_recorded));
  std::fflush(stdout);
}

/// Says on stderr when frames begin to be dropped.
class DropReport {
 public:
  void look(camera_handle_t handle) {
    handset::CameraStatistics statistics{};
    if (handset::camera_get_statistics(handle, &statistics) != 0) return;
    const bool losing = watch_.losing(statistics.replaced + statistics.not_recorded, handset::LossWatch::Clock::now());
    if (losing && !told_) complain(handset::dropping_text);
    told_ = losing;
  }

 private:
  handset::LossWatch watch_;
  bool told_ = false;
};

/// Waits for the recording's end: its length, a signal, or news.
void wait_for_end(const Options& options, camera_handle_t handle, const News& news, Stamp* stamp) {
  const sigset_t signals = stop_signals();
  // A source that gives few pictures, or times that stand still, is not waited for. Of an unpaced one every second is
  // wanted, however long it takes.
  const auto wanted = std::chrono::duration<double>(options.seconds);
  const auto end = std::chrono::steady_clock::now() + wanted + longest_delay;
  const int signal_fd = signalfd(-1, &signals, SFD_CLOEXEC);
  const bool terminal = isatty(STDOUT_FILENO) != 0;
  pollfd watched[] = {{signal_fd, POLLIN, 0}, {news.wake, POLLIN, 0}};
  DropReport drops;
  for (;;) {
    const bool woken = poll(watched, 2, turn_ms) > 0;
    if (terminal) show_progress(handle);
    drops.look(handle);
    stamp->refresh();
    if (woken && watched[0].revents != 0) break;
    if (news.revoked || news.finished || news.failed != 0) break;
    handset::CameraStatistics statistics{};
    handset::camera_get_statistics(handle, &statistics);
    if (options.seconds <= 0) continue;
    if (static_cast<double>(statistics.recorded_ns) >= options.seconds * 1e9) break;
    if (!options.unpaced && std::chrono::steady_clock::now() >= end) break;
  }
  if (terminal) std::printf("\r\033[K");
  close(signal_fd);
}

int record_into(const Options& options, camera_handle_t handle, News* news, Stamp* stamp) {
  int error = camera_start_video(handle, options.output.c_str(), nullptr, on_status, news);
  if (error != 0) return complain("cannot record into", options.output, error);
  wait_for_end(options, handle, *news, stamp);
  error = camera_stop_video(handle);
  if (news->failed != 0) return 1;  // the camera service has said why

  handset::CameraStatistics statistics{};
  handset::camera_get_statistics(handle, &statistics);
  std::printf("%llu frames, %llu drops, %.2f seconds, %s\n", static_cast<unsigned long long>(statistics.recorded),
              static_cast<unsigned long long>(statistics.replaced + statistics.not_recorded),
              static_cast<double>(statistics.recorded_ns) / 1e9, options.output.c_str());
  // A clip that is through ends a film of no particular length in order; unpaced it is recorded whole, however long.
  const bool too_short = options.seconds > 0 && !options.unpaced && news->finished &&
                         static_cast<double>(statistics.recorded_ns) < options.seconds * 1e9;
  return error != 0 || too_short || (news->revoked && !news->finished) ? 1 : 0;
}

}  // namespace

void block_signals() {
  const sigset_t signals = stop_signals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  signal(SIGXFSZ, SIG_IGN);
}

int run_session(Options options) {
  const std::string complaint = prepare_paths(&options);
  if (!complaint.empty()) return complain(complaint);
  // Made first and exclusively: an existing film is never touched, a path that cannot be written costs no camera.
  const int fd = open(options.output.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (fd < 0) return complain("cannot create", options.output, errno);
  close(fd);

  News news;
  int status = 0;
  bool filmed = false;
  {
    Camera camera;
    Stamp stamp(options);
    status = start_camera(options, &camera, &news, &stamp);
    if (status == 0) {
      status = record_into(options, camera.handle, &news, &stamp);
      handset::CameraStatistics statistics{};
      handset::camera_get_statistics(camera.handle, &statistics);
      filmed = statistics.recorded > 0;
    }
  }
  if (!filmed) unlink(options.output.c_str());
  return status;
}

}  // namespace record

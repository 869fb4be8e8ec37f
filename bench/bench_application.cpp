// The whole program, as a user starts it: how soon the first edited picture is on the screen, how long a frame is away
// while the user interface is busy, how long the camera's calls hold up the UI thread, and how much memory stays.
//
// Usage: bench_application [MINUTES]    MINUTES of recording at the end, with the memory every thirty seconds
//        bench_application start HOME   the start alone, as the user whose folders are in HOME

#include <unistd.h>

#include <QElapsedTimer>
#include <QQuickWindow>
#include <QTimer>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "app/tarnelapp.h"
#include "bench/bench_surroundings.h"
#include "engine/color_filter.h"
#include "engine/filter_thread.h"
#include "platform/camera/camera_config.h"
#include "platform/device/sandbox.h"
#include "platform/kernel/channel.h"

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int picture_width = 1920, picture_height = 1080;
constexpr int keep_red = 11;
constexpr int busy_seconds = 20;

double milliseconds(Clock::duration time) {
  return std::chrono::duration<double, std::milli>(time).count();
}

/// When the pair in flight was announced, and how long those before were away. One pair is in flight at a time: written
/// by the streaming thread, then by the filter thread; read by the UI thread when no more are wanted.
struct FrameTimes {
  std::atomic<Clock::rep> announced{0};
  std::atomic<int> returned{0};
  std::atomic<bool> wanted{false};
  std::vector<double> away;  // with room for all
};
FrameTimes frame_times;

/// The longest of the camera's calls on the UI thread.
double longest_start_video = 0, longest_stop_video = 0;

void keep_longest(double* longest, Clock::time_point since) {
  *longest = std::max(*longest, milliseconds(Clock::now() - since));
}

}  // namespace

// The linker puts these in front of the functions of the same names (-Wl,--wrap).
extern "C" {
int __real__Z15MsgDeliverEventRK13pulse_event_t(const pulse_event_t& event);
int __wrap__Z15MsgDeliverEventRK13pulse_event_t(const pulse_event_t& event) {
  frame_times.returned = 0;
  frame_times.announced = Clock::now().time_since_epoch().count();
  return __real__Z15MsgDeliverEventRK13pulse_event_t(event);
}

int __real__Z20camera_return_bufferiP15camera_buffer_t(camera_handle_t handle, camera_buffer_t* buffer);
int __wrap__Z20camera_return_bufferiP15camera_buffer_t(camera_handle_t handle, camera_buffer_t* buffer) {
  // The second return hands the frame on, which is not the engine's time: the clock is read before.
  const Clock::duration away = Clock::now().time_since_epoch() - Clock::duration(frame_times.announced.load());
  if (++frame_times.returned == 2 && frame_times.wanted && frame_times.away.size() < frame_times.away.capacity())
    frame_times.away.push_back(milliseconds(away));
  return __real__Z20camera_return_bufferiP15camera_buffer_t(handle, buffer);
}

using on_buffer = void (*)(camera_handle_t, camera_buffer_t*, void*);
using on_status = void (*)(camera_handle_t, camera_devstatus_t, std::uint16_t, void*);
int __real__Z18camera_start_videoiPKcPFviP15camera_buffer_tPvEPFvi18camera_devstatus_ttS3_ES3_(  //
    camera_handle_t handle, const char* file, on_buffer buffer, on_status status, void* arg);
int __wrap__Z18camera_start_videoiPKcPFviP15camera_buffer_tPvEPFvi18camera_devstatus_ttS3_ES3_(  //
    camera_handle_t handle, const char* file, on_buffer buffer, on_status status, void* arg) {
  const auto start = Clock::now();
  const int result = __real__Z18camera_start_videoiPKcPFviP15camera_buffer_tPvEPFvi18camera_devstatus_ttS3_ES3_(
      handle, file, buffer, status, arg);
  keep_longest(&longest_start_video, start);
  return result;
}

int __real__Z17camera_stop_videoi(camera_handle_t handle);
int __wrap__Z17camera_stop_videoi(camera_handle_t handle) {
  const auto start = Clock::now();
  const int result = __real__Z17camera_stop_videoi(handle);
  keep_longest(&longest_stop_video, start);
  return result;
}
}

namespace {

/// Since the kernel started this process, to a hundredth of a second.
double process_milliseconds() {
  std::ifstream stat("/proc/self/stat");
  const std::string line((std::istreambuf_iterator<char>(stat)), {});
  std::istringstream fields(line.substr(line.rfind(')') + 2));
  std::string field;
  for (int i = 3; i <= 22; ++i) fields >> field;
  timespec now{};
  clock_gettime(CLOCK_BOOTTIME, &now);
  const double started = std::stod(field) / static_cast<double>(sysconf(_SC_CLK_TCK));
  return (static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9 - started) * 1e3;
}

long resident_mib() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmRSS:", 0) == 0) return std::stol(line.substr(6)) / 1024;
  }
  return 0;
}

/// @return milliseconds from the process's start to the window's first frame with an edited picture in it
double first_picture(tarnelApp* app) {
  QEventLoop loop;
  double shown = 0;
  QQuickWindow* const window = bb::cascades::Application::instance()->desktopWindow();
  QObject::connect(window, &QQuickWindow::frameSwapped, &loop, [&] {
    if (!app->mViewfinderWindow->isBound()) return;
    shown = process_milliseconds();
    loop.quit();
  });
  QTimer::singleShot(20000, &loop, &QEventLoop::quit);
  loop.exec();
  return shown;
}

/// Draws all the time and computes most of the time between.
void keep_busy(int seconds) {
  QTimer timer;
  QQuickWindow* const window = bb::cascades::Application::instance()->desktopWindow();
  QObject::connect(&timer, &QTimer::timeout, window, [window] {
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 12) {
    }
    window->update();
  });
  timer.start(0);
  run_for(seconds * 1000);
}

void report_frames() {
  std::vector<double>& away = frame_times.away;
  if (away.empty()) {
    std::puts("no frames came");
    return;
  }
  std::sort(away.begin(), away.end());
  const auto at = [&](double share) {
    return away[std::min(away.size() - 1, static_cast<std::size_t>(share * static_cast<double>(away.size())))];
  };
  const auto within = std::upper_bound(away.begin(), away.end(), 3.0) - away.begin();
  std::printf(
      "frames of %dx%d away with colour-keep, busy UI: %zu; median %.2f ms, 99 %% %.2f ms, longest %.2f ms; "
      "within 3 ms %.2f %%\n",
      picture_width, picture_height, away.size(), at(0.5), at(0.99), away.back(),
      100.0 * static_cast<double>(within) / static_cast<double>(away.size()));
}

void record(tarnelApp* app, int duration) {
  app->startRecording();
  run_for(duration);
  app->record_stop();
}

/// Starts the program in a process of its own and prints how long that took.
int start_once(int argc, char** argv) {
  become(argv[2]);
  if (enter_sandbox(MORVANE_PACKAGE_DIR) != 0) return EXIT_FAILURE;
  store_settings(-1);
  bb::cascades::Application application(argc, argv);
  const auto app = std::make_unique<tarnelApp>(&application);
  std::printf("process start to the first edited picture: %.0f ms\n", first_picture(app.get()));
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
  handset::keep_heap_small();
  if (argc > 2 && std::string(argv[1]) == "start") return start_once(argc, argv);
  const Surroundings surroundings("scene");
  // The first one finds no cached plugin registry and no compiled documents.
  const std::string start = fs::read_symlink("/proc/self/exe").string() + " start " + surroundings.home().string();
  for (int i = 0; i < 5; ++i) {
    if (std::system(start.c_str()) != 0) return EXIT_FAILURE;
  }
  if (enter_sandbox(MORVANE_PACKAGE_DIR) != 0) return EXIT_FAILURE;
  bb::cascades::Application application(argc, argv);
  const std::unique_ptr<tarnelApp> app = start_at_size(&application, picture_width, picture_height);
  if (!app) return EXIT_FAILURE;

  filter_init(static_cast<double>(_color_filter_value), filter_match_red);
  _cur_camera_filter = keep_red;
  frame_times.away.reserve(busy_seconds * 100);
  run_for(1000);
  frame_times.wanted = true;
  keep_busy(busy_seconds);
  frame_times.wanted = false;
  run_for(200);
  report_frames();
  std::printf("resident after %d s of viewfinder: %ld MiB\n", busy_seconds, resident_mib());

  for (int i = 0; i < 5; ++i) record(app.get(), 2000);
  std::printf("UI thread held up by camera_start_video at most %.0f ms, by camera_stop_video at most %.0f ms\n",
              longest_start_video, longest_stop_video);

  const int minutes = argc > 1 ? std::atoi(argv[1]) : 0;
  if (minutes > 0) {
    app->startRecording();
    for (int i = 0; i < minutes * 2; ++i) {
      run_for(30000);
      std::printf("recording for %d s: %ld MiB\n", (i + 1) * 30, resident_mib());
      std::fflush(stdout);
    }
    app->record_stop();
  }
  return EXIT_SUCCESS;
}

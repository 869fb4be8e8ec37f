#include "engine/filter_thread.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <thread>

std::atomic<std::int32_t> _cur_camera_filter = -1;
std::atomic<bool> _include_logo = true;
std::atomic<bool> _include_logo_original_color = false;
std::atomic<bool> _screen_recording = false;
std::atomic<bool> _major_error = false;
std::atomic<std::int32_t> _screen_wid = 0, _screen_hi = 0;

std::atomic<camera_handle_t> mHandle = CAMERA_HANDLE_INVALID;
std::atomic<int> filter_chid = -1;
std::atomic<int> filter_coid = -1;
pulse_event_t filter_sigev = {};
pthread_t filter_tid = {};
std::atomic<bool> filter_stop = false;

namespace {

constexpr int pulse_priority = -1, pulse_value = 0;

/// How often a thread whose channel has gone looks at filter_stop.
constexpr std::chrono::milliseconds dead_channel_pause{10};

std::mutex engine_mutex;

/// Guards thread_present and whatever filter_thread.h calls "written only while no filter thread runs". It is
/// held while the thread is joined, so whoever stops second returns when the thread is gone; for the same
/// reason the filter thread must not take it.
std::mutex lifecycle_mutex;
/// There is a thread that nobody has joined.
bool thread_present = false;
/// The thread has armed its frame event, or failed to.
std::atomic<bool> thread_ready = false;

void destroy_channel() {
  ConnectDetach(filter_coid);
  ChannelDestroy(filter_chid);
  filter_coid = filter_chid = -1;
}

/// Flag, then pulse, then join. Call with lifecycle_mutex held.
void stop_and_join() {
  filter_stop = true;
  if (!thread_present) return;
  // A full queue takes no stop pulse, and needs none: a thread with pulses left does not wait.
  MsgSendPulse(filter_coid, pulse_priority, filter_pulse_code, pulse_value);
  pthread_join(filter_tid, nullptr);
  destroy_channel();
  thread_present = false;
}

/// @return 0, or an errno value with no channel left
int create_channel() {
  filter_chid = ChannelCreate(0);
  if (filter_chid == -1) return errno;
  filter_coid = ConnectAttach(0, 0, filter_chid, side_channel_index, 0);
  if (filter_coid != -1) return 0;
  const int error = errno;
  ChannelDestroy(filter_chid);
  filter_chid = -1;
  return error;
}

/// @return true when a pulse with the filter's code has come
bool receive_filter_pulse(int chid) {
  pulse_t pulse;
  if (MsgReceivePulse(chid, &pulse, sizeof pulse, nullptr) == 0) return pulse.code == filter_pulse_code;
  std::this_thread::sleep_for(dead_channel_pause);
  return false;
}

void run_frames(camera_handle_t handle, camera_eventkey_t key, int chid) {
  while (!filter_stop) {
    if (!receive_filter_pulse(chid)) continue;
    if (filter_stop) break;
    camera_buffer_t input{}, output{};
    if (camera_get_viewfinder_buffers(handle, key, &input, &output) != CAMERA_EOK) continue;
    process_frame(input, output);
    camera_return_buffer(handle, &input);
    camera_return_buffer(handle, &output);
  }
}

}  // namespace

std::mutex& engine_lock() {
  return engine_mutex;
}

void* filter_thread([[maybe_unused]] void* unused) {
  const camera_handle_t handle = mHandle;
  camera_eventkey_t key = 0;
  const int enabled = camera_enable_viewfinder_event(handle, CAMERA_EVENTMODE_READWRITE, &key, &filter_sigev);
  thread_ready = true;
  thread_ready.notify_all();
  if (enabled != CAMERA_EOK) {
    std::fputs("failed to attach viewfinder read/write event\n", stderr);
    return nullptr;
  }
  camera_register_resource(handle);
  run_frames(handle, key, filter_chid);
  camera_disable_event(handle, key);
  camera_deregister_resource(handle);
  return nullptr;
}

int start_filter_thread(camera_handle_t handle) {
  const std::lock_guard lock(lifecycle_mutex);
  if (thread_present) stop_and_join();
  mHandle = handle;
  if (const int error = create_channel(); error != 0) return error;
  filter_sigev = make_pulse_event(filter_coid, pulse_priority, filter_pulse_code, pulse_value);
  filter_stop = false;
  thread_ready = false;
  const int error = pthread_create(&filter_tid, nullptr, filter_thread, nullptr);
  if (error == 0) {
    thread_present = true;
    // A recording that is started next must not begin with frames that nobody has edited.
    thread_ready.wait(false);
  } else {
    destroy_channel();
  }
  return error;
}

void kill_thread() {
  const std::lock_guard lock(lifecycle_mutex);
  if (filter_stop || !thread_present) return;
  stop_and_join();
}

void filter_status_callback([[maybe_unused]] camera_handle_t handle, camera_devstatus_t status,
                            [[maybe_unused]] std::uint16_t extra, [[maybe_unused]] void* arg) {
  if (status != CAMERA_STATUS_RESOURCES_REVOKED) return;
  std::fputs("Resource are being revoked!\n", stderr);
  const std::lock_guard lock(lifecycle_mutex);
  stop_and_join();
  _major_error = true;
}

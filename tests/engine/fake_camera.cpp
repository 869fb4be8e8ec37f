#include "tests/engine/fake_camera.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <mutex>

namespace {

constexpr camera_eventkey_t event_key = 4711;

struct state {
  int enable_result = 0;
  int fetch_result = 0;
  std::uint64_t metadata_size = 0;
  test_frame* frame = nullptr;
  bool asked_to_enable = false;
  pulse_event_t event{};
  int returned = 0;
  std::vector<std::string> journal;
  bool quiet = false;
};

std::mutex mutex;  // guards `now`; no engine function is called while it is held
std::condition_variable changed;
state now;
std::atomic<void (*)()> fetch_hook = nullptr;

void write_down(const char* call, camera_handle_t handle) {
  if (!now.quiet) now.journal.push_back(std::string(call) + " " + std::to_string(handle));
}

template <typename Condition>
bool wait_for(Condition condition) {
  std::unique_lock lock(mutex);
  return changed.wait_for(lock, std::chrono::seconds(20), condition);
}

}  // namespace

namespace fake_camera {

void reset() {
  fetch_hook = nullptr;
  const std::lock_guard lock(mutex);
  now = {};
}

void set_enable_result(int result) {
  const std::lock_guard lock(mutex);
  now.enable_result = result;
}

void set_fetch_result(int result) {
  const std::lock_guard lock(mutex);
  now.fetch_result = result;
}

void set_metadata_size(std::uint64_t bytes) {
  const std::lock_guard lock(mutex);
  now.metadata_size = bytes;
}

void set_frame(test_frame* frame) {
  const std::lock_guard lock(mutex);
  now.frame = frame;
}

void set_quiet(bool quiet) {
  const std::lock_guard lock(mutex);
  now.quiet = quiet;
}

void set_fetch_hook(void (*hook)()) {
  fetch_hook = hook;
}

bool wait_enabled() {
  return wait_for([] { return now.asked_to_enable; });
}

bool wait_returned(int count) {
  return wait_for([count] { return now.returned >= 2 * count; });
}

int announce() {
  std::unique_lock lock(mutex);
  const pulse_event_t event = now.event;
  lock.unlock();
  return MsgDeliverEvent(event) == 0 ? 0 : errno;
}

std::vector<std::string> journal() {
  const std::lock_guard lock(mutex);
  return now.journal;
}

}  // namespace fake_camera

int camera_enable_viewfinder_event(camera_handle_t handle, camera_eventmode_t mode, camera_eventkey_t* key,
                                   const pulse_event_t* event) {
  const std::lock_guard lock(mutex);
  write_down(mode == CAMERA_EVENTMODE_READWRITE ? "enable rw" : "enable ro", handle);
  now.asked_to_enable = true;
  now.event = *event;
  changed.notify_all();
  if (now.enable_result == 0) *key = event_key;
  return now.enable_result;
}

int camera_disable_event(camera_handle_t handle, camera_eventkey_t key) {
  const std::lock_guard lock(mutex);
  write_down(key == event_key ? "disable" : "disable foreign key", handle);
  return 0;
}

int camera_get_viewfinder_buffers(camera_handle_t handle, camera_eventkey_t key, camera_buffer_t* input,
                                  camera_buffer_t* output) {
  if (auto* const hook = fetch_hook.load()) hook();
  const std::lock_guard lock(mutex);
  write_down("fetch", handle);
  if (key != event_key) return EBADF;
  if (now.fetch_result != 0) {
    now.returned += 2;  // nothing will come back
    changed.notify_all();
    return now.fetch_result;
  }
  *input = *output = now.frame->descriptor();
  input->metadata_size = now.metadata_size;
  input->role = 0;
  output->role = 1;
  return 0;
}

int camera_return_buffer(camera_handle_t handle, camera_buffer_t* buffer) {
  const std::lock_guard lock(mutex);
  write_down(buffer->role == 0 ? "return input" : "return output", handle);
  ++now.returned;
  changed.notify_all();
  return 0;
}

int camera_register_resource(camera_handle_t handle) {
  const std::lock_guard lock(mutex);
  write_down("register", handle);
  return 0;
}

int camera_deregister_resource(camera_handle_t handle) {
  const std::lock_guard lock(mutex);
  write_down("deregister", handle);
  return 0;
}

#include "tests/application/fake_camera_service.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdarg>
#include <cstring>
#include <map>
#include <mutex>
#include <thread>

#include "platform/camera/camera_config.h"
#include "platform/camera/viewfinder_slot.h"

namespace {

constexpr camera_eventkey_t event_key = 4711;
constexpr int first_film = 101;

struct script_s {
  std::string call;
  std::vector<int> results;  // of the next calls
  int then = 0;              // of those after them
  std::size_t calls = 0;
};

struct camera_s {
  camera_handle_t handle = CAMERA_HANDLE_INVALID;
  fake_camera::unit_s unit;
  int width = 0, height = 0;
  std::string group, id;
  camera_status_callback_t status_callback = nullptr;
  void* status_argument = nullptr;
  pulse_event_t event{};
  std::vector<std::uint8_t> frame;
  int announced = 0;
};

struct state_s {
  std::map<camera_unit_t, fake_camera::unit_s> units;
  std::vector<script_s> scripts;
  std::vector<std::pair<std::string, std::function<void()>>> actions;
  std::vector<std::string> journal;
  camera_s camera;
  int returned = 0;
  std::string film = "/roll/VID_1.mp4";
  std::set<int> films;
  int next_film = first_film;
};

std::mutex mutex;  // guards the following; nothing is called while it is held
std::condition_variable changed;
state_s now;
std::function<void(camera_unit_t)> reopen_listener;
camera_handle_t last_handle = 6;  // handles are never used again

int scripted_result(const std::string& line) {
  int result = CAMERA_EOK;
  for (script_s& script : now.scripts) {
    if (!line.starts_with(script.call)) continue;
    const int scripted = script.calls < script.results.size() ? script.results[script.calls] : script.then;
    ++script.calls;
    if (result == CAMERA_EOK) result = scripted;
  }
  return result;
}

camera_handle_t open_handle() {
  const std::lock_guard lock(mutex);
  return now.camera.handle;
}

/// Writes a call down and lets the test act.
/// @return what the call has to answer
int call(const std::string& line) {
  std::vector<std::function<void()>> actions;
  std::unique_lock lock(mutex);
  now.journal.push_back(line);
  const int result = scripted_result(line);
  for (const auto& [prefix, action] : now.actions) {
    if (line.starts_with(prefix)) actions.push_back(action);
  }
  lock.unlock();
  for (const auto& action : actions) action();
  if (result != CAMERA_EOK) errno = result;
  return result;
}

int call(camera_handle_t handle, const std::string& line) {
  if (handle != CAMERA_HANDLE_INVALID && handle == open_handle()) return call(line);
  call(line + " without camera");
  return errno = EBADF;
}

template <typename... Numbers>
std::string line(const std::string& name, Numbers... numbers) {
  std::string text = name;
  ((text += ' ' + std::to_string(numbers)), ...);
  return text;
}

/// Writes the pairs of a setter; `stream` gets size and window.
std::string property_line(std::string text, int property, va_list values, camera_s* stream) {
  for (; property != CAMERA_IMGPROP_END; property = va_arg(values, int)) {
    text += ' ' + std::to_string(property) + '=';
    if (property == CAMERA_IMGPROP_WIN_GROUPID || property == CAMERA_IMGPROP_WIN_ID) {
      const std::string value = va_arg(values, const char*);
      (property == CAMERA_IMGPROP_WIN_ID ? stream->id : stream->group) = value;
      text += value;
      continue;
    }
    const int value = va_arg(values, int);
    if (property == CAMERA_IMGPROP_WIDTH) stream->width = value;
    if (property == CAMERA_IMGPROP_HEIGHT) stream->height = value;
    text += std::to_string(value);
  }
  return text;
}

int get_properties(const char* name, camera_handle_t handle, int property, va_list values,
                   int fake_camera::unit_s::*rotation) {
  int result = CAMERA_EOK;
  for (; property != CAMERA_IMGPROP_END && result == CAMERA_EOK; property = va_arg(values, int)) {
    int* const value = va_arg(values, int*);
    result = call(handle, line(name, property));
    if (result != CAMERA_EOK) break;
    const std::lock_guard lock(mutex);
    *value = property == CAMERA_IMGPROP_ROTATION ? now.camera.unit.*rotation : int{CAMERA_FRAMETYPE_NV12};
  }
  return result;
}

/// Answers a question for a list: with room 0 its length, otherwise its first entries.
template <typename Entry, typename Count>
void copy_list(const std::vector<Entry>& list, Count room, Count* count, Entry* entries) {
  *count = static_cast<Count>(list.size());
  if (room == 0) return;
  *count = std::min(*count, room);
  std::copy_n(list.begin(), *count, entries);
}

handset::Frame small_picture() {
  gst_init(nullptr, nullptr);
  auto info = std::make_shared<GstVideoInfo>();
  gst_video_info_set_format(info.get(), GST_VIDEO_FORMAT_NV12, 64, 48);
  GstBuffer* const buffer = gst_buffer_new_allocate(nullptr, info->size, nullptr);
  gst_buffer_memset(buffer, 0, 128, info->size);
  return {handset::BufferPtr::adopt(buffer), info, 0};
}

}  // namespace

namespace fake_camera {

void reset() {
  const std::lock_guard lock(mutex);
  now = {};
  now.units[CAMERA_UNIT_REAR].features.insert(CAMERA_FEATURE_VIDEOLIGHT);
}

unit_s& unit(camera_unit_t unit) {
  const std::lock_guard lock(mutex);
  return now.units[unit];
}

void fail(const std::string& call, int error, int from) {
  const std::lock_guard lock(mutex);
  now.scripts.push_back({call, std::vector<int>(static_cast<std::size_t>(from - 1), CAMERA_EOK), error});
}

void answer(const std::string& call, std::vector<int> results) {
  const std::lock_guard lock(mutex);
  now.scripts.push_back({call, std::move(results)});
}

void on_call(const std::string& call, std::function<void()> action) {
  const std::lock_guard lock(mutex);
  now.actions.emplace_back(call, std::move(action));
}

namespace {

void tell(camera_devstatus_t status, std::uint16_t extra) {
  std::unique_lock lock(mutex);
  const auto [handle, callback, argument] =
      std::tuple(now.camera.handle, now.camera.status_callback, now.camera.status_argument);
  lock.unlock();
  if (!callback) return;
  std::thread([=] { callback(handle, status, extra, argument); }).join();
}

}  // namespace

void revoke() {
  tell(CAMERA_STATUS_RESOURCES_REVOKED, 0);
}

void end_recording(int error) {
  tell(CAMERA_STATUS_VIDEO_FAILED, static_cast<std::uint16_t>(error));
}

void offer(camera_unit_t unit) {
  std::unique_lock lock(mutex);
  const auto listener = reopen_listener;
  lock.unlock();
  if (listener) listener(unit);
}

void post_frame() {
  std::unique_lock lock(mutex);
  const auto slot = handset::viewfinder_slot(now.camera.group, now.camera.id);
  lock.unlock();
  slot->post(small_picture());
}

int announce() {
  std::unique_lock lock(mutex);
  const pulse_event_t event = now.camera.event;
  now.camera.frame.assign(static_cast<std::size_t>(now.camera.width * now.camera.height * 3 / 2), 128);
  ++now.camera.announced;
  lock.unlock();
  return MsgDeliverEvent(event) == 0 ? 0 : errno;
}

bool wait_returned(int pairs) {
  std::unique_lock lock(mutex);
  return changed.wait_for(lock, std::chrono::seconds(20), [pairs] { return now.returned >= 2 * pairs; });
}

std::vector<std::uint8_t> frame() {
  const std::lock_guard lock(mutex);
  return now.camera.frame;
}

void write_down(const std::string& line) {
  const std::lock_guard lock(mutex);
  now.journal.push_back(line);
}

std::vector<std::string> journal() {
  const std::lock_guard lock(mutex);
  return now.journal;
}

std::vector<std::string> commands() {
  std::vector<std::string> lines = journal();
  std::erase_if(lines, [](const std::string& line) { return line.starts_with("get_") || line.starts_with("has_"); });
  return lines;
}

void clear_journal() {
  const std::lock_guard lock(mutex);
  now.journal.clear();
}

void set_film_name(const std::string& path) {
  const std::lock_guard lock(mutex);
  now.film = path;
}

int open_films() {
  const std::lock_guard lock(mutex);
  return static_cast<int>(now.films.size());
}

bool is_open() {
  return open_handle() != CAMERA_HANDLE_INVALID;
}

}  // namespace fake_camera

int handset::camera_hold_video(camera_handle_t handle, bool hold) {
  return call(handle, line("hold_video", int{hold}));
}

int handset::camera_wait_first_frame(camera_handle_t) {
  return 0;
}

int camera_open(camera_unit_t unit, std::uint32_t mode, camera_handle_t* handle) {
  if (const int error = call(line("open", int{unit}, mode))) return error;
  const std::lock_guard lock(mutex);
  if (now.camera.handle != CAMERA_HANDLE_INVALID) return errno = EBUSY;
  now.camera.handle = ++last_handle;
  now.camera.unit = now.units[unit];
  *handle = now.camera.handle;
  return CAMERA_EOK;
}

int camera_close(camera_handle_t handle) {
  if (const int error = call(handle, "close")) return error;
  const std::lock_guard lock(mutex);
  now.camera = {};
  return CAMERA_EOK;
}

bool camera_has_feature(camera_handle_t handle, int feature) {
  if (call(handle, line("has_feature", feature)) != CAMERA_EOK) return false;
  const std::lock_guard lock(mutex);
  return now.camera.unit.features.contains(feature);
}

int camera_get_video_vf_resolutions(camera_handle_t handle, unsigned room, unsigned* supported, camera_res_t* sizes) {
  if (const int error = call(handle, line("get_sizes", room))) return error;
  const std::lock_guard lock(mutex);
  copy_list(now.camera.unit.sizes, room, supported, sizes);
  return CAMERA_EOK;
}

int camera_get_supported_video_rotations(camera_handle_t handle, camera_frametype_t, int room, int* supported,
                                         int* degrees) {
  if (const int error = call(handle, line("get_rotations", room))) return error;
  const std::lock_guard lock(mutex);
  copy_list(now.camera.unit.rotations, room, supported, degrees);
  return CAMERA_EOK;
}

int camera_set_vf_property(camera_handle_t handle, int property, ...) {
  camera_s wanted;
  va_list values;
  va_start(values, property);
  const std::string text = property_line("set_vf", property, values, &wanted);
  va_end(values);
  if (const int error = call(handle, text)) return error;
  const std::lock_guard lock(mutex);
  if (wanted.width == 0) return CAMERA_EOK;
  now.camera.width = wanted.width;
  now.camera.height = wanted.height;
  now.camera.group = wanted.group;
  now.camera.id = wanted.id;
  return CAMERA_EOK;
}

int camera_set_video_property(camera_handle_t handle, int property, ...) {
  camera_s ignored;
  va_list values;
  va_start(values, property);
  const std::string text = property_line("set_video", property, values, &ignored);
  va_end(values);
  return call(handle, text);
}

int camera_get_vf_property(camera_handle_t handle, int property, ...) {
  va_list values;
  va_start(values, property);
  const int result = get_properties("get_vf", handle, property, values, &fake_camera::unit_s::vf_rotation);
  va_end(values);
  return result;
}

int camera_get_video_property(camera_handle_t handle, int property, ...) {
  va_list values;
  va_start(values, property);
  const int result = get_properties("get_video", handle, property, values, &fake_camera::unit_s::video_rotation);
  va_end(values);
  return result;
}

int camera_start_video_viewfinder(camera_handle_t handle, camera_viewfinder_callback_t frame_callback,
                                  camera_status_callback_t status_callback, void* arg) {
  {
    const std::lock_guard lock(mutex);
    now.camera.status_callback = status_callback;
    now.camera.status_argument = arg;
  }
  return call(handle, line("start_vf", reinterpret_cast<std::uintptr_t>(arg)) + (frame_callback ? " frames" : ""));
}

int camera_stop_viewfinder(camera_handle_t handle) {
  return call(handle, "stop_vf");
}

int camera_enable_viewfinder_event(camera_handle_t handle, camera_eventmode_t, camera_eventkey_t* key,
                                   const pulse_event_t* event) {
  if (const int error = call(handle, "enable")) return error;
  const std::lock_guard lock(mutex);
  now.camera.event = *event;
  *key = event_key;
  return CAMERA_EOK;
}

int camera_disable_event(camera_handle_t handle, camera_eventkey_t key) {
  return call(handle, key == event_key ? "disable" : "disable foreign key");
}

int camera_get_viewfinder_buffers(camera_handle_t handle, camera_eventkey_t, camera_buffer_t* input,
                                  camera_buffer_t* output) {
  const std::lock_guard lock(mutex);
  camera_s& camera = now.camera;
  if (handle != camera.handle) return EBADF;
  if (camera.announced == 0) return EAGAIN;
  --camera.announced;
  const auto width = static_cast<std::uint32_t>(camera.width), height = static_cast<std::uint32_t>(camera.height);
  *input = {.data = camera.frame.data(),
            .data_size = camera.frame.size(),
            .metadata_size = 0,
            .timestamp = 0,
            .frametype = CAMERA_FRAMETYPE_NV12,
            .nv12 = {height, width, width, std::int64_t{width} * height, width},
            .pair = 0,
            .role = 0};
  *output = *input;
  output->role = 1;
  return CAMERA_EOK;
}

int camera_return_buffer(camera_handle_t, camera_buffer_t*) {
  const std::lock_guard lock(mutex);
  ++now.returned;
  changed.notify_all();
  return CAMERA_EOK;
}

int camera_register_resource(camera_handle_t) {
  return CAMERA_EOK;
}

int camera_deregister_resource(camera_handle_t) {
  return CAMERA_EOK;
}

int camera_set_scene_mode(camera_handle_t handle, camera_scenemode_t mode) {
  return call(handle, line("scene", int{mode}));
}

int camera_config_videolight(camera_handle_t handle, camera_videolightmode_t mode) {
  return call(handle, line("light", int{mode}));
}

bool handset::camera_light_is_lamp(camera_handle_t handle) {
  const std::lock_guard lock(mutex);
  return handle == now.camera.handle && now.camera.unit.lamp;
}

int camera_set_focus_mode(camera_handle_t handle, camera_focusmode_t mode) {
  return call(handle, line("focus", int{mode}));
}

int camera_get_zoom_limits(camera_handle_t handle, int* minimum, int* maximum, bool* smooth) {
  if (const int error = call(handle, "get_zoom_limits")) return error;
  const std::lock_guard lock(mutex);
  *minimum = now.camera.unit.zoom_min;
  *maximum = now.camera.unit.zoom_max;
  *smooth = true;
  return CAMERA_EOK;
}

int camera_set_zoom(camera_handle_t handle, int level, bool smooth) {
  return call(handle, line("zoom", level) + (smooth ? " smooth" : ""));
}

int camera_roll_open_video(camera_handle_t handle, int* fd, char* name, std::size_t name_size,
                           camera_roll_video_fmt_t format) {
  if (const int error = call(handle, line("roll_open", name_size, int{format}))) return error;
  const std::lock_guard lock(mutex);
  if (now.film.size() >= name_size) return errno = ENAMETOOLONG;
  std::memcpy(name, now.film.c_str(), now.film.size() + 1);
  *fd = now.next_film++;
  now.films.insert(*fd);
  return CAMERA_EOK;
}

int camera_roll_close_video(int fd) {
  if (const int error = call(line("roll_close", fd))) return error;
  const std::lock_guard lock(mutex);
  return now.films.erase(fd) == 1 ? CAMERA_EOK : errno = EBADF;
}

int camera_start_video(camera_handle_t handle, const char* filename, camera_viewfinder_callback_t video_callback,
                       camera_status_callback_t status_callback, void*) {
  return call(handle, std::string("start_video ") + filename + (video_callback || status_callback ? " callbacks" : ""));
}

int camera_stop_video(camera_handle_t handle) {
  return call(handle, "stop_video");
}

namespace handset {

void set_reopen_listener(std::function<void(camera_unit_t)> listener) {
  const std::lock_guard lock(mutex);
  reopen_listener = std::move(listener);
}

}  // namespace handset

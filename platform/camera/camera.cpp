#include "platform/camera/camera.h"

#include <fcntl.h>
#include <gst/gst.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <vector>

#include "platform/camera/camera_config.h"
#include "platform/camera/camera_roll.h"
#include "platform/camera/camera_source.h"
#include "platform/camera/camera_watch.h"
#include "platform/camera/reopen.h"
#include "platform/camera/saving.h"
#include "platform/camera/unit.h"
#include "platform/device/profile.h"
#include "platform/device/sandbox.h"

namespace {

using handset::CameraUnit;
using handset::FrameExchange;

struct Service {
  /// Guards everything here; held for look-ups, never while a camera is opened or closed.
  std::mutex mutex;
  std::map<camera_handle_t, std::shared_ptr<CameraUnit>> open;
  std::multimap<camera_handle_t, std::shared_ptr<FrameExchange>> orphans;  ///< stopped, with an editor still at work
  std::set<camera_unit_t> reserved;                                        ///< open, opening or closing
  camera_handle_t next_handle = 0;
  std::unique_ptr<handset::CameraServiceConfig> config;
};

Service& service() {
  static Service* instance = new Service;  // never destroyed: callbacks may come during exit
  return *instance;
}

/// Hands an errno value on as a result.
int result(int error) {
  if (error != 0) errno = error;
  return error;
}

std::shared_ptr<CameraUnit> find(camera_handle_t handle) {
  Service& s = service();
  const std::lock_guard lock(s.mutex);
  const auto found = s.open.find(handle);
  return found != s.open.end() ? found->second : nullptr;
}

/// Runs `operation` on an open camera whose mode includes `needed`.
template <typename Operation>
int with_unit(camera_handle_t handle, std::uint32_t needed, Operation operation) {
  const std::shared_ptr<CameraUnit> unit = find(handle);
  if (!unit) return result(EBADF);
  if ((unit->mode() & needed) != needed) return result(EACCES);
  return result(operation(*unit));
}

/// Lets go of an orphan that nobody has a pair of any more.
void forget_if_unused(const std::shared_ptr<FrameExchange>& exchange) {
  if (!exchange->wait_unused(std::chrono::milliseconds(0))) return;
  Service& s = service();
  const std::lock_guard lock(s.mutex);
  std::erase_if(s.orphans, [&](const auto& orphan) { return orphan.second == exchange; });
}

/// Runs `operation` on the frame exchange of a camera whose viewfinder runs; where that does not know what it is
/// about, on those that were stopped while their editor was still at work.
template <typename Operation>
int with_exchange(camera_handle_t handle, Operation operation) {
  int error = EBADF;
  if (const auto unit = find(handle)) {
    const std::shared_ptr<FrameExchange> exchange = unit->exchange();
    error = exchange ? operation(*exchange) : EBADF;
    if (error != EBADF && error != EINVAL) return result(error);
  }
  std::vector<std::shared_ptr<FrameExchange>> orphans;
  {
    Service& s = service();
    const std::lock_guard lock(s.mutex);
    for (auto [orphan, end] = s.orphans.equal_range(handle); orphan != end; ++orphan) orphans.push_back(orphan->second);
  }
  for (const std::shared_ptr<FrameExchange>& orphan : orphans) {
    error = operation(*orphan);
    if (error != 0) continue;
    forget_if_unused(orphan);
    break;
  }
  return result(error);
}

/// Stops a unit's viewfinder. `exchange` is the one it had, already among the orphans.
int stop_streams(CameraUnit& unit, const std::shared_ptr<FrameExchange>& exchange) {
  const int error = unit.stop_viewfinder();
  if (exchange) forget_if_unused(exchange);
  return error;
}

/// Fills a caller's array in the two-call manner: room 0 asks for the number.
template <typename Count, typename Value>
int list(const Value* values, std::size_t size, Count room, Count* supported, Value* out) {
  if (supported == nullptr || (room > 0 && out == nullptr)) return EINVAL;
  if (room == 0) {
    *supported = static_cast<Count>(size);
    return 0;
  }
  *supported = static_cast<Count>(std::min(static_cast<std::size_t>(room), size));
  std::copy(values, values + *supported, out);
  return 0;
}

handset::CameraServiceConfig current_config() {
  Service& s = service();
  const std::lock_guard lock(s.mutex);
  if (!s.config) s.config = std::make_unique<handset::CameraServiceConfig>(handset::config_from_device_profile());
  return *s.config;
}

/// Source and unit of a reserved unit number; 0 with `handle` set.
int open_reserved(camera_unit_t unit, std::uint32_t mode, camera_handle_t* handle) {
  gst_init(nullptr, nullptr);
  const handset::CameraServiceConfig config = current_config();
  handset::Source source;
  if (const int error = handset::resolve_source(config, unit, &source)) {
    if (unit == CAMERA_UNIT_DESKTOP) return error;  // which the page says, and goes back to the lens
    handset::set_trouble_everywhere(source.why.empty() ? "The camera cannot be opened" : source.why);
    const bool searching = source.trouble == handset::CameraTrouble::searching;
    handset::miss_camera(unit, searching ? handset::Missing::searching : handset::Missing::not_opened, {});
    return error;
  }
  Service& s = service();
  const std::lock_guard lock(s.mutex);
  *handle = s.next_handle++;
  s.open.emplace(*handle, std::make_shared<CameraUnit>(*handle, unit, mode, std::move(source), config));
  return 0;
}

/// A recording that never began leaves nothing in the camera roll. @return whether there was such a file
bool remove_if_empty(int fd) {
  struct stat file {};
  if (fstat(fd, &file) != 0 || !S_ISREG(file.st_mode) || file.st_size != 0 || file.st_nlink != 1) return false;
  if (!handset::claim_film(fd)) return false;  // it is still being saved
  std::error_code error;
  const auto path = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(fd), error);
  return !error && std::filesystem::remove(path, error);
}

void release(camera_unit_t unit) {
  Service& s = service();
  const std::lock_guard lock(s.mutex);
  s.reserved.erase(unit);
}

}  // namespace

namespace handset {

CameraServiceConfig config_from_device_profile() {
  const DeviceProfile& profile = device_profile();
  CameraServiceConfig config;
  config.front = profile.front;
  config.rear = profile.rear;
  config.desktop = profile.desktop;
  config.microphone = profile.microphone;
  config.video_light = profile.video_light;
  config.stabilization = profile.stabilization;
  config.controls_folder = user_dirs().state + "/morvane/controls";
  config.memory_file = user_dirs().data + "/morvane/cameras";
  return config;
}

void configure_camera_service(const CameraServiceConfig& config) {
  Service& s = service();
  const std::lock_guard lock(s.mutex);
  s.config = std::make_unique<CameraServiceConfig>(config);
}

std::string camera_candidate(camera_unit_t unit) {
  return camera_candidate(current_config(), unit);
}

std::string absent_owner(camera_unit_t unit) {
  return absent_owner(current_config(), unit);
}

bool camera_may_be_replaced(camera_handle_t handle) {
  const std::shared_ptr<CameraUnit> unit = find(handle);
  return unit && unit->may_be_replaced();
}

void end_process(int status) {
  std::fflush(nullptr);
  std::_Exit(status);
}

void begin_camera_search() {
  gst_init(nullptr, nullptr);
  CameraWatch::instance();
}

bool camera_light_is_lamp(camera_handle_t handle) {
  const std::shared_ptr<CameraUnit> unit = find(handle);
  return unit && unit->light_is_lamp();
}

int camera_hold_video(camera_handle_t handle, bool hold) {
  return with_unit(handle, 0, [&](CameraUnit& unit) {
    unit.hold_video(hold);
    return 0;
  });
}

int camera_wait_first_frame(camera_handle_t handle) {
  return with_unit(handle, 0, [](CameraUnit& unit) {
    unit.wait_first_frame();
    return 0;
  });
}

bool wait_for_films(std::chrono::milliseconds limit) {
  return wait_for_saving(limit);
}

int camera_get_statistics(camera_handle_t handle, CameraStatistics* statistics) {
  return with_unit(handle, 0, [&](CameraUnit& unit) {
    *statistics = unit.statistics();
    return 0;
  });
}

}  // namespace handset

int camera_open(camera_unit_t unit, std::uint32_t mode, camera_handle_t* handle) {
  const bool known = unit == CAMERA_UNIT_FRONT || unit == CAMERA_UNIT_REAR || unit == CAMERA_UNIT_DESKTOP;
  if (!known || handle == nullptr || mode == 0 || (mode & ~std::uint32_t{CAMERA_MODE_ALL}) != 0) return result(EINVAL);
  {
    Service& s = service();
    const std::lock_guard lock(s.mutex);
    if (!s.reserved.insert(unit).second) return result(EBUSY);
  }
  const int error = open_reserved(unit, mode, handle);
  if (error != 0) release(unit);
  return result(error);
}

int camera_close(camera_handle_t handle) {
  std::shared_ptr<CameraUnit> unit;
  std::shared_ptr<FrameExchange> exchange;
  {
    Service& s = service();
    const std::lock_guard lock(s.mutex);
    const auto found = s.open.find(handle);
    if (found == s.open.end()) return result(EBADF);
    unit = found->second;
    // The editor may still be at work, and returns its pair while the camera closes or after.
    exchange = unit->exchange();
    if (exchange) s.orphans.emplace(handle, exchange);
    s.open.erase(found);
  }
  stop_streams(*unit, exchange);
  handset::forget_missed(unit->unit());  // its service thread may have waited for a camera to the last
  release(unit->unit());
  return 0;
}

bool camera_has_feature(camera_handle_t handle, int feature) {
  const std::shared_ptr<CameraUnit> unit = find(handle);
  return unit && unit->has_feature(feature);
}

int camera_get_video_vf_resolutions(camera_handle_t handle, unsigned room, unsigned* supported, camera_res_t* sizes) {
  return with_unit(handle, CAMERA_MODE_PREAD, [&](CameraUnit& unit) {
    return list(unit.sizes().data(), unit.sizes().size(), room, supported, sizes);
  });
}

int camera_get_supported_video_rotations(camera_handle_t handle, camera_frametype_t type, int room, int* supported,
                                         int* degrees) {
  return with_unit(handle, CAMERA_MODE_PREAD, [&](CameraUnit& unit) {
    if (type != CAMERA_FRAMETYPE_NV12 || room < 0) return EINVAL;
    constexpr int angles[] = {0, 90, 180, 270};
    return list(angles, unit.unit() == CAMERA_UNIT_DESKTOP ? 1 : std::size(angles), room, supported, degrees);
  });
}

// The four property functions differ in what they hand the argument list to.

int camera_set_vf_property(camera_handle_t handle, int property, ...) {
  std::va_list values;
  va_start(values, property);
  const int error = with_unit(handle, CAMERA_MODE_PWRITE, [&](CameraUnit& unit) {
    return unit.set_properties(CameraUnit::Stream::viewfinder, property, &values);
  });
  va_end(values);
  return error;
}

int camera_get_vf_property(camera_handle_t handle, int property, ...) {
  std::va_list values;
  va_start(values, property);
  const int error = with_unit(handle, CAMERA_MODE_PREAD, [&](CameraUnit& unit) {
    return unit.get_properties(CameraUnit::Stream::viewfinder, property, &values);
  });
  va_end(values);
  return error;
}

int camera_set_video_property(camera_handle_t handle, int property, ...) {
  std::va_list values;
  va_start(values, property);
  const int error = with_unit(handle, CAMERA_MODE_PWRITE, [&](CameraUnit& unit) {
    return unit.set_properties(CameraUnit::Stream::video, property, &values);
  });
  va_end(values);
  return error;
}

int camera_get_video_property(camera_handle_t handle, int property, ...) {
  std::va_list values;
  va_start(values, property);
  const int error = with_unit(handle, CAMERA_MODE_PREAD, [&](CameraUnit& unit) {
    return unit.get_properties(CameraUnit::Stream::video, property, &values);
  });
  va_end(values);
  return error;
}

int camera_start_video_viewfinder(camera_handle_t handle, camera_viewfinder_callback_t frame_callback,
                                  camera_status_callback_t status_callback, void* arg) {
  return with_unit(handle, CAMERA_MODE_DREAD,
                   [&](CameraUnit& unit) { return unit.start_viewfinder(frame_callback, status_callback, arg); });
}

int camera_stop_viewfinder(camera_handle_t handle) {
  return with_unit(handle, 0, [handle](CameraUnit& unit) {
    const std::shared_ptr<FrameExchange> exchange = unit.exchange();
    if (exchange) {
      Service& s = service();
      const std::lock_guard lock(s.mutex);
      s.orphans.emplace(handle, exchange);
    }
    return stop_streams(unit, exchange);
  });
}

int camera_enable_viewfinder_event(camera_handle_t handle, camera_eventmode_t mode, camera_eventkey_t* key,
                                   const pulse_event_t* event) {
  if (key == nullptr || event == nullptr) return result(EINVAL);
  return with_unit(handle, CAMERA_MODE_DREAD | CAMERA_MODE_DWRITE, [&](CameraUnit& unit) {
    const std::shared_ptr<FrameExchange> exchange = unit.exchange();
    return exchange ? exchange->enable(mode, key, *event) : EINVAL;
  });
}

int camera_disable_event(camera_handle_t handle, camera_eventkey_t key) {
  return with_exchange(handle, [&](FrameExchange& exchange) { return exchange.disable(key); });
}

int camera_get_viewfinder_buffers(camera_handle_t handle, camera_eventkey_t key, camera_buffer_t* input,
                                  camera_buffer_t* output) {
  return with_exchange(handle, [&](FrameExchange& exchange) { return exchange.fetch(key, input, output); });
}

int camera_return_buffer(camera_handle_t handle, camera_buffer_t* buffer) {
  if (buffer == nullptr) return result(EINVAL);
  return with_exchange(handle, [&](FrameExchange& exchange) { return exchange.give_back(*buffer); });
}

int camera_register_resource(camera_handle_t handle) {
  return with_exchange(handle, [](FrameExchange& exchange) { return exchange.add_user(1); });
}

int camera_deregister_resource(camera_handle_t handle) {
  return with_exchange(handle, [](FrameExchange& exchange) { return exchange.add_user(-1); });
}

int camera_set_scene_mode(camera_handle_t handle, camera_scenemode_t mode) {
  return with_unit(handle, CAMERA_MODE_PWRITE, [&](CameraUnit& unit) { return unit.set_scene_mode(mode); });
}

int camera_config_videolight(camera_handle_t handle, camera_videolightmode_t mode) {
  return with_unit(handle, CAMERA_MODE_PWRITE, [&](CameraUnit& unit) { return unit.set_light(mode); });
}

int camera_set_focus_mode(camera_handle_t handle, camera_focusmode_t mode) {
  return with_unit(handle, CAMERA_MODE_PWRITE, [&](CameraUnit& unit) { return unit.set_focus_mode(mode); });
}

int camera_get_zoom_limits(camera_handle_t handle, int* minimum, int* maximum, bool* smooth) {
  if (minimum == nullptr || maximum == nullptr || smooth == nullptr) return result(EINVAL);
  return with_unit(handle, CAMERA_MODE_PREAD,
                   [&](CameraUnit& unit) { return unit.zoom_limits(minimum, maximum, smooth); });
}

int camera_set_zoom(camera_handle_t handle, int level, bool) {
  return with_unit(handle, CAMERA_MODE_PWRITE, [&](CameraUnit& unit) { return unit.set_zoom(level); });
}

int camera_roll_open_video(camera_handle_t handle, int* fd, char* name, std::size_t name_size,
                           camera_roll_video_fmt_t format) {
  if (fd == nullptr || name == nullptr || format != CAMERA_ROLL_VIDEO_FMT_DEFAULT) return result(EINVAL);
  return with_unit(handle, CAMERA_MODE_ROLL, [&](CameraUnit&) {
    struct Film {
      std::string path;
      int fd = -1;
    };
    const auto film = std::make_shared<Film>();
    const auto create = [film, folder = camera_roll_dir(), name_size] {
      return handset::create_roll_film(folder, name_size, &film->path, &film->fd);
    };
    const auto nobody_waits = [film](int error) {
      if (error == 0) camera_roll_close_video(film->fd);
    };
    const int failure = handset::Saving::begin(create, nobody_waits)->wait(handset::disk_patience);
    if (failure != 0) return failure == EINPROGRESS ? ETIMEDOUT : failure;
    *fd = film->fd;
    std::memcpy(name, film->path.c_str(), film->path.size() + 1);
    return 0;
  });
}

int camera_roll_close_video(int fd) {
  if (fcntl(fd, F_GETFD) == -1) return result(EBADF);
  const auto finish = [fd] {
    const bool empty = remove_if_empty(fd);
    const int error = close(fd) == 0 ? 0 : errno;
    return empty ? ENODATA : error;
  };
  return result(handset::Saving::begin(finish, {})->wait(handset::disk_patience));
}

int camera_start_video(camera_handle_t handle, const char* filename, camera_viewfinder_callback_t video_callback,
                       camera_status_callback_t status_callback, void* arg) {
  return with_unit(handle, CAMERA_MODE_DREAD,
                   [&](CameraUnit& unit) { return unit.start_video(filename, video_callback, status_callback, arg); });
}

int camera_stop_video(camera_handle_t handle) {
  return with_unit(handle, 0, [](CameraUnit& unit) { return unit.stop_video(); });
}

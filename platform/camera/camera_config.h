#pragma once

// How this process's camera service is set up, and what it counts: the handset layer's own additions
// to camera.h.

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

#include "platform/camera/camera.h"

namespace handset {

/// What feeds the units. Each source is one of:
///   auto              the camera that has the unit's role, another one where that cannot be used, the built-in
///                     scene where there is none (desktop unit: desktop)
///   camera:NAME       a camera by its label or identity, or by a part that no other camera's has
///   scene             the built-in scene
///   desktop           the screen: the X11 display, or what the user of a Wayland desktop shares with the program
///   clip:FILE         a video file; loops, or runs once when unpaced
///   gst:DESCRIPTION   a GStreamer bin description that ends in raw video
struct CameraServiceConfig {
  std::string front = "auto";
  std::string rear = "auto";
  std::string desktop = "auto";
  /// Clips run once, as fast as they can be recorded, without sound; no frame is dropped, and frames flow only during a
  /// recording.
  bool unpaced = false;
  std::string microphone = "default";  ///< none, or a setting that Microphone accepts
  bool video_light = true;
  bool stabilization = true;
  /// Free bytes to leave on the disk: below that a recording ends and its file is completed.
  std::uint64_t disk_margin = 16U * 1024 * 1024;
  /// If set, starting a camera's viewfinder returns with the first picture, or with the reason there is none. Otherwise
  /// it returns at once, and a camera that gives no picture is retried until it does. Clips, screens and descriptions
  /// are always waited for.
  bool wait_for_picture = true;
  /// If set, ending a recording returns when its film is complete. Otherwise it returns within two seconds, and a film
  /// that takes longer is completed in the background.
  bool wait_for_film = true;
  /// Drops frames that arrive while no event is armed, so that neither screen nor film gets an unedited one.
  bool edited_only = false;
  /// Folder for the controls' original values while a camera is open, one file per camera; empty to disable.
  std::string controls_folder;
  std::string memory_file;  ///< remembers which detected camera is rear and which front; empty to disable
};

/// The configuration in the device profile.
CameraServiceConfig config_from_device_profile();

/// Configures the service; without a call the device profile applies. Affects units opened later. Any thread.
void configure_camera_service(const CameraServiceConfig& config);

/// Time limits.
namespace camera_timeouts {
inline constexpr std::chrono::milliseconds first_frame{5000};  ///< then the screen reports that there is no picture
inline constexpr std::chrono::milliseconds late_frame{15000};  ///< then the start has failed
inline constexpr std::chrono::milliseconds stalled{3000};      ///< a running source without frames is restarted
inline constexpr std::chrono::milliseconds pair_return{1000};  ///< how long closing waits for the pair that is out
inline constexpr std::chrono::milliseconds put_back{1000};     ///< how long closing waits for the camera's controls
inline constexpr std::chrono::milliseconds finalise{15000};    ///< completing a recording
}  // namespace camera_timeouts

/// Called when reopening a unit is worthwhile: a camera was plugged in or has come back, or another can replace one
/// that fails. Repeated every other second until that is done. Any thread; must not block or set the listener. An empty
/// function removes it; no call is in progress once this returns.
void set_reopen_listener(std::function<void(camera_unit_t)> listener);

/// Whether reopening the unit would give it another camera: this one has failed and another has not.
bool camera_may_be_replaced(camera_handle_t handle);

/// Starts the camera search, so that opening a camera need not wait for it. Any thread.
void begin_camera_search();

/// Makes the C library return pictures' memory as soon as it is freed, and keep few heaps: left alone it soon takes
/// pictures from one heap per thread, where they leave holes. Call first thing in a process.
void keep_heap_small();

/// Ends the process, flushing its streams and undoing nothing else: threads abandoned in a device or a server may be
/// inside a library that a normal exit would tear down. Call once everything is closed.
[[noreturn]] void end_process(int status);

/// While held, recordings may be started but take no frame; when that ends, the current one begins with the first frame
/// that is announced to its editor afterwards. So a film begins with effects that are put in place after its start. Any
/// thread. @return EBADF for a handle that is not open
int camera_hold_video(camera_handle_t handle, bool hold);

/// Waits until the current recording has a frame, 1.8 s at most, so that ending it at once leaves a film. To be called
/// before the editor ends, which a recording ends with. Any thread. @return EBADF for a handle that is not open
int camera_wait_first_frame(camera_handle_t handle);

/// Waits until the films that are completed beside are done, so that the process may end.
/// @return false at the end of the time
bool wait_for_films(std::chrono::milliseconds limit);

struct CameraStatistics {
  std::uint64_t arrived;   ///< frames that the source delivered
  std::uint64_t replaced;  ///< frames that a newer one replaced before they were fetched, or that the source skipped
  std::uint64_t edited;    ///< pairs fetched and returned
  std::uint64_t recorded;  ///< frames handed to the encoder by the current or last recording
  std::uint64_t not_recorded;  ///< frames dropped because the encoder was behind
  std::int64_t recorded_ns;    ///< length of that recording so far, nanoseconds
};

/// What CAMERA_FEATURE_VIDEOLIGHT means here: the camera's lamp, or else a brighter picture. Known once the viewfinder
/// has run for a moment; a brighter picture until then. Any thread.
bool camera_light_is_lamp(camera_handle_t handle);

/// @return EBADF for a handle that is not open
int camera_get_statistics(camera_handle_t handle, CameraStatistics* statistics);

}  // namespace handset

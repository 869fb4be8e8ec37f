#pragma once

// How this process's camera service is set up, and what it counts: the handset layer's own additions
// to camera.h.

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

#include "platform/camera/camera.h"

namespace handset {

/// What stands behind the units. Each source is one of:
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
  /// Clips run once and as fast as they are recorded; no frame is dropped, and frames flow only while
  /// a recording runs. Without sound.
  bool unpaced = false;
  std::string microphone = "default";  ///< none, or a setting as Microphone takes it
  bool video_light = true;
  bool stabilization = true;
  /// Bytes that a recording leaves free on its disk: it ends when there are fewer, and its file is completed there.
  std::uint64_t disk_margin = 16U * 1024 * 1024;
  /// Starting a camera's viewfinder returns with the first picture, or with why there is none; else at once, and a
  /// camera that gives no picture is tried again until it does. Clips, screens and descriptions are always waited for.
  bool wait_for_picture = true;
  /// Folder for the controls' original values while a camera is open, one file per camera; empty: not kept.
  std::string controls_folder;
  std::string memory_file;  ///< remembers which found camera is rear and which front; empty: not kept
};

/// The setup that the device profile asks for.
CameraServiceConfig config_from_device_profile();

/// Sets the service up; without a call it is set up from the device profile. Holds for units opened later. Any thread.
void configure_camera_service(const CameraServiceConfig& config);

/// Ends of waits.
namespace camera_timeouts {
inline constexpr std::chrono::milliseconds first_frame{5000};  ///< then the screen says that there is no picture
inline constexpr std::chrono::milliseconds late_frame{15000};  ///< and then the start has failed
inline constexpr std::chrono::milliseconds stalled{3000};      ///< a running source without frames is started anew
inline constexpr std::chrono::milliseconds pair_return{1000};  ///< closing waits for the pair that is out
inline constexpr std::chrono::milliseconds put_back{1000};     ///< closing waits for the camera's controls
inline constexpr std::chrono::milliseconds finalise{15000};    ///< completing a recording
}  // namespace camera_timeouts

/// Told that opening a unit anew is worth it: a camera was plugged in or has come back, or another one can take the
/// place of one that fails. Told again every other second until that is done. Any thread; must not block, nor
/// set the listener. An empty function removes it; when this returns no call is under way.
void set_reopen_listener(std::function<void(camera_unit_t)> listener);

/// Whether its unit would be given another camera, opened anew: this one has failed, and another one has not.
bool camera_may_be_replaced(camera_handle_t handle);

/// Begins to look for cameras, so that opening one need not wait for that. Any thread.
void begin_camera_search();

/// Ends the process, with its streams flushed and nothing else undone: threads that were left behind in a device or a
/// server may be in the middle of a library that would be taken down under them. Once everything is closed.
[[noreturn]] void end_process(int status);

struct CameraStatistics {
  std::uint64_t arrived;   ///< frames that the source delivered
  std::uint64_t replaced;  ///< frames that a newer one replaced before they were fetched, or that the source skipped
  std::uint64_t edited;    ///< pairs fetched and returned
  std::uint64_t recorded;  ///< frames handed to the encoder by the current or last recording
  std::uint64_t not_recorded;  ///< frames that it dropped because the encoder was behind
  std::int64_t recorded_ns;    ///< length of that recording so far
};

/// What CAMERA_FEATURE_VIDEOLIGHT is here: a lamp of the camera's, or else a brighter picture. Known once the
/// viewfinder has run for a moment, and a brighter picture until then. Any thread.
bool camera_light_is_lamp(camera_handle_t handle);

/// @return EBADF for a handle that is not open
int camera_get_statistics(camera_handle_t handle, CameraStatistics* statistics);

}  // namespace handset

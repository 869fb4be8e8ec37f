#pragma once

// How this process's camera service is set up, and what it counts: the handset layer's own additions
// to camera.h.

#include <chrono>
#include <cstdint>
#include <string>

#include "platform/camera/camera.h"

namespace handset {

/// What stands behind the units. Each source is one of:
///   auto              a camera that was found, else the built-in scene (desktop unit: desktop)
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
  std::string memory_file;  ///< remembers which found camera is rear and which front; empty: not kept
};

/// The setup that the device profile asks for.
CameraServiceConfig config_from_device_profile();

/// Sets the service up; without a call it is set up from the device profile. Holds for units opened later. Any thread.
void configure_camera_service(const CameraServiceConfig& config);

/// Ends of waits.
namespace camera_timeouts {
inline constexpr std::chrono::milliseconds first_frame{5000};  ///< a webcam may take seconds to warm up
inline constexpr std::chrono::milliseconds stalled{1500};      ///< a running source without frames is gone
inline constexpr std::chrono::milliseconds pair_return{1000};  ///< closing waits for the pair that is out
inline constexpr std::chrono::milliseconds finalise{15000};    ///< completing a recording
}  // namespace camera_timeouts

struct CameraStatistics {
  std::uint64_t arrived;   ///< frames that the source delivered
  std::uint64_t replaced;  ///< frames that a newer one replaced before they were fetched, or that the source skipped
  std::uint64_t edited;    ///< pairs fetched and returned
  std::uint64_t recorded;  ///< frames handed to the encoder by the current or last recording
  std::uint64_t not_recorded;  ///< frames that it dropped because the encoder was behind
  std::int64_t recorded_ns;    ///< length of that recording so far
};

/// @return EBADF for a handle that is not open
int camera_get_statistics(camera_handle_t handle, CameraStatistics* statistics);

}  // namespace handset

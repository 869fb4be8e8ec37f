#pragma once

// What a device's controls do to fulfil the client's wishes, and what is left for the picture. Values in and out.

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/camera/camera.h"
#include "platform/camera/control_device.h"

namespace handset {

inline constexpr int zoom_maximum = 120;

/// Zoom level n magnifies by 1 + n / 40.
constexpr double magnification_of(int level) {
  return 1 + level / 40.0;
}

/// What the client has requested so far. Anything not requested stays as the device has it.
struct CameraWishes {
  camera_scenemode_t scene = CAMERA_SCENE_AUTO;
  bool light = false;
  std::optional<camera_focusmode_t> focus{};
  int focus_runs = 0;  ///< how often CAMERA_FOCUSMODE_AUTO was requested: it focuses once each time
  std::optional<int> zoom{};
};

struct ControlSetting {
  std::uint32_t id;
  std::int32_t value;
  bool operator==(const ControlSetting&) const = default;
};

struct ControlPlan {
  std::vector<ControlSetting> settings;  ///< every other control keeps its original value
  bool scene_in_device = false;          ///< the scene changes something in the device
  bool light_in_device = false;          ///< a lamp is on
  double picture_zoom = 1;               ///< magnification left to the picture
};

/// Divides the wishes between device and picture. If a device has no scene of that name (V4L2_CID_SCENE_MODE), the
/// scene is built from
///
///   Beach & Snow  exposure one stop up, since meters take snow for gray; else backlight compensation to the full
///   Night         exposures may take longer than the frame rate allows; gain at least 3/4 of its range
///   Closeup       autofocus looks at near things only
///   Action        frame rate before exposure; gain at least half of its range, which shortens exposures
///
/// as far as it has these controls; the exposure controls also switch it to automatic. Auto is the device's original
/// state.
ControlPlan plan_controls(const std::vector<DeviceControl>& controls, const CameraWishes& wishes);

/// Whether the device's focus can be controlled at all.
bool can_focus(const std::vector<DeviceControl>& controls);
/// Whether it supports this mode.
bool can_focus(const std::vector<DeviceControl>& controls, camera_focusmode_t mode);

/// Whether the device has a lamp: a flash that works as a torch, or a microscope's illuminator. A webcam's recording
/// LED is neither.
bool has_lamp(const std::vector<DeviceControl>& controls);

/// How much of a magnification a device's zoom covers.
struct ZoomShare {
  std::int32_t device;  ///< value of V4L2_CID_ZOOM_ABSOLUTE
  double picture;       ///< the remainder
};
/// V4L2 leaves the unit to the device. With a positive minimum it is read as a focal length, as USB Video Class means
/// it (100..500 and the like): the minimum is 1x and the value is proportional to the magnification. Otherwise the
/// extent is unknown and the range is taken as that of the zoom levels, 1x to 4x. The value is rounded down to the
/// device's steps; the picture makes up for that and for anything beyond the maximum.
ZoomShare share_zoom(const DeviceControl& zoom, double magnification);

}  // namespace handset

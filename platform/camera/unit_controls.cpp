// A unit's scene modes, light, focus, zoom and stabilization.

#include <cerrno>

#include "platform/camera/unit.h"

namespace handset {
namespace {

constexpr int zoom_maximum = 120;

/// What a scene mode does to the picture where the device has no such mode: a mild preset.
struct Look {
  double brightness, contrast, saturation;
};

Look look_of(camera_scenemode_t mode) {
  switch (mode) {
    case CAMERA_SCENE_BEACH_SNOW:
      return {-0.06, 0.06, 0.10};
    case CAMERA_SCENE_NIGHT:
      return {0.10, 0.04, -0.10};
    case CAMERA_SCENE_CLOSEUP:
      return {0.0, 0.08, 0.12};
    case CAMERA_SCENE_ACTION:
      return {0.02, 0.12, 0.04};
    default:
      return {0, 0, 0};
  }
}

bool known_scene(camera_scenemode_t mode) {
  return mode == CAMERA_SCENE_AUTO || mode == CAMERA_SCENE_CLOSEUP || mode == CAMERA_SCENE_ACTION ||
         mode == CAMERA_SCENE_BEACH_SNOW || mode == CAMERA_SCENE_NIGHT;
}

}  // namespace

void CameraUnit::apply_look() {
  std::shared_ptr<Capture> capture;
  Look look{};
  int zoom = 0;
  {
    const std::lock_guard lock(state_mutex_);
    capture = capture_;
    look = look_of(scene_);
    if (light_) look.brightness += 0.08;
    zoom = zoom_;
  }
  if (!capture) return;
  capture->set_balance(look.brightness, look.contrast, look.saturation);
  capture->set_zoom(1 + zoom / 40.0);
}

void CameraUnit::apply_stabilization() {
  std::shared_ptr<Capture> capture;
  bool on = false;
  {
    const std::lock_guard lock(state_mutex_);
    capture = capture_;
    on = video_.stabilization != 0;
  }
  if (capture) capture->set_stabilized(on);
}

int CameraUnit::set_scene_mode(camera_scenemode_t mode) {
  if (!known_scene(mode)) return EINVAL;
  if (unit_ == CAMERA_UNIT_DESKTOP && mode != CAMERA_SCENE_AUTO) return ENOTSUP;
  {
    const std::lock_guard lock(state_mutex_);
    scene_ = mode;
  }
  apply_look();
  return 0;
}

int CameraUnit::set_light(camera_videolightmode_t mode) {
  if (!has_feature(CAMERA_FEATURE_VIDEOLIGHT)) return ENOTSUP;
  if (mode != CAMERA_VIDEOLIGHT_OFF && mode != CAMERA_VIDEOLIGHT_ON) return EINVAL;
  {
    const std::lock_guard lock(state_mutex_);
    light_ = mode == CAMERA_VIDEOLIGHT_ON;
  }
  apply_look();
  return 0;
}

int CameraUnit::set_focus_mode(camera_focusmode_t mode) {
  if (!has_feature(CAMERA_FEATURE_FOCUS)) return ENOTSUP;
  const bool known = mode == CAMERA_FOCUSMODE_OFF || mode == CAMERA_FOCUSMODE_FIXED || mode == CAMERA_FOCUSMODE_AUTO ||
                     mode == CAMERA_FOCUSMODE_MACRO || mode == CAMERA_FOCUSMODE_CONTINUOUS_AUTO;
  return known ? 0 : EINVAL;
}

int CameraUnit::zoom_limits(int* minimum, int* maximum, bool* smooth) const {
  *minimum = 0;
  *maximum = has_feature(CAMERA_FEATURE_ZOOM) ? zoom_maximum : 0;
  *smooth = true;
  return 0;
}

int CameraUnit::set_zoom(int level) {
  if (!has_feature(CAMERA_FEATURE_ZOOM)) return ENOTSUP;
  if (level < 0 || level > zoom_maximum) return EINVAL;
  {
    const std::lock_guard lock(state_mutex_);
    zoom_ = level;
  }
  apply_look();
  return 0;
}

}  // namespace handset

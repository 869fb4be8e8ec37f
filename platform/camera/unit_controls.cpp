// A unit's scene modes, light, focus, zoom and stabilization.

#include <cerrno>

#include "platform/camera/unit.h"

namespace handset {
namespace {

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

bool known_focus(camera_focusmode_t mode) {
  return mode == CAMERA_FOCUSMODE_OFF || mode == CAMERA_FOCUSMODE_FIXED || mode == CAMERA_FOCUSMODE_AUTO ||
         mode == CAMERA_FOCUSMODE_MACRO || mode == CAMERA_FOCUSMODE_CONTINUOUS_AUTO;
}

/// Whether there is a device whose controls can be asked for.
bool has_node(const Source& source) {
  return source.kind == Source::Kind::device && !source.camera.node.empty();
}

}  // namespace

/// Finds out beside the running viewfinder what the device can do.
void CameraUnit::open_controls() {
  if (!has_node(*source_)) return;
  const auto open = [node = source_->camera.node](const std::atomic<bool>& cancelled) {
    return open_control_devices(node, cancelled);
  };
  const auto changed = [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->apply_look();
  };
  std::shared_ptr<DeviceControls> controls =
      DeviceControls::start({source_->camera.identity, config_.controls_folder, open, changed});
  const std::lock_guard lock(state_mutex_);
  controls_ = std::move(controls);
}

std::shared_ptr<DeviceControls> CameraUnit::controls() const {
  const std::lock_guard lock(state_mutex_);
  return controls_;
}

/// Brings device and picture to what the client wishes. Any thread, the controls' own included.
void CameraUnit::apply_look() {
  const std::lock_guard in_order(look_mutex_);
  std::shared_ptr<Capture> capture;
  std::shared_ptr<DeviceControls> device;
  CameraWishes wishes;
  {
    const std::lock_guard lock(state_mutex_);
    capture = capture_;
    device = controls_;
    wishes = wishes_;
  }
  if (!capture) return;
  const ControlPlan plan = device ? device->ask(wishes) : plan_controls({}, wishes);
  const Look look = plan.scene_in_device ? Look{} : look_of(wishes.scene);
  capture->set_balance(look.brightness, look.contrast, look.saturation);
  capture->set_brighten(wishes.light && !plan.light_in_device);
  capture->set_zoom(plan.picture_zoom);
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
    wishes_.scene = mode;
  }
  apply_look();
  return 0;
}

int CameraUnit::set_light(camera_videolightmode_t mode) {
  if (!has_feature(CAMERA_FEATURE_VIDEOLIGHT)) return ENOTSUP;
  if (mode != CAMERA_VIDEOLIGHT_OFF && mode != CAMERA_VIDEOLIGHT_ON) return EINVAL;
  {
    const std::lock_guard lock(state_mutex_);
    wishes_.light = mode == CAMERA_VIDEOLIGHT_ON;
  }
  apply_look();
  return 0;
}

bool CameraUnit::light_is_lamp() const {
  const std::shared_ptr<DeviceControls> device = controls();
  return has_feature(CAMERA_FEATURE_VIDEOLIGHT) && device && device->has_lamp();
}

/// Before the viewfinder runs nothing is known of the device, and any mode is remembered for it.
int CameraUnit::set_focus_mode(camera_focusmode_t mode) {
  if (!known_focus(mode)) return EINVAL;
  if (!has_node(*source_)) return ENOTSUP;
  const std::shared_ptr<DeviceControls> device = controls();
  if (device && device->known() && !device->can_focus(mode)) return ENOTSUP;
  {
    const std::lock_guard lock(state_mutex_);
    wishes_.focus = mode;
    if (mode == CAMERA_FOCUSMODE_AUTO) ++wishes_.focus_runs;
  }
  apply_look();
  return 0;
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
    wishes_.zoom = level;
  }
  apply_look();
  return 0;
}

}  // namespace handset

#include "platform/camera/control_plan.h"

#include <linux/videodev2.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace handset {
namespace {

using Controls = std::vector<DeviceControl>;

const DeviceControl* find(const Controls& controls, std::uint32_t id) {
  const auto found = std::find_if(controls.begin(), controls.end(), [id](const auto& c) { return c.id == id; });
  return found != controls.end() ? &*found : nullptr;
}

bool has(const Controls& controls, std::uint32_t id) {
  return find(controls, id) != nullptr;
}

bool has_entry(const Controls& controls, std::uint32_t id, std::int32_t index) {
  const DeviceControl* menu = find(controls, id);
  return menu != nullptr && menu->has_entry(index);
}

/// Adds a setting for a control if the device has it.
void set(const Controls& controls, std::uint32_t id, std::int32_t value, std::vector<ControlSetting>* settings) {
  if (has(controls, id)) settings->push_back({id, value});
}

// --- scenes -----------------------------------------------------------------------------------

std::int32_t device_scene(camera_scenemode_t scene) {
  switch (scene) {
    case CAMERA_SCENE_BEACH_SNOW:
      return V4L2_SCENE_MODE_BEACH_SNOW;
    case CAMERA_SCENE_NIGHT:
      return V4L2_SCENE_MODE_NIGHT;
    case CAMERA_SCENE_ACTION:
      return V4L2_SCENE_MODE_SPORTS;
    default:
      return V4L2_SCENE_MODE_NONE;
  }
}

/// What one control does for a scene.
struct SceneRule {
  enum class Kind { value, entry, at_least_percent, exposure_bias };
  camera_scenemode_t scene;
  std::uint32_t id;
  Kind kind;
  std::int32_t value;
  std::uint32_t instead_of = 0;  ///< only if the device lacks this one
};

constexpr SceneRule scene_rules[] = {
    {CAMERA_SCENE_BEACH_SNOW, V4L2_CID_AUTO_EXPOSURE_BIAS, SceneRule::Kind::exposure_bias, 1000},
    {CAMERA_SCENE_BEACH_SNOW, V4L2_CID_BACKLIGHT_COMPENSATION, SceneRule::Kind::at_least_percent, 100,
     V4L2_CID_AUTO_EXPOSURE_BIAS},
    {CAMERA_SCENE_NIGHT, V4L2_CID_EXPOSURE_AUTO_PRIORITY, SceneRule::Kind::value, 1},
    {CAMERA_SCENE_NIGHT, V4L2_CID_GAIN, SceneRule::Kind::at_least_percent, 75},
    {CAMERA_SCENE_CLOSEUP, V4L2_CID_AUTO_FOCUS_RANGE, SceneRule::Kind::entry, V4L2_AUTO_FOCUS_RANGE_MACRO},
    {CAMERA_SCENE_ACTION, V4L2_CID_EXPOSURE_AUTO_PRIORITY, SceneRule::Kind::value, 0},
    {CAMERA_SCENE_ACTION, V4L2_CID_GAIN, SceneRule::Kind::at_least_percent, 50},
};

/// The value nearest to a bias in thousandths of a stop, of the same sign; empty if the control has none.
std::optional<std::int32_t> bias_value(const DeviceControl& control, std::int32_t wanted) {
  if (!control.integer_menu) {
    const std::int32_t value = control.at_most(wanted);
    return value > 0 ? std::optional(value) : std::nullopt;
  }
  const DeviceControl::Entry* best = nullptr;
  for (const DeviceControl::Entry& entry : control.entries) {
    if (entry.value <= 0) continue;
    if (best == nullptr || std::llabs(entry.value - wanted) < std::llabs(best->value - wanted)) best = &entry;
  }
  return best != nullptr ? std::optional(best->index) : std::nullopt;
}

std::optional<std::int32_t> rule_value(const DeviceControl& control, const SceneRule& rule) {
  switch (rule.kind) {
    case SceneRule::Kind::value:
      return rule.value >= control.minimum && rule.value <= control.maximum ? std::optional(rule.value) : std::nullopt;
    case SceneRule::Kind::entry:
      return control.has_entry(rule.value) ? std::optional(rule.value) : std::nullopt;
    case SceneRule::Kind::at_least_percent: {
      const double range = static_cast<double>(control.maximum - control.minimum);
      return std::max(control.value, control.at_most(static_cast<double>(control.minimum) + range * rule.value / 100));
    }
    case SceneRule::Kind::exposure_bias:
      return bias_value(control, rule.value);
  }
  return std::nullopt;
}

/// Automatic exposure, which the exposure rules rely on; nothing if it is already on.
void set_automatic_exposure(const Controls& controls, std::vector<ControlSetting>* settings) {
  const DeviceControl* exposure = find(controls, V4L2_CID_EXPOSURE_AUTO);
  if (exposure == nullptr || governs(exposure->id, exposure->value)) return;
  for (const std::int32_t automatic : {V4L2_EXPOSURE_APERTURE_PRIORITY, V4L2_EXPOSURE_AUTO}) {
    if (!exposure->has_entry(automatic)) continue;
    settings->push_back({exposure->id, automatic});
    return;
  }
}

bool changes_something(const Controls& controls, const std::vector<ControlSetting>& settings) {
  return std::any_of(settings.begin(), settings.end(), [&](const ControlSetting& setting) {
    const DeviceControl* control = find(controls, setting.id);
    return control != nullptr && control->value != setting.value;
  });
}

std::vector<ControlSetting> scene_settings(const Controls& controls, camera_scenemode_t scene) {
  std::vector<ControlSetting> settings;
  if (scene == CAMERA_SCENE_AUTO) return settings;
  const std::int32_t own = device_scene(scene);
  if (own != V4L2_SCENE_MODE_NONE && has_entry(controls, V4L2_CID_SCENE_MODE, own)) {
    return {{V4L2_CID_SCENE_MODE, own}};
  }
  for (const SceneRule& rule : scene_rules) {
    const DeviceControl* control = rule.scene == scene ? find(controls, rule.id) : nullptr;
    if (control == nullptr || (rule.instead_of != 0 && has(controls, rule.instead_of))) continue;
    if (const auto value = rule_value(*control, rule)) settings.push_back({rule.id, *value});
  }
  if (!settings.empty() && scene != CAMERA_SCENE_CLOSEUP) set_automatic_exposure(controls, &settings);
  return settings;
}

// --- focus and light --------------------------------------------------------------------------

/// V4L2 counts V4L2_CID_FOCUS_ABSOLUTE towards the camera: "positive values set the focus closer to the camera,
/// negative values towards infinity". USB Video Class defines it the other way round, in millimeters, but webcams
/// follow V4L2: 0 is infinity.
void set_macro(const Controls& controls, std::vector<ControlSetting>* settings) {
  const DeviceControl* distance = find(controls, V4L2_CID_FOCUS_ABSOLUTE);
  set(controls, V4L2_CID_FOCUS_AUTO, distance != nullptr ? 0 : 1, settings);
  if (distance != nullptr) {
    settings->push_back({distance->id, distance->at_most(static_cast<double>(distance->maximum))});
  } else {
    settings->push_back({V4L2_CID_AUTO_FOCUS_RANGE, V4L2_AUTO_FOCUS_RANGE_MACRO});
  }
}

void set_focus(const Controls& controls, const CameraWishes& wishes, std::vector<ControlSetting>* settings) {
  if (!wishes.focus || !can_focus(controls, *wishes.focus)) return;
  switch (*wishes.focus) {
    case CAMERA_FOCUSMODE_CONTINUOUS_AUTO:
      return set(controls, V4L2_CID_FOCUS_AUTO, 1, settings);
    case CAMERA_FOCUSMODE_MACRO:
      return set_macro(controls, settings);
    case CAMERA_FOCUSMODE_AUTO:
      set(controls, V4L2_CID_FOCUS_AUTO, 0, settings);
      return settings->push_back({V4L2_CID_AUTO_FOCUS_START, wishes.focus_runs});
    case CAMERA_FOCUSMODE_OFF:
    case CAMERA_FOCUSMODE_FIXED:
      return set(controls, V4L2_CID_FOCUS_AUTO, 0, settings);
  }
}

void set_light(const Controls& controls, std::vector<ControlSetting>* settings) {
  if (has_entry(controls, V4L2_CID_FLASH_LED_MODE, V4L2_FLASH_LED_MODE_TORCH)) {
    settings->push_back({V4L2_CID_FLASH_LED_MODE, V4L2_FLASH_LED_MODE_TORCH});
  } else {
    for (const std::uint32_t id : {V4L2_CID_ILLUMINATORS_1, V4L2_CID_ILLUMINATORS_2}) set(controls, id, 1, settings);
  }
}

}  // namespace

ControlPlan plan_controls(const std::vector<DeviceControl>& controls, const CameraWishes& wishes) {
  ControlPlan plan;
  plan.settings = scene_settings(controls, wishes.scene);
  plan.scene_in_device = changes_something(controls, plan.settings);
  if (!plan.scene_in_device) plan.settings.clear();
  set_focus(controls, wishes, &plan.settings);
  if (wishes.light && has_lamp(controls)) {
    set_light(controls, &plan.settings);
    plan.light_in_device = true;
  }
  if (!wishes.zoom) return plan;
  plan.picture_zoom = magnification_of(*wishes.zoom);
  if (const DeviceControl* zoom = find(controls, V4L2_CID_ZOOM_ABSOLUTE)) {
    const ZoomShare share = share_zoom(*zoom, plan.picture_zoom);
    plan.settings.push_back({zoom->id, share.device});
    plan.picture_zoom = share.picture;
  }
  return plan;
}

bool can_focus(const std::vector<DeviceControl>& controls) {
  return has(controls, V4L2_CID_FOCUS_AUTO) || has(controls, V4L2_CID_FOCUS_ABSOLUTE) ||
         has(controls, V4L2_CID_AUTO_FOCUS_START);
}

bool can_focus(const std::vector<DeviceControl>& controls, camera_focusmode_t mode) {
  switch (mode) {
    case CAMERA_FOCUSMODE_CONTINUOUS_AUTO:
      return has(controls, V4L2_CID_FOCUS_AUTO);
    case CAMERA_FOCUSMODE_MACRO:
      return has(controls, V4L2_CID_FOCUS_ABSOLUTE) ||
             has_entry(controls, V4L2_CID_AUTO_FOCUS_RANGE, V4L2_AUTO_FOCUS_RANGE_MACRO);
    case CAMERA_FOCUSMODE_AUTO:
      return has(controls, V4L2_CID_AUTO_FOCUS_START);
    case CAMERA_FOCUSMODE_OFF:
    case CAMERA_FOCUSMODE_FIXED:
      return can_focus(controls);
  }
  return false;
}

bool has_lamp(const std::vector<DeviceControl>& controls) {
  return has_entry(controls, V4L2_CID_FLASH_LED_MODE, V4L2_FLASH_LED_MODE_TORCH) ||
         has(controls, V4L2_CID_ILLUMINATORS_1) || has(controls, V4L2_CID_ILLUMINATORS_2);
}

ZoomShare share_zoom(const DeviceControl& zoom, double magnification) {
  const double low = static_cast<double>(zoom.minimum);
  const double range = static_cast<double>(zoom.maximum - zoom.minimum);
  if (range <= 0) return {zoom.value, magnification};
  // How much the value rises per unit of magnification.
  const double unit = zoom.minimum > 0 ? low : range / (magnification_of(zoom_maximum) - 1);
  const std::int32_t value = zoom.at_most(low + (magnification - 1) * unit);
  return {value, std::max(1.0, magnification / (1 + (value - low) / unit))};
}

}  // namespace handset

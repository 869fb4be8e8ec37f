#include "camera/zoom.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr float no_ratio = -1.0F;
constexpr double steps_per_ratio = 10.0;
constexpr int levels_per_step = 4;
/// Far beyond any camera's levels, yet arithmetic on it still fits an int.
constexpr double max_steps = 1e7;

}  // namespace

zoom_state_s pinch_start(zoom_state_s state) {
  state.mPinching = true;
  state.busy = true;
  state.mPinchStartRatio = no_ratio;
  state.last_zoom = 0;
  return state;
}

zoom_update_s pinch_update(zoom_state_s state, float ratio, const zoom_limits_s& limits) {
  if (!state.mPinching || !std::isfinite(ratio)) return {state, std::nullopt};
  if (state.mPinchStartRatio == no_ratio) state.mPinchStartRatio = ratio;
  // Ratios are single precision: as doubles, 1.2 - 1.0 falls short of two tenths, and a step would be lost.
  const float widened = ratio - state.mPinchStartRatio;
  const double steps = std::clamp(static_cast<double>(widened) * steps_per_ratio, -max_steps, max_steps);
  const int step = static_cast<int>(steps) * levels_per_step;
  if (step == state.last_zoom) return {state, std::nullopt};
  state.mZoom += step - state.last_zoom;
  state.last_zoom = step;
  if (state.mZoom > limits.mZoomMax) {
    state.mZoom = limits.mZoomMax;
  } else if (state.mZoom < limits.mZoomMin) {
    state.mZoom = limits.mZoomMin;
  }
  return {state, state.mZoom};
}

zoom_state_s pinch_end(zoom_state_s state) {
  state.busy = false;
  return state;
}

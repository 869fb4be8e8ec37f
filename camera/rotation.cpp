#include "camera/rotation.h"

#include <algorithm>

namespace {

int opposite(int angle) {
  return (360 - angle) % 360;
}

/// @return false if the camera's video does not support the wanted angle
bool choose_stream_angles(rotation_state_s* state, const rotation_inputs_s& inputs) {
  if (!inputs.camera_open) {
    state->mVfAngle = 0;
    state->mVideoAngle = 0;
    return true;
  }
  const std::optional<int> angle = supported_rotation(inputs.mVideoRotations, state->mCaptureAngle);
  if (!angle) return false;
  state->mVideoAngle = *angle;
  if (!inputs.mSeparateVfRotation) state->mVfAngle = *angle;
  return true;
}

/// Separates items by blanks, like the debug log.
std::string angles_text(const rotation_state_s& state) {
  return "WIN: " + std::to_string(state.mWindowAngle) + " VF: " + std::to_string(state.mVfAngle) +
         " VID: " + std::to_string(state.mVideoAngle) + " MIRROR: " + (state.mMirror ? "true" : "false");
}

}  // namespace

std::optional<int> supported_rotation(std::span<const int> list, int angle) {
  const auto found = std::find(list.begin(), list.end(), angle);
  return found != list.end() ? std::optional(*found) : std::nullopt;
}

rotation_update_s update_angles(rotation_state_s state, int direction, const rotation_inputs_s& inputs) {
  state.mDisplayAngle = direction;
  state.mCaptureAngle = inputs.front ? opposite(opposite(direction)) : opposite(direction);
  if (inputs.mChooseVideoAngle && !choose_stream_angles(&state, inputs)) {
    return {state, "video rotation " + std::to_string(state.mCaptureAngle) + " not supported."};
  }
  const int window = (state.mCaptureAngle + 360 - state.mVfAngle) % 360;
  state.mMirror = inputs.front;
  state.mWindowAngle = inputs.front ? opposite(window) : window;
  return {state, angles_text(state)};
}

#pragma once

// How to turn the streams and the viewfinder window so that the picture stands upright. All angles in degrees.

#include <optional>
#include <span>
#include <string>

struct rotation_state_s {
  int mDisplayAngle = 0;  ///< the display's direction
  int mCaptureAngle = 0;  ///< wanted for the video
  int mVideoAngle = 0;    ///< of the video stream
  int mVfAngle = 0;       ///< of the viewfinder stream
  int mWindowAngle = 0;   ///< of the viewfinder window
  bool mMirror = false;   ///< the viewfinder window is mirrored

  bool operator==(const rotation_state_s&) const = default;
};

/// What the angles depend on.
struct rotation_inputs_s {
  bool front;                            ///< the front camera is in use
  bool camera_open;                      ///< any camera is open
  bool mChooseVideoAngle;                ///< a recording starts: choose the streams' angles
  bool mSeparateVfRotation;              ///< the viewfinder stream keeps its angle when the video stream's changes
  std::span<const int> mVideoRotations;  ///< angles that the open camera's video supports
};

struct rotation_update_s {
  rotation_state_s state;
  std::string log;  ///< one line, without the newline
};

/// Index of the angle's first occurrence in the list.
std::optional<int> supported_rotation(std::span<const int> list, int angle);

/// The angles for a display direction of 0, 90, 180 or 270. If a recording starts and the camera's video does not
/// support the wanted angle, only mDisplayAngle and mCaptureAngle change.
rotation_update_s update_angles(rotation_state_s state, int direction, const rotation_inputs_s& inputs);

#pragma once

// Zoom by pinching: 4 levels for every 0.1 of the pinch's ratio.

#include <optional>

struct zoom_state_s {
  int mZoom = 0;                   ///< level last sent, kept across cameras
  bool mPinching = false;          ///< there has been a pinch start
  float mPinchStartRatio = -1.0F;  ///< ratio of the pinch's first update; -1: none yet
  int last_zoom = 0;               ///< levels added by this pinch
  bool busy = false;               ///< between a pinch's start and its end; the slots copy it to _busy

  bool operator==(const zoom_state_s&) const = default;
};

/// Levels that the open camera has.
struct zoom_limits_s {
  int mZoomMin;
  int mZoomMax;
};

struct zoom_update_s {
  zoom_state_s state;
  std::optional<int> level;  ///< to send to the camera
};

zoom_state_s pinch_start(zoom_state_s state);

/// @param ratio distance of the fingers relative to the start; non-finite values are ignored
zoom_update_s pinch_update(zoom_state_s state, float ratio, const zoom_limits_s& limits);

/// Also for a canceled pinch: the level reached stays.
zoom_state_s pinch_end(zoom_state_s state);

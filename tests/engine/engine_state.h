#pragma once

// The engine's globals as they are when the program starts.

#include <cstring>

#include "engine/color_filter.h"
#include "engine/filter_thread.h"
#include "engine/overlay.h"

inline void reset_engine() {
  kill_thread();
  _u = _v = _y = 128;
  _color_filter_value = 0.5f;
  _busy = false;
  _cur_camera_filter = -1;
  _include_logo = true;
  _include_logo_original_color = false;
  _screen_recording = false;
  _major_error = false;
  const std::lock_guard lock(engine_lock());
  std::memset(filter_bitmask, 0, sizeof filter_bitmask);
  logo_image = datetime_image = {};
}

#pragma once

// How a part of the handset layer offers a window to screen.h.

#include <QImage>
#include <functional>

#include "platform/screen/screen.h"

/// What stands behind a screen_window_t. A handle is known to screen.h as long as this object lives. UI thread.
struct screen_window_s {
  screen_window_s();
  screen_window_s(const screen_window_s&) = delete;
  screen_window_s& operator=(const screen_window_s&) = delete;
  ~screen_window_s();

  int rotation = 0;  ///< degrees clockwise: 0, 90, 180 or 270
  bool mirror = false;
  int zorder = 0;
  screen_context_t context = nullptr;
  std::function<void()> changed;  ///< called after a property has changed and at a flush of the context; may be empty
  std::function<QImage()> read;   ///< what the window shows now; empty where a window cannot be read
};

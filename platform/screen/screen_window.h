#pragma once

// How part of the handset layer exposes a window to screen.h.

#include <QImage>
#include <functional>

#include "platform/screen/screen.h"

/// The object behind a screen_window_t. screen.h knows the handle as long as this object lives. UI thread.
struct screen_window_s {
  screen_window_s();
  screen_window_s(const screen_window_s&) = delete;
  screen_window_s& operator=(const screen_window_s&) = delete;
  ~screen_window_s();

  int rotation = 0;  ///< degrees clockwise: 0, 90, 180 or 270
  bool mirror = false;
  int zorder = 0;
  screen_context_t context = nullptr;
  std::function<void()> changed;  ///< called after a property changes and when the context is flushed; may be empty
  std::function<QImage()> read;   ///< what the window shows now; empty if it cannot be read
};

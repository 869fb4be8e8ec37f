#pragma once

// Geometry of the handset's display and its desktop window. Plain functions for any thread.

#include <QSize>
#include <algorithm>

namespace handset {

/// The display's size with the handset turned by `direction` degrees.
inline QSize turned_display(QSize upright, int direction) {
  return direction % 180 == 0 ? upright : upright.transposed();
}

/// The largest size of the same shape within `bounds`, or `size` itself if it fits.
inline QSizeF shrunk_to(QSizeF size, QSizeF bounds) {
  const bool fits = size.width() <= bounds.width() && size.height() <= bounds.height();
  return fits ? size : size.scaled(bounds, Qt::KeepAspectRatio);
}

/// The initial window: the display at its own size, but at most 85 % of the desktop's space.
inline QSize first_window_size(QSize display, QSize available) {
  return shrunk_to(display, QSizeF(available) * 0.85).toSize();
}

/// The window after its display has changed shape: the same extent, in the display's shape.
inline QSize reshaped_window_size(QSize window, QSize display, QSize available) {
  const int longest = std::max(window.width(), window.height());
  return shrunk_to(QSizeF(display).scaled(longest, longest, Qt::KeepAspectRatio), available).toSize();
}

}  // namespace handset

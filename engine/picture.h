#pragma once

// Pictures that become overlays: read from files that may be anything, and scaled.

#include <QImage>

#include "platform/picture/read_picture.h"

/// Scaled by nearest neighbours to exactly width x height; a null image when either is not positive.
/// @param image  QImage::Format_ARGB32. Every pixel keeps its bytes: colours under little or no opacity count
///               where chroma is averaged, and the painter behind QImage::scaled would not keep them.
QImage scaled_to(const QImage& image, int width, int height);

/// The same to a width, keeping the aspect ratio.
/// @param max_rows  rows below are left out, which bounds what becomes of a narrow and tall picture
QImage scaled_to_width(const QImage& image, int width, int max_rows);

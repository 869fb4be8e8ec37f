#pragma once

#include <QColor>

#include "platform/camera/frame.h"

/// A frame of four quadrants in plain colours, from the top left clockwise; rows padded, as a camera's may be.
handset::Frame quadrants(int width, int height, const QColor (&colours)[4]);

/// The colour that a quadrant has after it went through NV12.
inline constexpr int colour_tolerance = 2;

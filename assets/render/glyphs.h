#pragma once

// The date/time stamp's pictures, drawn on the tables of engine/stamp_layout.h.

#include <QImage>

namespace assets {

/// The glyph sheet of a stamp colour (index of img1_path): both rows, 32-bit ARGB on a transparent
/// ground. All ink, with the contrasting outline around it, lies inside the glyphs' rectangles. Any thread.
QImage glyphSheet(int color);

/// The plate under the glyphs: 32-bit ARGB, one translucent grey on which black and white both read. Any thread.
QImage stampPlate();

}  // namespace assets

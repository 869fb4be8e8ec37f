#pragma once

#include <QPainterPath>
#include <QString>

namespace assets {

/// The family that texts and glyphs are drawn with: the first installed one of a short list, any
/// installed family otherwise, empty when there is none. The same for the whole run; any thread.
QString fontFamily();

/// The outline of a text in bold, its baseline starting at the origin; size in pixels. Outlines are not
/// hinted, so they depend on the font file only.
QPainterPath textOutline(const QString& text, double pixelSize);

}  // namespace assets

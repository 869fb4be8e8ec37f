#pragma once

#include <QImage>
#include <QString>

namespace handset {

enum class NoticeKind { notice, hint };

/// A line of text on a dark, rounded, translucent ground; broken into several where it is too long.
/// @param item   size of the item that it is for, display pixels: how large the text is follows from it
/// @param scale  pixels of the image for one of the display
/// @return premultiplied, `scale` times as large as it is to stand in the item; null for an empty text
QImage paint_notice(const QString& text, NoticeKind kind, QSizeF item, double scale);

}  // namespace handset

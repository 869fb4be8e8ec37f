#pragma once

#include <QImage>
#include <QString>

namespace handset {

enum class NoticeKind { notice, hint };

/// A line of text on a dark, rounded, translucent background, wrapped if too long.
/// @param item size in display pixels of the item it is for, which determines the text size
/// @param scale image pixels per display pixel
/// @return premultiplied, `scale` times its size in the item; null for an empty text
QImage paint_notice(const QString& text, NoticeKind kind, QSizeF item, double scale);

}  // namespace handset

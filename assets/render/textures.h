#pragma once

// The overlay textures. Each is a 32-bit ARGB picture whose alpha leaves the middle to the video.
// They are made for 1920x1080; another size shows the same picture coarser. The same size gives the
// same bytes. The blended frame may be smaller by any factor, without smoothing: the scopes' lines are
// three pixels wide and stay whole. Any thread.

#include <QImage>
#include <QSize>

namespace assets {

QImage vintage(QSize size);
QImage smokeDark(QSize size);
QImage scopeRifle(QSize size);
QImage scopePeriscope(QSize size);
QImage orangeDust(QSize size);
QImage frostWindow(QSize size);
QImage frameGold(QSize size);
QImage fogWhite(QSize size);
QImage fogOrange(QSize size);
QImage fogGreyYellow(QSize size);
QImage fogGrey(QSize size);
QImage brick(QSize size);

/// The function that paints entry i of img_textures.
using TexturePainter = QImage (*)(QSize);
TexturePainter texturePainter(int entry);

}  // namespace assets

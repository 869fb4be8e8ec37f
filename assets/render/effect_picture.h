#pragma once

#include <QImage>

namespace assets {

/// A picture, even in width and height, as a recording with a colour filter shows it: the engine's own filter at
/// its first tolerance does the work. Opacity stays. The filters keep their state in one place: one thread at a time.
/// @param effect  1 to 11, or -1 for none
QImage throughFilter(const QImage& picture, int effect);

}  // namespace assets

#pragma once

// Reading pictures from files that may be anything.

#include <QImage>

/// Pictures of more pixels are not decoded: 128 MiB at 32 bits, also the image library's own limit.
inline constexpr qint64 picture_max_pixels = qint64{32} << 20;

/// Decodes a PNG, JPEG, BMP or GIF file. Never waits for a FIFO or device, opens no other file, and takes no more
/// memory than the file's own size and picture_max_pixels say, whatever is packed into it.
/// @return a null image for what cannot be read, is no regular file, is too large or does not decode whole
QImage read_picture(const char* path);

/// Scaled by nearest neighbours to exactly width x height; a null image when either is not positive.
/// @param image  QImage::Format_ARGB32. Every pixel keeps its bytes: colours under little or no opacity count
///               where chroma is averaged, and the painter behind QImage::scaled would not keep them.
QImage scaled_to(const QImage& image, int width, int height);

/// The same to a width, keeping the aspect ratio.
/// @param max_rows  rows below are left out, which bounds what becomes of a narrow and tall picture
QImage scaled_to_width(const QImage& image, int width, int max_rows);

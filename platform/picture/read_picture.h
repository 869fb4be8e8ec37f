#pragma once

// Reading pictures from files that may be anything. Any thread.

#include <QImage>

/// Pictures of more pixels are not decoded: 128 MiB at 32 bits, also the image library's own limit.
inline constexpr qint64 picture_max_pixels = qint64{32} << 20;

/// Whether a picture is turned as its file says a camera was held.
enum class Upright { no, yes };

/// Decodes a PNG, JPEG, BMP or GIF file. Never waits for a FIFO or device, opens no other file, and takes no more
/// memory than the file's own size and picture_max_pixels say, whatever is packed into it.
/// Takes at most two seconds of processor time.
/// @return a null image for what cannot be read, is no regular file, is too large, would take longer or does not decode
///         whole
QImage read_picture(const char* path, Upright upright = Upright::no);

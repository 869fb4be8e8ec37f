#pragma once

// The texture or picture over the frames: from a file to the planes of logo_image. Everything here is for
// the UI thread; decoding and converting run outside the engine lock.

#include <QImage>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "engine/overlay.h"

/// Where the next overlay is placed: 0-2 top left, middle, right; 3 the middle; 4-6 bottom left, middle, right.
/// Any other code places it top left.
extern std::atomic<std::int32_t> logo_pos;
/// The next build scales the image to the whole frame.
extern std::atomic<bool> fullscreen;

/// The settings' field for the overlay's path, terminator included.
inline constexpr std::size_t overlay_path_size = 256;

/// Stores a path. One that does not fit is refused with a line on the error stream; the field is then untouched.
bool store_overlay_path(char (&field)[overlay_path_size], const char* path);

/// File of a row of the texture menu, 0 to texture_count - 1.
/// @param home  the application's home directory; its last 4 characters are cut off
std::string texture_path(int row, std::string_view home);

/// Whether the user is asked to stretch a picture to the frame: both sides differ from the frame's. Never for
/// a null image, which has no sides.
bool resize_question_applies(const QImage& image);

/// Sets x and y by a code of logo_pos; neither becomes negative.
void place_overlay(std::int32_t code, std::int32_t frame_width, std::int32_t frame_height, logo_image_s& record);

/// Converts the record's size from the image's top left into the record's planes.
/// @param image  QImage::Format_ARGB32, at least as large as the record
void convert_overlay(const QImage& image, const logo_image_s& record);

/// Builds logo_image from a PNG file with alpha, for frames of _screen_wid x _screen_hi at logo_pos, and enables
/// it. An image that is too large for the frame, and not stretched to it, is scaled to half the frame's width.
/// On failure logo_image stays as it was. The first two arguments are not used.
/// @param fill_frame  stretch the image to the frame
/// @return 0; -1 "logo is null" (the file cannot be read, or its path is longer than fits the settings);
///         -2 "logo not in argb32 format", both with that line on the error stream
int logo_load_image(int, int, const char* path, bool fill_frame);

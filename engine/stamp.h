#pragma once

// The date/time stamp: glyphs of a sheet on a plate, converted into datetime_image. Everything here is for
// the UI thread; files are relative to the working directory, see stamp_layout.h.

#include <QImage>
#include <ctime>

/// Formats for strftime; "!" stands for the AM/PM sign. The first means that there is no stamp.
inline constexpr int stamp_format_count = 9;
inline constexpr const char* _time_format[stamp_format_count] = {
    "%m-NOT USED", "%m-%d-%Y %I:%M:%S!", "%d-%m-%Y %I:%M:%S!", "%m/%d/%Y %I:%M:%S!", "%d/%m/%Y %I:%M:%S!",
    "%m-%d-%Y",    "%d-%m-%Y",           "%m/%d/%Y",           "%d/%m/%Y",
};

/// Formats that show the time of day, and so have to be drawn anew every stamp_period_ms while recording.
constexpr bool stamp_ticks(int format) {
  return format >= 1 && format <= 4;
}
inline constexpr int stamp_period_ms = 1000;

struct stamp_settings_s {
  int format;    ///< index of _time_format, 0 for none
  int color;     ///< index of img1_path
  int position;  ///< 0 top left, 1 top right, 2 the middle, 3 bottom left, any other bottom right
};

/// Decodes the glyph sheet of a colour; a null image, and so a bare plate, when there is none.
QImage load_datetime_template(int color);

/// Draws the stamp for the local time of `now` on frames of _screen_wid x _screen_hi, and swaps it in whole and
/// enabled. The planes of the stamp before the last one are used again when they have the right size.
/// @return false when there is nothing to show (no such format, no plate, no local time, a frame of no width):
///         datetime_image then stays as it was
bool generate_datetime(const stamp_settings_s& settings, std::time_t now, const QImage& sheet);

/// Clears datetime_image and frees its planes; a blend that is reading them is waited for.
void free_datetime_image();

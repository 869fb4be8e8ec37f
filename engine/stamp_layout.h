#pragma once

// Where every glyph of the date/time stamp stands in its sheet. The stamp cuts glyphs out by these
// tables and the sheets are drawn on them; the files are paths relative to the working directory.

/// Glyph indexes: 0-9 the digits, then these. "/" also serves ",".
inline constexpr int stamp_glyph_slash = 10;
inline constexpr int stamp_glyph_dash = 11;
inline constexpr int stamp_glyph_colon = 12;
inline constexpr int stamp_glyph_am = 13;
inline constexpr int stamp_glyph_pm = 14;
inline constexpr int stamp_glyph_count = 15;

/// Left edge of each glyph in the sheet, pixels: small row, large row.
inline constexpr int _digitsX[stamp_glyph_count] = {7,   40,  70,  100, 130, 162, 193, 224,
                                                    254, 296, 326, 348, 373, 392, 456};
inline constexpr int _big_digitsX[stamp_glyph_count] = {3,   59,  112, 162, 214, 269, 321, 375,
                                                        426, 480, 533, 585, 628, 660, 767};
/// Top edge of each row, pixels.
inline constexpr int _digitsY = 2;
inline constexpr int _big_digitsY = 83;

/// One row of glyphs. A glyph's width is also the pen's advance. Pixels.
struct stamp_row_s {
  const int* left;   ///< stamp_glyph_count left edges
  int top;           ///< top edge of every glyph
  int digit_width;   ///< 0-9
  int symbol_width;  ///< "/", "-", ":"
  int sign_width;    ///< AM, PM
  int glyph_height;  ///< of every glyph
  int stamp_height;  ///< of a stamp drawn with this row

  constexpr int width(int glyph) const {
    if (glyph < stamp_glyph_slash) return digit_width;
    return glyph < stamp_glyph_am ? symbol_width : sign_width;
  }
};

inline constexpr stamp_row_s stamp_small_row = {_digitsX, _digitsY, 24, 17, 49, 25, 28};
inline constexpr stamp_row_s stamp_large_row = {_big_digitsX, _big_digitsY, 33, 28, 90, 43, 44};

/// Advance of a space, which draws nothing, in both rows.
inline constexpr int stamp_space_advance = 33;

/// Glyph sheets by stamp colour.
inline constexpr const char* img1_path[] = {
    "app/native/black_offscr_buttons.png",  "app/native/blue_offscr_buttons.png",
    "app/native/orange_offscr_buttons.png", "app/native/red_offscr_buttons.png",
    "app/native/yellow_offscr_buttons.png", "app/native/white_offscr_buttons.png",
};
inline constexpr int stamp_color_count = 6;
static_assert(sizeof(img1_path) / sizeof(img1_path[0]) == stamp_color_count);

/// The plate under the glyphs: 32-bit ARGB, at least as large as the largest stamp.
inline constexpr const char* img2_path = "app/native/time.png";

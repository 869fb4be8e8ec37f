#pragma once

// The chart that the programmable webcam films: eight patches of known color above a strip that spells the frame
// number. Whoever paints it and whoever looks for it in a film share this file.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace webcam {

struct Yuv {
  std::uint8_t y, u, v;
};

struct Rgb {
  std::uint8_t r, g, b;
};

inline constexpr std::array<Rgb, 8> chart_colors = {{{191, 0, 0},
                                                     {0, 191, 0},
                                                     {0, 0, 191},
                                                     {191, 191, 0},
                                                     {235, 235, 235},
                                                     {20, 20, 20},
                                                     {128, 128, 128},
                                                     {198, 145, 108}}};

struct Box {
  int x, y, width, height;
};

/// Where patch `index` of chart_colors is in a picture; all even. Four beside each other, two rows, and the lower
/// quarter of the picture stays free for the strip.
inline Box chart_patch(int index, int width, int height) {
  const int w = width / 4 & ~1;
  const int h = height * 3 / 8 & ~1;
  return {index % 4 * w, index / 4 * h, w, h};
}

/// Webcams on different ports number their frames differently: the two highest of the strip's 16 bits are the port.
inline constexpr int chart_port_shift = 14;
inline constexpr int chart_numbers = 1 << chart_port_shift;

/// ITU-R BT.601 with luma of 16 to 235, or the same over the full range as in ITU-T T.871 (JFIF).
inline Yuv to_yuv(const Rgb& c, bool full_range) {
  const double y = 0.299 * c.r + 0.587 * c.g + 0.114 * c.b;
  const double u = (c.b - y) / 1.772;
  const double v = (c.r - y) / 1.402;
  const auto byte = [](double value) { return static_cast<std::uint8_t>(std::clamp(std::lround(value), 0L, 255L)); };
  if (full_range) return {byte(y), byte(128 + u), byte(128 + v)};
  return {byte(16 + y * 219 / 255), byte(128 + u * 224 / 255), byte(128 + v * 224 / 255)};
}

}  // namespace webcam

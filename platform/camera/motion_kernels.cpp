#include "platform/camera/motion_kernels.h"

#include <cstdlib>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/camera/motion_kernels.cpp"
#include "hwy/foreach_target.h"
// clang-format off
#include "hwy/highway.h"
// clang-format on

HWY_BEFORE_NAMESPACE();
namespace handset::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

// A single lane cannot be viewed both as bytes and as pairs: plain C++ does it all.
int HalveRow(const std::uint8_t*, const std::uint8_t*, int, std::uint8_t*) {
  return 0;
}

#else

/// Whole vectors of two rows only. @return samples written
int HalveRow(const std::uint8_t* above, const std::uint8_t* below, int count, std::uint8_t* to) {
  const hn::ScalableTag<std::uint16_t> d16;
  const hn::Repartition<std::uint8_t, decltype(d16)> d8;
  const hn::RebindToSigned<decltype(d16)> d16_signed;
  const hn::Rebind<std::uint8_t, decltype(d16_signed)> d8_half;
  const auto low_byte = hn::Set(d16, 0x00FF);
  const auto two = hn::Set(d16, 2);
  const int step = static_cast<int>(hn::Lanes(d16));
  int x = 0;
  for (; x + step <= count; x += step) {
    const auto a = hn::BitCast(d16, hn::LoadU(d8, above + 2 * x));
    const auto b = hn::BitCast(d16, hn::LoadU(d8, below + 2 * x));
    const auto left = hn::Add(hn::And(a, low_byte), hn::And(b, low_byte));
    const auto right = hn::Add(hn::ShiftRight<8>(a), hn::ShiftRight<8>(b));
    const auto mean = hn::ShiftRight<2>(hn::Add(hn::Add(left, right), two));
    hn::StoreU(hn::DemoteTo(d8_half, hn::BitCast(d16_signed, mean)), d8_half, to + x);
  }
  return x;
}

#endif

// Plain loops, vectorized by the compiler for each target.

void SoftenPlane(const std::uint8_t* from, std::ptrdiff_t from_stride, int width, int height, std::uint8_t* to,
                 std::ptrdiff_t to_stride) {
  std::uint16_t column[softened_width + 2];  // weighted sums of three rows, with the edges duplicated
  for (int row = 0; row < height; ++row, to += to_stride) {
    const std::uint8_t* middle = from + row * from_stride;
    const std::uint8_t* above = row > 0 ? middle - from_stride : middle;
    const std::uint8_t* below = row + 1 < height ? middle + from_stride : middle;
    for (int x = 0; x < width; ++x) column[x + 1] = static_cast<std::uint16_t>(above[x] + 2 * middle[x] + below[x]);
    column[0] = column[1];
    column[width + 1] = column[width];
    for (int x = 0; x < width; ++x) {
      to[x] = static_cast<std::uint8_t>((column[x] + 2 * column[x + 1] + column[x + 2] + 8) >> 4);
    }
  }
}

/// Twelve times the slope of one picture, with neighboring pixels `way` bytes apart.
inline int Slope(const std::uint8_t* at, std::ptrdiff_t way) {
  return 8 * (at[way] - at[-way]) - (at[2 * way] - at[-2 * way]);
}

SlopeSums SumSlopes(const std::uint8_t* now, const std::uint8_t* last, std::ptrdiff_t stride, int columns, int rows) {
  SlopeSums sums{};
  for (int row = 0; row < rows; ++row, now += stride, last += stride) {
    std::int32_t xx = 0, xy = 0, yy = 0, xt = 0, yt = 0, tt = 0, x = 0, y = 0, t = 0;
    // Compilers vectorize 16-bit products.
    for (int i = 0; i < columns; ++i) {
      const auto slope_x = static_cast<std::int16_t>(Slope(now + i, 1) + Slope(last + i, 1));
      const auto slope_y = static_cast<std::int16_t>(Slope(now + i, stride) + Slope(last + i, stride));
      const auto step = static_cast<std::int16_t>(now[i] - last[i]);
      xx += slope_x * slope_x;
      xy += slope_x * slope_y;
      yy += slope_y * slope_y;
      xt += slope_x * step;
      yt += slope_y * step;
      tt += step * step;
      x += slope_x;
      y += slope_y;
      t += step;
    }
    sums.xx += xx, sums.xy += xy, sums.yy += yy;
    sums.xt += xt, sums.yt += yt, sums.tt += tt;
    sums.x += x, sums.y += y, sums.t += t;
  }
  sums.count = static_cast<std::int64_t>(columns) * rows;
  return sums;
}

}  // namespace handset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace handset {
HWY_EXPORT(HalveRow);
HWY_EXPORT(SoftenPlane);
HWY_EXPORT(SumSlopes);

namespace {

void halve_row(const std::uint8_t* above, const std::uint8_t* below, int from, int count, std::uint8_t* to) {
  for (int x = from; x < count; ++x) {
    to[x] = static_cast<std::uint8_t>((above[2 * x] + above[2 * x + 1] + below[2 * x] + below[2 * x + 1] + 2) >> 2);
  }
}

}  // namespace

void halve_plane(const std::uint8_t* from, std::ptrdiff_t from_stride, int width, int height, std::uint8_t* to,
                 std::ptrdiff_t to_stride) {
  const auto halve_vectors = HWY_DYNAMIC_DISPATCH(HalveRow);
  for (int row = 0; row < height / 2; ++row, from += 2 * from_stride, to += to_stride) {
    const int done = halve_vectors(from, from + from_stride, width / 2, to);
    halve_row(from, from + from_stride, done, width / 2, to);
  }
}

void halve_plane_reference(const std::uint8_t* from, std::ptrdiff_t from_stride, int width, int height,
                           std::uint8_t* to, std::ptrdiff_t to_stride) {
  for (int row = 0; row < height / 2; ++row, from += 2 * from_stride, to += to_stride) {
    halve_row(from, from + from_stride, 0, width / 2, to);
  }
}

void soften_plane(const std::uint8_t* from, std::ptrdiff_t from_stride, int width, int height, std::uint8_t* to,
                  std::ptrdiff_t to_stride) {
  HWY_DYNAMIC_DISPATCH(SoftenPlane)(from, from_stride, width, height, to, to_stride);
}

SlopeSums sum_slopes(const std::uint8_t* now, const std::uint8_t* last, std::ptrdiff_t stride, int columns, int rows) {
  return HWY_DYNAMIC_DISPATCH(SumSlopes)(now, last, stride, columns, rows);
}

unsigned difference_of_tiles(const std::uint8_t* now, const std::uint8_t* last, std::ptrdiff_t stride) {
  unsigned sum = 0;
  for (int row = 0; row < tile_height; ++row, now += stride, last += stride) {
    for (int i = 0; i < tile_width; ++i) sum += static_cast<unsigned>(std::abs(now[i] - last[i]));
  }
  return sum;
}

unsigned texture_of_tile(const std::uint8_t* now, std::ptrdiff_t stride) {
  return (difference_of_tiles(now, now + 1, stride) + difference_of_tiles(now, now + stride, stride)) / 2;
}

}  // namespace handset
#endif

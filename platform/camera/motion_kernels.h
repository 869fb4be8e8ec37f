#pragma once

// Pixel arithmetic of the motion estimator. Any alignment is fine; nothing is allocated; strides are bytes.

#include <cstddef>
#include <cstdint>

namespace handset {

/// Halves a plane both ways: every sample becomes the mean of four, (a + b + c + d + 2) >> 2. Vectorized for the CPU at
/// run time. @param width,height of the source; an odd last column or row is dropped
void halve_plane(const std::uint8_t* from, std::ptrdiff_t from_stride, int width, int height, std::uint8_t* to,
                 std::ptrdiff_t to_stride);

/// Scalar reference for halve_plane.
void halve_plane_reference(const std::uint8_t* from, std::ptrdiff_t from_stride, int width, int height,
                           std::uint8_t* to, std::ptrdiff_t to_stride);

inline constexpr int softened_width = 640;  ///< the widest plane that soften_plane takes

/// Weights every sample and its neighbors by 1, 2, 1 both ways, rounded; edges are repeated outward.
void soften_plane(const std::uint8_t* from, std::ptrdiff_t from_stride, int width, int height, std::uint8_t* to,
                  std::ptrdiff_t to_stride);

/// What an area of two pictures reveals about the movement between them. Slopes are five-point differences, (8 * (p[1]
/// - p[-1]) - (p[2] - p[-2])) / 12, accurate up to half the highest frequency; those here are summed over both pictures
/// and not divided, so slope_scale times those of their mean. The step is the newer picture minus the older.
inline constexpr int slope_scale = 24;
struct SlopeSums {
  std::int64_t xx, xy, yy;  ///< slope times slope
  std::int64_t xt, yt, tt;  ///< slope times step, step times step
  std::int64_t x, y, t;     ///< slopes, steps
  std::int64_t count;       ///< pixels
};

inline constexpr int slope_reach = 2;      ///< pixels that sum_slopes needs around its area
inline constexpr int slope_columns = 100;  ///< the most that it takes, so that a row's sums of squares fit 32 bits

/// Sums over columns x rows pixels that begin at `now` and at `last`.
SlopeSums sum_slopes(const std::uint8_t* now, const std::uint8_t* last, std::ptrdiff_t stride, int columns, int rows);

inline constexpr int tile_width = 16;  ///< of the areas that difference_of_tiles compares
inline constexpr int tile_height = 8;

/// Sum of absolute differences of two tiles.
unsigned difference_of_tiles(const std::uint8_t* now, const std::uint8_t* last, std::ptrdiff_t stride);

/// Sum over a tile of the absolute differences to the right and lower neighbors, halved.
unsigned texture_of_tile(const std::uint8_t* now, std::ptrdiff_t stride);

}  // namespace handset

#pragma once

// Colour edits on the planes of an NV12 picture, with vectors chosen for the CPU at run time.
// Nothing is allocated; any alignment is fine; safe from any thread as long as the planes are.
//
// Widths and heights are pixels of luma, strides are bytes and may be negative. A chroma row of an
// odd width ends with the pair of its last pixel, so "pairs" below reach up to width rounded up to
// even, and so far every stride must reach. Nothing beyond that is read or written.
//
// engine/kernels/reference.h has the same functions in plain C++: that is what they mean.

#include <cstddef>
#include <cstdint>

namespace kernels {

/// Bytes of a colour mask: a bit for each of 32 x 32 x 32 cells of luma, U and V.
inline constexpr std::size_t mask_size = 4096;

/// A color mask, and what of it can be told from a color without its luma.
struct color_mask {
  /// @param table  mask_size bytes, which have to stay as they are
  color_mask(const std::uint8_t* table);

  const std::uint8_t* cells;
  /// By U >> 4: bit V >> 5 is set where any of the cells that share these bits is kept.
  std::uint8_t hues[16] = {};
};

/// Sets `rows` rows of `width` bytes to `value`.
void fill_bytes(std::uint8_t* plane, std::ptrdiff_t stride, std::size_t width, std::size_t rows, std::uint8_t value);

/// Writes the pair (u, v) at x = 0, 2, 4, ... while x < width, in `rows` chroma rows.
void fill_pairs(std::uint8_t* chroma, std::ptrdiff_t stride, std::size_t width, std::size_t rows, std::uint8_t u,
                std::uint8_t v);

/// Greys (127, 127) the chroma pair of every 2x2 block whose colour cell is not in the mask; luma is only
/// read. With S the sum of the block's four lumas, the cell is bit (S >> 5) & 7 of byte
/// ((U & 0xF8) << 2) | (V >> 3) | ((S << 2) & 0xC00). An odd last luma row is left out.
void keep_color(const std::uint8_t* luma, std::ptrdiff_t luma_stride, std::uint8_t* chroma,
                std::ptrdiff_t chroma_stride, std::size_t width, std::size_t height, const color_mask& mask);

}  // namespace kernels

#pragma once

// The kernels in plain C++, one pixel after the other: the meaning of the vector versions, which the
// tests compare with these byte by byte. Shapes and units as in color_kernels.h.

#include <cstddef>
#include <cstdint>

namespace kernels::reference {

void fill_bytes(std::uint8_t* plane, std::ptrdiff_t stride, std::size_t width, std::size_t rows, std::uint8_t value);

void fill_pairs(std::uint8_t* chroma, std::ptrdiff_t stride, std::size_t width, std::size_t rows, std::uint8_t u,
                std::uint8_t v);

void keep_color(const std::uint8_t* luma, std::ptrdiff_t luma_stride, std::uint8_t* chroma,
                std::ptrdiff_t chroma_stride, std::size_t width, std::size_t height, const std::uint8_t* mask);

/// An overlay's block-aligned part to blend, and the picture under it. Every pointer is at the part's
/// first sample; chroma is rows of (u, v) pairs, one per 2x2 block; opacity 255 is opaque.
struct blend_planes {
  const std::uint8_t* luma;          ///< of the overlay
  const std::uint8_t* chroma;        ///< of the overlay
  const std::uint8_t* alpha;         ///< opacity of each pixel
  const std::uint8_t* chroma_alpha;  ///< opacity of each block
  std::ptrdiff_t stride;             ///< rows of overlay luma, chroma and alpha; those of chroma_alpha are half as long
  const std::uint8_t* background_chroma;
  std::uint8_t* frame_luma;  ///< background and target
  std::uint8_t* frame_chroma;
  std::ptrdiff_t frame_stride;
  std::ptrdiff_t frame_chroma_stride;  ///< of background_chroma, too
};

/// Blends columns x rows pixels, both even. An opaque block is copied. Elsewhere every sample becomes
/// ((255 - a) * background + a * overlay) >> 8, luma with its pixel's opacity, chroma with the block's:
/// dividing by 256 takes a step off what opacity 0 leaves in place.
void blend(const blend_planes& planes, std::size_t columns, std::size_t rows);

}  // namespace kernels::reference

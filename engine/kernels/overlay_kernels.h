#pragma once

// Overlays on the planes of an NV12 picture: converting an image into an overlay's planes, and blending
// them, with vectors chosen for the CPU at run time. Nothing is allocated; any alignment is fine; safe from
// any thread as long as the planes are. Widths and heights are pixels and even; strides are bytes.
//
// engine/kernels/reference.h has the same functions in plain C++: that is what they mean.

#include <cstddef>
#include <cstdint>

namespace kernels {

/// An overlay's block-aligned part to blend, and the picture under it. Every pointer is at the part's
/// first sample; chroma is rows of (u, v) pairs, one per 2x2 block; opacity 255 is opaque.
struct blend_planes {
  const std::uint8_t* luma;          ///< of the overlay
  const std::uint8_t* chroma;        ///< of the overlay
  const std::uint8_t* alpha;         ///< opacity of each pixel
  const std::uint8_t* chroma_alpha;  ///< opacity of each block
  std::ptrdiff_t stride;             ///< rows of overlay luma, chroma and alpha; those of chroma_alpha are half as long
  const std::uint8_t* background_chroma;  ///< may be frame_chroma
  std::uint8_t* frame_luma;               ///< background and target
  std::uint8_t* frame_chroma;
  std::ptrdiff_t frame_stride;
  std::ptrdiff_t frame_chroma_stride;  ///< of background_chroma, too
};

/// Blends columns x rows pixels. A block whose opacity is 255 is copied, whatever its pixels' opacities are.
/// Elsewhere every sample becomes ((255 - a) * background + a * overlay) >> 8, luma with its pixel's opacity,
/// chroma with the block's: dividing by 256 takes a step off what opacity 0 leaves in place.
void blend(const blend_planes& planes, std::size_t columns, std::size_t rows);

/// Planes that an image is converted into, without padding: rows of luma, chroma and alpha are as long as the
/// image is wide, those of chroma_alpha half as long.
struct converted_planes {
  std::uint8_t* luma;
  std::uint8_t* chroma;
  std::uint8_t* alpha;
  std::uint8_t* chroma_alpha;
};

/// Converts columns x rows pixels of blue, green, red, alpha bytes. U, V and opacity of a block are the means
/// of its four pixels, rounded down.
void convert_bgra(const std::uint8_t* pixels, std::ptrdiff_t stride, std::size_t columns, std::size_t rows,
                  const converted_planes& planes);

}  // namespace kernels

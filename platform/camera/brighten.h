#pragma once

#include <cstddef>
#include <cstdint>

namespace handset {

/// An NV12 picture to brighten in place. Strides in bytes, either sign.
struct BrightenPlanes {
  std::uint8_t* luma;
  std::ptrdiff_t luma_stride;
  std::uint8_t* chroma;
  std::ptrdiff_t chroma_stride;
  std::size_t width;   ///< even
  std::size_t height;  ///< even
};

/// Doubles the light evenly: a full-range picture as if the exposure had been doubled.
///
/// Where the transfer is a power law, V' = V^(1/gamma), a gain g in linear light is the factor g^(1/gamma) on the
/// encoded R'G'B', and since Y'CbCr is a linear function of them, on Y' and on both color differences from 128 alike.
/// The factor is 350/256; with the gamma of 2.2 at which pictures are shown that is a gain of 1.99. Hue and saturation
/// stay.
///
/// Highlights are rolled off instead of cut: above a luma of 161 the factor falls to 1 at white, as (511 - Y') / 256,
/// which makes the luma a parabola that reaches 255 with no slope. So no two grays in order change it. A color
/// difference takes the factor of its block's mean luma.
///
///   f(Y') = min(350, 511 - Y')
///   luma:    (Y' f(Y') + 128) >> 8
///   chroma:  128 + (((C - 128) f((sum of the block's four + 2) >> 2) + 128) >> 8), clamped to a byte
void brighten(const BrightenPlanes& planes);

/// Scalar reference for brighten(), block by block.
void brighten_reference(const BrightenPlanes& planes);

}  // namespace handset

#include "engine/kernels/reference.h"

namespace kernels::reference {

void fill_bytes(std::uint8_t* plane, std::ptrdiff_t stride, std::size_t width, std::size_t rows, std::uint8_t value) {
  for (std::size_t row = 0; row < rows; ++row, plane += stride) {
    for (std::size_t x = 0; x < width; ++x) plane[x] = value;
  }
}

void fill_pairs(std::uint8_t* chroma, std::ptrdiff_t stride, std::size_t width, std::size_t rows, std::uint8_t u,
                std::uint8_t v) {
  for (std::size_t row = 0; row < rows; ++row, chroma += stride) {
    for (std::size_t x = 0; x < width; x += 2) {
      chroma[x] = u;
      chroma[x + 1] = v;
    }
  }
}

void keep_color(const std::uint8_t* luma, std::ptrdiff_t luma_stride, std::uint8_t* chroma,
                std::ptrdiff_t chroma_stride, std::size_t width, std::size_t height, const std::uint8_t* mask) {
  for (std::size_t row = 0; row < height / 2; ++row, luma += 2 * luma_stride, chroma += chroma_stride) {
    const std::uint8_t* below = luma + luma_stride;
    for (std::size_t x = 0; x < width; x += 2) {
      const unsigned sum = luma[x] + luma[x + 1] + below[x] + below[x + 1];
      const unsigned index = ((chroma[x] & 0xF8u) << 2) | (chroma[x + 1] >> 3) | ((sum << 2) & 0xC00u);
      if (((mask[index] >> ((sum >> 5) & 7)) & 1) == 0) {
        chroma[x] = 127;
        chroma[x + 1] = 127;
      }
    }
  }
}

namespace {

std::uint8_t mix(unsigned background, unsigned overlay, unsigned alpha) {
  return static_cast<std::uint8_t>(((255 - alpha) * background + alpha * overlay) >> 8);
}

/// The block whose top left pixel is at column x of a row pair; all pointers are at that row pair.
void blend_block(const blend_planes& at, std::size_t x) {
  const unsigned block_alpha = at.chroma_alpha[x / 2];
  for (std::ptrdiff_t row = 0; row < 2; ++row) {
    for (std::size_t column = x; column < x + 2; ++column) {
      std::uint8_t& luma = at.frame_luma[row * at.frame_stride + static_cast<std::ptrdiff_t>(column)];
      const std::ptrdiff_t source = row * at.stride + static_cast<std::ptrdiff_t>(column);
      luma = block_alpha == 255 ? at.luma[source] : mix(luma, at.luma[source], at.alpha[source]);
    }
  }
  for (std::size_t i = x; i < x + 2; ++i) {
    at.frame_chroma[i] = block_alpha == 255 ? at.chroma[i] : mix(at.background_chroma[i], at.chroma[i], block_alpha);
  }
}

}  // namespace

void blend(const blend_planes& planes, std::size_t columns, std::size_t rows) {
  blend_planes at = planes;
  for (std::size_t row = 0; row < rows; row += 2) {
    for (std::size_t x = 0; x < columns; x += 2) blend_block(at, x);
    at.luma += 2 * at.stride;
    at.alpha += 2 * at.stride;
    at.chroma += at.stride;
    at.chroma_alpha += at.stride / 2;
    at.frame_luma += 2 * at.frame_stride;
    at.frame_chroma += at.frame_chroma_stride;
    at.background_chroma += at.frame_chroma_stride;
  }
}

}  // namespace kernels::reference

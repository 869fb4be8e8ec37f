#include "engine/kernels/reference.h"

#include <algorithm>

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
                std::ptrdiff_t chroma_stride, std::size_t width, std::size_t height, const color_mask& mask) {
  for (std::size_t row = 0; row < height / 2; ++row, luma += 2 * luma_stride, chroma += chroma_stride) {
    const std::uint8_t* below = luma + luma_stride;
    for (std::size_t x = 0; x < width; x += 2) {
      const unsigned sum = luma[x] + luma[x + 1] + below[x] + below[x + 1];
      const unsigned index = ((chroma[x] & 0xF8u) << 2) | (chroma[x + 1] >> 3) | ((sum << 2) & 0xC00u);
      if (((mask.cells[index] >> ((sum >> 5) & 7)) & 1) == 0) {
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

namespace {

std::uint8_t truncated_byte(double value) {
  return static_cast<std::uint8_t>(std::clamp(value, 0.0, 255.0));
}

/// The block whose top left pixel is at `pixels`; the planes are at their samples of it.
void convert_block(const std::uint8_t* pixels, std::ptrdiff_t stride, std::size_t columns, const converted_planes& to) {
  unsigned u = 0, v = 0, alpha = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    const std::size_t row = i / 2, column = i % 2;
    const std::uint8_t* bgra = pixels + static_cast<std::ptrdiff_t>(row) * stride + 4 * column;
    const yuv color = yuv_for_rgb(bgra[2], bgra[1], bgra[0]);
    to.luma[row * columns + column] = color.luma;
    to.alpha[row * columns + column] = bgra[3];
    u += color.u;
    v += color.v;
    alpha += bgra[3];
  }
  to.chroma[0] = static_cast<std::uint8_t>(u / 4);
  to.chroma[1] = static_cast<std::uint8_t>(v / 4);
  *to.chroma_alpha = static_cast<std::uint8_t>(alpha >> 2);
}

}  // namespace

yuv yuv_for_rgb(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
  return {truncated_byte(0.299 * red + 0.587 * green + 0.114 * blue),
          truncated_byte(-0.169 * red - 0.331 * green + 0.499 * blue + 128),
          truncated_byte(0.499 * red - 0.418 * green - 0.0813 * blue + 128)};
}

void convert_bgra(const std::uint8_t* pixels, std::ptrdiff_t stride, std::size_t columns, std::size_t rows,
                  const converted_planes& planes) {
  for (std::size_t row = 0; row < rows; row += 2, pixels += 2 * stride) {
    for (std::size_t x = 0; x < columns; x += 2) {
      const std::size_t at = row * columns + x, block = row / 2 * columns + x;
      const converted_planes to = {planes.luma + at, planes.chroma + block, planes.alpha + at,
                                   planes.chroma_alpha + block / 2};
      convert_block(pixels + 4 * x, stride, columns, to);
    }
  }
}

}  // namespace kernels::reference

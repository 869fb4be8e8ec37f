#pragma once

// The kernels in plain C++, one pixel after the other: the meaning of the vector versions, which the
// tests compare with these byte by byte. Shapes and units as in color_kernels.h and overlay_kernels.h.

#include <cstddef>
#include <cstdint>

#include "engine/kernels/color_kernels.h"
#include "engine/kernels/overlay_kernels.h"

namespace kernels::reference {

void fill_bytes(std::uint8_t* plane, std::ptrdiff_t stride, std::size_t width, std::size_t rows, std::uint8_t value);

void fill_pairs(std::uint8_t* chroma, std::ptrdiff_t stride, std::size_t width, std::size_t rows, std::uint8_t u,
                std::uint8_t v);

void keep_color(const std::uint8_t* luma, std::ptrdiff_t luma_stride, std::uint8_t* chroma,
                std::ptrdiff_t chroma_stride, std::size_t width, std::size_t height, const color_mask& mask);

void blend(const blend_planes& planes, std::size_t columns, std::size_t rows);

struct yuv {
  std::uint8_t luma, u, v;
};

/// Full-range BT.601 of one colour, in this order of double operations, truncated to bytes.
yuv yuv_for_rgb(std::uint8_t red, std::uint8_t green, std::uint8_t blue);

void convert_bgra(const std::uint8_t* pixels, std::ptrdiff_t stride, std::size_t columns, std::size_t rows,
                  const converted_planes& planes);

}  // namespace kernels::reference

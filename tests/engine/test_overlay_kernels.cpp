#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "engine/color_filter.h"
#include "engine/kernels/overlay_kernels.h"
#include "engine/kernels/reference.h"
#include "tests/engine/every_target.h"
#include "tests/engine/overlay_planes.h"
#include "tests/engine/test_frame.h"

namespace {

using bytes = std::vector<std::uint8_t>;

/// Sweeps over all values of a byte take long where every access is watched, and a part of them shows as much.
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr int byte_step = 17;
#else
constexpr int byte_step = 1;
#endif

void fill_random(bytes& target, std::uint32_t seed) {
  std::minstd_rand random(seed);
  for (auto& byte : target) byte = static_cast<std::uint8_t>(random() >> 8);
}

/// A part of an overlay over a frame of its size; the overlay's columns begin at `first`.
kernels::blend_planes part_over(const logo_image_s& logo, std::ptrdiff_t first, const camera_buffer_t& frame) {
  return {.luma = logo.luma + first,
          .chroma = logo.chroma + first,
          .alpha = logo.alpha + first,
          .chroma_alpha = logo.chroma_alpha + first / 2,
          .stride = logo.width,
          .background_chroma = frame.data + frame.nv12.uv_offset,
          .frame_luma = frame.data,
          .frame_chroma = frame.data + frame.nv12.uv_offset,
          .frame_stride = frame.nv12.stride,
          .frame_chroma_stride = static_cast<std::ptrdiff_t>(frame.nv12.uv_stride)};
}

std::vector<std::uint32_t> even_widths() {
  std::vector<std::uint32_t> all = {854, 1022, 1024, 1026, 1920, 4096};
  for (std::uint32_t width = 2; width <= 200; width += 2) all.push_back(width);
  return all;
}

TEST(OverlayKernels, BlendEqualsTheReference) {
  on_every_target([] {
    for (const std::uint32_t width : even_widths()) {
      for (const std::uint32_t padding : {0u, 1u, 6u, 64u}) {
        for (const std::int32_t first : {0, 2, 6}) {
          const std::uint32_t height = 2 + (width + padding) % 3 * 2;
          const auto logo_width = static_cast<std::int32_t>((width + 3) / 4 * 4) + 8;
          const overlay_planes logo(logo_width, static_cast<std::int32_t>(height), width + padding);
          test_frame vectors(width, height, padding, width), reference = vectors;
          kernels::blend(part_over(logo.record, first, vectors.descriptor()), width, height);
          kernels::reference::blend(part_over(logo.record, first, reference.descriptor()), width, height);
          ASSERT_TRUE(same_picture(vectors, reference)) << "padding " << padding << " first " << first;
        }
      }
    }
  });
}

TEST(OverlayKernels, BlendEqualsTheReferenceForEveryBackgroundOverlayAndOpacity) {
  // Columns are backgrounds, row pairs overlay values; one picture for each opacity.
  const overlay_planes logo(512, 512, 1);
  for (std::int32_t row = 0; row < 512; ++row) std::memset(logo.record.luma + row * 512, row / 2, 512);
  for (std::int32_t row = 0; row < 256; ++row) std::memset(logo.record.chroma + row * 512, row, 512);
  test_frame background(512, 512, 0, 1);
  for (std::size_t x = 0; x < 512; ++x) {
    for (std::size_t row = 0; row < 512; ++row) background.luma(x, row) = static_cast<std::uint8_t>(x / 2);
    for (std::size_t row = 0; row < 256; ++row) background.chroma(x, row) = static_cast<std::uint8_t>(x / 2);
  }
  for (int alpha = 0; alpha < 256; alpha += byte_step) {
    std::memset(logo.record.alpha, alpha, 512 * 512);
    // The luma of a block that is not opaque takes the pixels' arithmetic, at 255 too.
    std::memset(logo.record.chroma_alpha, std::min(alpha, 254), 256 * 256);
    test_frame vectors = background, reference = background;
    kernels::blend(part_over(logo.record, 0, vectors.descriptor()), 512, 512);
    kernels::reference::blend(part_over(logo.record, 0, reference.descriptor()), 512, 512);
    ASSERT_TRUE(same_picture(vectors, reference)) << alpha;
  }
}

TEST(OverlayKernels, BlendCopiesByTheBlocksOpacityAlone) {
  on_every_target([] {
    overlay_planes logo(256, 2, 1);
    std::memset(logo.record.alpha, 7, 512);
    for (const bool whole_row : {false, true}) {
      for (std::int32_t i = 0; i < 128; ++i) logo.record.chroma_alpha[i] = whole_row || i % 3 == 0 ? 255 : 254;
      test_frame frame(256, 2, 0, 4), before = frame;
      kernels::blend(part_over(logo.record, 0, frame.descriptor()), 256, 2);
      for (std::size_t x = 0; x < 256; ++x) {
        if (logo.record.chroma_alpha[x / 2] != 255) continue;
        ASSERT_EQ(frame.luma(x, 0), logo.record.luma[x]);
        ASSERT_EQ(frame.luma(x, 1), logo.record.luma[256 + x]);
        ASSERT_EQ(frame.chroma(x, 0), logo.record.chroma[x]);
      }
      EXPECT_EQ(whole_row, frame.luma(2, 0) == logo.record.luma[2] && frame.luma(4, 0) == logo.record.luma[4]);
    }
  });
}

TEST(OverlayKernels, BlendReadsChromaOfAnotherPicture) {
  const overlay_planes logo(132, 6, 3);
  test_frame input(132, 6, 2, 7), vectors(132, 6, 2, 8), reference = vectors;
  const test_frame input_before = input;
  for (test_frame* output : {&vectors, &reference}) {
    kernels::blend_planes planes = part_over(logo.record, 0, output->descriptor());
    planes.background_chroma = &input.chroma(0, 0);
    (output == &vectors ? kernels::blend : kernels::reference::blend)(planes, 132, 6);
  }
  EXPECT_TRUE(same_picture(vectors, reference));
  EXPECT_TRUE(same_picture(input, input_before));
}

/// Planes of a conversion, with guard bytes after each.
struct converted {
  converted(std::size_t columns, std::size_t rows)
      : luma(columns * rows + 64),
        chroma(columns * rows / 2 + 64),
        alpha(luma),
        chroma_alpha(columns * rows / 4 + 64) {}
  kernels::converted_planes planes() { return {luma.data(), chroma.data(), alpha.data(), chroma_alpha.data()}; }
  bool operator==(const converted&) const = default;
  bytes luma, chroma, alpha, chroma_alpha;
};

TEST(OverlayKernels, ConvertEqualsTheReference) {
  on_every_target([] {
    for (const std::uint32_t width : even_widths()) {
      const std::size_t rows = 2 + width % 3 * 2, stride = 4 * (width + 3);
      bytes pixels(stride * rows);
      fill_random(pixels, width);
      converted vectors(width, rows), reference = vectors;
      kernels::convert_bgra(pixels.data(), static_cast<std::ptrdiff_t>(stride), width, rows, vectors.planes());
      kernels::reference::convert_bgra(pixels.data(), static_cast<std::ptrdiff_t>(stride), width, rows,
                                       reference.planes());
      ASSERT_TRUE(vectors == reference) << width;
    }
  });
}

/// 256 x 256 blocks of one colour each: all colours with this red.
bytes colors_with_red(int red) {
  bytes pixels(512 * 512 * 4);
  for (std::size_t i = 0; i < 512 * 512; ++i) {
    pixels[4 * i] = static_cast<std::uint8_t>(i % 512 / 2);
    pixels[4 * i + 1] = static_cast<std::uint8_t>(i / 1024);
    pixels[4 * i + 2] = static_cast<std::uint8_t>(red);
    pixels[4 * i + 3] = 255;
  }
  return pixels;
}

TEST(OverlayKernels, ConvertIsExactForEveryColor) {
  for (int red = 0; red < 256; red += byte_step) {
    const bytes pixels = colors_with_red(red);
    bytes luma, chroma;
    for (std::size_t block = 0; block < 256 * 256; ++block) {
      std::uint8_t y = 0, u = 0, v = 0;
      logo_get_yuv_for_rgb(static_cast<std::uint8_t>(red), static_cast<std::uint8_t>(block / 256),
                           static_cast<std::uint8_t>(block % 256), &y, &u, &v);
      luma.insert(luma.end(), {y, y});
      chroma.insert(chroma.end(), {u, v});
    }
    on_every_target([&] {
      converted actual(512, 512);
      kernels::convert_bgra(pixels.data(), 512 * 4, 512, 512, actual.planes());
      for (std::size_t row = 0; row < 512; ++row) {
        ASSERT_EQ(std::memcmp(&actual.luma[row * 512], &luma[row / 2 * 512], 512), 0) << "red " << red;
      }
      ASSERT_EQ(std::memcmp(actual.chroma.data(), chroma.data(), chroma.size()), 0) << "red " << red;
    });
    if (HasFatalFailure()) return;
  }
}

TEST(OverlayKernels, BlocksTakeMeansRoundedDown) {
  // Four greys have U 127 or 128 each; the opacities' sum 3 and 1023 are not multiples of 4.
  const bytes pixels = {0,   0,   0,   0, 255, 255, 255, 1, 10, 200, 30, 255, 10, 200, 30, 255,
                        100, 100, 100, 1, 0,   0,   255, 1, 10, 200, 30, 255, 10, 200, 30, 254};
  converted planes(4, 2);
  kernels::convert_bgra(pixels.data(), 16, 4, 2, planes.planes());
  int u = 0, v = 0;
  for (const std::size_t i : {0, 1, 4, 5}) {
    std::uint8_t y8 = 0, u8 = 0, v8 = 0;
    logo_get_yuv_for_rgb(pixels[4 * i + 2], pixels[4 * i + 1], pixels[4 * i], &y8, &u8, &v8);
    EXPECT_EQ(planes.luma[i], y8);
    EXPECT_EQ(planes.alpha[i], pixels[4 * i + 3]);
    u += u8;
    v += v8;
  }
  EXPECT_EQ(planes.chroma[0], u / 4);
  EXPECT_EQ(planes.chroma[1], v / 4);
  EXPECT_EQ(planes.chroma_alpha[0], 0);
  EXPECT_EQ(planes.chroma_alpha[1], 254) << "one pixel short of opaque keeps the block from being copied";
}

}  // namespace

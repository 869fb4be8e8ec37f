#include <gtest/gtest.h>

#include <random>
#include <set>

#include "engine/kernels/color_kernels.h"
#include "engine/kernels/reference.h"
#include "tests/engine/every_target.h"
#include "tests/engine/test_frame.h"

namespace {

/// Every small width, odd ones included, then sizes around vectors, rounds and real pictures.
std::vector<std::uint32_t> widths() {
  std::vector<std::uint32_t> all = {1, 854, 1023, 1024, 1026, 1088, 1920, 2050, 4094, 4095, 4096, 5002};
  for (std::uint32_t width = 2; width <= 130; ++width) all.push_back(width);
  return all;
}

/// Calls `edit(vector version?, frame)` on two equal frames of every shape and expects equal pictures.
template <typename Edit>
void sweep(Edit edit) {
  on_every_target([&] {
    for (const std::uint32_t width : widths()) {
      for (const std::uint32_t padding : {0u, 1u, 6u, 64u}) {
        const std::uint32_t height = 2 + (width + padding) % 4;
        test_frame vectors(width, height, padding, width + padding), reference = vectors;
        edit(true, vectors);
        edit(false, reference);
        ASSERT_TRUE(same_picture(vectors, reference)) << "padding " << padding;
      }
    }
  });
}

std::vector<std::uint8_t> random_mask() {
  std::vector<std::uint8_t> mask(kernels::mask_size);
  std::minstd_rand random(77);
  for (auto& byte : mask) byte = static_cast<std::uint8_t>(random() >> 8);
  return mask;
}

TEST(Kernels, FillPairsEqualsTheReference) {
  sweep([](bool vectors, test_frame& frame) {
    const camera_buffer_t b = frame.descriptor();
    (vectors ? kernels::fill_pairs : kernels::reference::fill_pairs)(b.data + b.nv12.uv_offset, b.nv12.uv_stride,
                                                                     b.nv12.width, b.nv12.height / 2, 3, 250);
  });
}

TEST(Kernels, FillBytesEqualsTheReference) {
  sweep([](bool vectors, test_frame& frame) {
    const camera_buffer_t b = frame.descriptor();
    (vectors ? kernels::fill_bytes : kernels::reference::fill_bytes)(b.data, b.nv12.stride, b.nv12.width, b.nv12.height,
                                                                     110);
  });
}

TEST(Kernels, KeepColorEqualsTheReference) {
  const std::vector<std::uint8_t> mask = random_mask();
  sweep([&](bool vectors, test_frame& frame) {
    const camera_buffer_t b = frame.descriptor();
    (vectors ? kernels::keep_color : kernels::reference::keep_color)(
        b.data, b.nv12.stride, b.data + b.nv12.uv_offset, b.nv12.uv_stride, b.nv12.width, b.nv12.height, mask.data());
  });
}

TEST(Kernels, KeepColorReadsEveryBitOfTheMask) {
  // Each block is a cell of its own, and the mask keeps exactly one cell.
  on_every_target([] {
    for (const unsigned cell : {0u, 1u, 31u, 32u * 31u, 1023u, 1024u, 4095u, 2700u}) {
      for (const unsigned bit : {0u, 3u, 7u}) {
        std::vector<std::uint8_t> mask(kernels::mask_size);
        mask[cell] = static_cast<std::uint8_t>(1u << bit);
        test_frame frame(64, 2 * 1024, 0, 1);
        for (std::size_t row = 0; row < 1024; ++row) {
          for (std::size_t block = 0; block < 32; ++block) {
            for (std::size_t i = 0; i < 4; ++i) {
              frame.luma(2 * block + i % 2, 2 * row + i / 2) = static_cast<std::uint8_t>(8 * (row / 32));
            }
            frame.chroma(2 * block, row) = static_cast<std::uint8_t>(8 * (row % 32));
            frame.chroma(2 * block + 1, row) = static_cast<std::uint8_t>(8 * block);
          }
        }
        const camera_buffer_t b = frame.descriptor();
        kernels::keep_color(b.data, b.nv12.stride, b.data + b.nv12.uv_offset, b.nv12.uv_stride, 64, 2048, mask.data());
        std::set<std::pair<std::size_t, std::size_t>> kept;
        for (std::size_t row = 0; row < 1024; ++row) {
          for (std::size_t block = 0; block < 32; ++block) {
            // Grey is 127, and no cell's lowest corner is.
            if (frame.chroma(2 * block, row) != 127) kept.emplace(row, block);
          }
        }
        const std::size_t luma_level = cell / 1024 * 8 + bit, u_level = cell / 32 % 32, v_level = cell % 32;
        EXPECT_EQ(kept, (std::set<std::pair<std::size_t, std::size_t>>{{luma_level * 32 + u_level, v_level}}));
      }
    }
  });
}

TEST(Kernels, KeepColorTakesBottomUpPictures) {
  const std::vector<std::uint8_t> mask = random_mask();
  test_frame vectors(200, 12, 6, 5), reference = vectors;
  const auto bottom_up = [&](auto keep, test_frame& frame) {
    const camera_buffer_t b = frame.descriptor();
    keep(b.data + 11 * b.nv12.stride, -std::ptrdiff_t{b.nv12.stride}, b.data + b.nv12.uv_offset + 5 * b.nv12.uv_stride,
         -b.nv12.uv_stride, b.nv12.width, b.nv12.height, mask.data());
  };
  bottom_up(kernels::keep_color, vectors);
  bottom_up(kernels::reference::keep_color, reference);
  EXPECT_TRUE(same_picture(vectors, reference));
}

}  // namespace

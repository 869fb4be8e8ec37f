#include "engine/overlay.h"

#include <gtest/gtest.h>

#include "tests/engine/overlay_planes.h"
#include "tests/engine/test_frame.h"

namespace {

/// The blend written pixel by pixel from the frame's side: what lies over a pixel, and what comes of it.
void expect_blend(test_frame& frame, const logo_image_s& logo) {
  const auto mix = [](int below, int above, int alpha) {
    return static_cast<std::uint8_t>(((255 - alpha) * below + alpha * above) / 256);
  };
  for (std::int32_t row = 0; row < static_cast<std::int32_t>(frame.height()); ++row) {
    for (std::int32_t x = 0; x < static_cast<std::int32_t>(frame.width()); ++x) {
      const std::int32_t column = x - logo.x, line = row - logo.y;
      if (column < 0 || line < 0 || column >= logo.width || line >= logo.height) continue;
      const int block = logo.chroma_alpha[line / 2 * (logo.width / 2) + column / 2];
      const std::int32_t at = line * logo.width + column;
      auto& luma = frame.luma(x, row);
      luma = block == 255 ? logo.luma[at] : mix(luma, logo.luma[at], logo.alpha[at]);
      if (row % 2 != 0) continue;
      auto& chroma = frame.chroma(x, row / 2);
      const std::uint8_t above = logo.chroma[line / 2 * logo.width + column];
      chroma = block == 255 ? above : mix(chroma, above, block);
    }
  }
}

TEST(Overlay, BlendsInsideAndAcrossEveryEdge) {
  for (const std::int32_t size : {4, 16, 60, 100}) {
    for (const std::int32_t x : {-120, -58, -2, 0, 2, 20, 44, 62, 64, 1000}) {
      for (const std::int32_t y : {-100, -30, 0, 6, 38, 46, 48, 5000}) {
        overlay_planes planes(size, size / 4 * 4, static_cast<std::uint32_t>(size + x + y));
        planes.record.x = x;
        planes.record.y = y;
        test_frame actual(64, 48, 6, 9), expected = actual;
        const camera_buffer_t buffer = actual.descriptor();
        logo_filter(planes.record, &buffer, &buffer);
        expect_blend(expected, planes.record);
        ASSERT_TRUE(same_picture(actual, expected)) << size << " at " << x << ',' << y;
      }
    }
  }
}

TEST(Overlay, TransparentRegionDarkensByOneStep) {
  overlay_planes planes(8, 8, 1);
  planes.fill_alpha(0);
  test_frame frame(8, 8, 0, 3), before = frame;
  const camera_buffer_t buffer = frame.descriptor();
  logo_filter(planes.record, &buffer, &buffer);
  for (std::size_t row = 0; row < 8; ++row) {
    for (std::size_t x = 0; x < 8; ++x) ASSERT_EQ(frame.luma(x, row), (255 * before.luma(x, row)) >> 8);
  }
}

TEST(Overlay, OddPositionsAndFramesKeepWholeBlocks) {
  overlay_planes planes(16, 16, 4);
  planes.record.x = -3;
  planes.record.y = 5;
  test_frame actual(9, 11, 2, 8), expected = actual, before = actual;
  const camera_buffer_t buffer = actual.descriptor();
  logo_filter(planes.record, &buffer, &buffer);
  planes.record.x = -4;
  planes.record.y = 4;
  expect_blend(expected, planes.record);
  for (std::size_t row = 0; row < 10; ++row) {
    for (std::size_t x = 0; x < 8; ++x) ASSERT_EQ(actual.luma(x, row), expected.luma(x, row)) << x << ',' << row;
  }
  for (std::size_t row = 0; row < 11; ++row) EXPECT_EQ(actual.luma(8, row), before.luma(8, row));
}

TEST(Overlay, ExtremeRecordsTouchNothing) {
  overlay_planes planes(8, 8, 1);
  test_frame frame(16, 16, 0, 3), before = frame;
  const camera_buffer_t buffer = frame.descriptor();
  for (const std::int32_t far : {INT32_MIN, INT32_MAX}) {
    planes.record.x = far;
    planes.record.y = 0;
    logo_filter(planes.record, &buffer, &buffer);
    planes.record.x = 0;
    planes.record.y = far;
    logo_filter(planes.record, &buffer, &buffer);
  }
  logo_filter(logo_image_s{}, &buffer, &buffer);
  EXPECT_TRUE(same_picture(frame, before));
}

TEST(Overlay, ReadsChromaFromTheInputAndAddressesByItsGeometry) {
  // Both pictures have the input's geometry; the output descriptor claims another one.
  overlay_planes planes(8, 8, 6);
  planes.fill_alpha(100);
  planes.record.x = planes.record.y = 2;
  test_frame input(12, 12, 4, 1), output(12, 12, 4, 2), expected = output;
  const test_frame input_before = input;
  const camera_buffer_t in = input.descriptor();
  camera_buffer_t out = output.descriptor();
  out.nv12 = {2, 2, 2, 4, 2};
  logo_filter(planes.record, &in, &out);
  for (std::size_t row = 0; row < 6; ++row) {
    for (std::size_t x = 0; x < 12; ++x) {
      if (row >= 1 && row < 5 && x >= 2 && x < 10) expected.chroma(x, row) = input.chroma(x, row);
    }
  }
  expect_blend(expected, planes.record);
  EXPECT_TRUE(same_picture(output, expected));
  EXPECT_TRUE(same_picture(input, input_before));
}

}  // namespace

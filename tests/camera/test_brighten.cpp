#include <gtest/gtest.h>

#include <cmath>

#include "platform/camera/brighten.h"
#include "tests/engine/every_target.h"
#include "tests/engine/test_frame.h"

namespace {

handset::BrightenPlanes planes_of(test_frame& frame) {
  const camera_buffer_t b = frame.descriptor();
  return {b.data,
          static_cast<std::ptrdiff_t>(b.nv12.stride),
          b.data + b.nv12.uv_offset,
          b.nv12.uv_stride,
          b.nv12.width,
          b.nv12.height};
}

TEST(Brighten, EqualsTheReference) {
  on_every_target([] {
    for (const std::uint32_t width : {2u, 14u, 16u, 18u, 30u, 62u, 64u, 66u, 126u, 130u, 854u, 1920u}) {
      for (const std::uint32_t padding : {0u, 6u, 64u}) {
        test_frame vectors(width, 2 + width % 8, padding, width + padding), reference = vectors;
        handset::brighten(planes_of(vectors));
        handset::brighten_reference(planes_of(reference));
        ASSERT_TRUE(same_picture(vectors, reference)) << "padding " << padding;
      }
    }
  });
}

TEST(Brighten, EqualsTheReferenceForEveryLumaWithEveryChroma) {
  on_every_target([] {
    test_frame vectors(512, 512, 0, 1);
    for (std::size_t row = 0; row < 512; ++row) {
      for (std::size_t x = 0; x < 512; ++x) vectors.luma(x, row) = static_cast<std::uint8_t>(row / 2);
      for (std::size_t x = 0; row < 256 && x < 512; ++x) vectors.chroma(x, row) = static_cast<std::uint8_t>(x / 2);
    }
    test_frame reference = vectors;
    handset::brighten(planes_of(vectors));
    handset::brighten_reference(planes_of(reference));
    ASSERT_TRUE(same_picture(vectors, reference));
  });
}

/// A gray ramp from black to white, brightened: element y is what luma y has become.
std::vector<int> brightened_ramp() {
  test_frame frame(512, 2, 0, 1);
  for (std::size_t x = 0; x < 512; ++x) {
    frame.luma(x, 0) = frame.luma(x, 1) = static_cast<std::uint8_t>(x / 2);
    frame.chroma(x, 0) = 128;
  }
  handset::brighten(planes_of(frame));
  std::vector<int> ramp;
  for (std::size_t x = 0; x < 512; ++x) {
    EXPECT_EQ(frame.luma(x, 0), frame.luma(x, 1));
    EXPECT_EQ(frame.chroma(x, 0), 128) << "a gray has taken on a color";
    if (x % 2 == 0) ramp.push_back(frame.luma(x, 0));
  }
  return ramp;
}

TEST(Brighten, GivesEveryGrayTheSameShareOfLight) {
  const std::vector<int> ramp = brightened_ramp();
  const auto light = [](double luma) { return std::pow(luma / 255, 2.2); };
  for (int luma = 1; luma <= 161; ++luma) {
    const double wanted = 1.99 * light(luma);
    const int out = ramp[static_cast<std::size_t>(luma)];
    EXPECT_LE(light(out - 0.6), wanted) << luma;
    EXPECT_GE(light(out + 0.6), wanted) << luma;
  }
}

TEST(Brighten, RollsHighlightsOff) {
  const std::vector<int> ramp = brightened_ramp();
  EXPECT_EQ(ramp[0], 0);
  EXPECT_EQ(ramp[255], 255);
  for (std::size_t luma = 1; luma < 256; ++luma) {
    EXPECT_GE(ramp[luma], ramp[luma - 1]) << luma;
    if (luma < 240) {
      EXPECT_LT(ramp[luma], 255) << luma << ": cut";
    }
  }
}

TEST(Brighten, KeepsHueAndSaturation) {
  // The color differences grow as the luma does, in shadows and in highlights alike.
  for (const int luma : {40, 90, 150, 200, 240}) {
    test_frame frame(2, 2, 0, 1);
    for (std::size_t i = 0; i < 4; ++i) frame.luma(i % 2, i / 2) = static_cast<std::uint8_t>(luma);
    frame.chroma(0, 0) = 128 - 60;
    frame.chroma(1, 0) = 128 + 40;
    handset::brighten(planes_of(frame));
    const double factor = 1.0 * frame.luma(0, 0) / luma;
    EXPECT_NEAR(frame.chroma(0, 0), 128 - 60 * factor, 1.6) << luma;
    EXPECT_NEAR(frame.chroma(1, 0), 128 + 40 * factor, 1.6) << luma;
  }
}

}  // namespace

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "platform/cascades/plane_scaler.h"
#include "tests/engine/every_target.h"

using handset::PlaneScaler;
using handset::SamplePlane;

namespace {

constexpr std::uint8_t guard = 0xA5;

/// Scales a plane of noise both ways and compares, what stands around the result included.
void expect_like_plain(int bytes, int width, int height, int to_width, int to_height, std::mt19937& noise) {
  const int stride = width * bytes + 5;
  std::vector<std::uint8_t> source(static_cast<std::size_t>(stride) * height);
  for (std::uint8_t& sample : source) sample = static_cast<std::uint8_t>(noise());
  const SamplePlane plane{source.data(), stride, width, height};
  const int room = (to_width * bytes + 7) / 8 * 8;
  const int to_stride = room + 8;
  std::vector<std::uint8_t> plain(static_cast<std::size_t>(to_stride) * to_height, guard);
  std::vector<std::uint8_t> fast = plain;
  handset::scale_plane_plainly(plane, bytes, plain.data(), to_stride, to_width, to_height);
  PlaneScaler(bytes).scale(plane, fast.data(), to_stride, to_width, to_height);
  for (int y = 0; y < to_height; ++y) {
    for (int x = 0; x < to_stride; ++x) {
      if (x >= to_width * bytes && x < room) continue;  // what the last group writes beyond the row
      const std::size_t at = static_cast<std::size_t>(y) * to_stride + x;
      ASSERT_EQ(fast[at], plain[at]) << bytes << ": " << width << "x" << height << " to " << to_width << "x"
                                     << to_height << " at " << x << ", " << y;
    }
  }
}

TEST(PlaneScaler, IsLikeThePlainOneAtEveryWidth) {
  on_every_target([] {
    std::mt19937 noise(7);
    for (const int bytes : {1, 2}) {
      for (int width = 2; width <= 70; ++width) {
        for (const int to : {(width + 1) / 2, width / 2 + 1, width - 1, width, width + 1, 2 * width, 3 * width + 1}) {
          expect_like_plain(bytes, width, 5, to, 4, noise);
        }
      }
      expect_like_plain(bytes, 1920, 11, 960, 6, noise);
      expect_like_plain(bytes, 1920, 3, 1280, 7, noise);
      expect_like_plain(bytes, 1, 1, 9, 3, noise);
    }
  });
}

TEST(PlaneScaler, KeepsEvenAreasAndMeetsTheCentres) {
  const std::vector<std::uint8_t> white(64 * 64, 255);
  std::vector<std::uint8_t> out(48 * 40);
  PlaneScaler(1).scale({white.data(), 64, 64, 64}, out.data(), 48, 48, 40);
  EXPECT_EQ(out, std::vector<std::uint8_t>(48 * 40, 255));
  // A ramp stays the ramp: sample x of 96 lies at (x + 0.5) / 1.5 - 0.5 of 64.
  std::vector<std::uint8_t> ramp(64);
  for (int x = 0; x < 64; ++x) ramp[x] = static_cast<std::uint8_t>(3 * x);
  std::vector<std::uint8_t> scaled(96);
  PlaneScaler(1).scale({ramp.data(), 64, 64, 1}, scaled.data(), 96, 96, 1);
  for (int x = 1; x < 95; ++x) EXPECT_NEAR(scaled[x], 3 * ((x + 0.5) / 1.5 - 0.5), 1) << x;
}

}  // namespace

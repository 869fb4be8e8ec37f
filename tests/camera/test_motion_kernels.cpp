#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <vector>

#include "platform/camera/motion_kernels.h"
#include "tests/engine/every_target.h"

namespace {

/// Random samples, with a stretch of the largest and a stretch of the largest steps.
std::vector<std::uint8_t> samples(std::size_t count) {
  std::minstd_rand random(3);
  std::vector<std::uint8_t> list(count);
  for (std::uint8_t& sample : list) sample = static_cast<std::uint8_t>(random());
  std::fill_n(list.begin(), count / 10, std::uint8_t{255});
  for (std::size_t i = count / 2; i < count / 2 + count / 10; ++i) list[i] = i / 2 % 2 == 0 ? 0 : 255;
  return list;
}

TEST(MotionKernels, HalveAsTheReferenceDoes) {
  const std::vector<std::uint8_t> from = samples(300 * 40 + 5);
  on_every_target([&] {
    for (const int width : {1, 2, 31, 64, 127, 130, 258, 299}) {
      std::vector<std::uint8_t> expected(150 * 20, 7), got = expected;
      handset::halve_plane_reference(from.data() + 5, 300, width, 39, expected.data(), 150);
      handset::halve_plane(from.data() + 5, 300, width, 39, got.data(), 150);
      EXPECT_EQ(got, expected) << width;
    }
  });
}

TEST(MotionKernels, SoftenEdgesAndMiddle) {
  const std::vector<std::uint8_t> from = samples(700 * 9);
  on_every_target([&] {
    for (const int width : {1, 2, 33, 640}) {
      std::vector<std::uint8_t> got(640 * 9, 7);
      handset::soften_plane(from.data(), 700, width, 9, got.data(), 640);
      const auto at = [&](int x, int y) {
        return from[static_cast<std::size_t>(std::clamp(y, 0, 8) * 700 + std::clamp(x, 0, width - 1))];
      };
      for (int i = 0; i < 640 * 9; ++i) {
        const int x = i % 640, y = i / 640;
        int sum = 8;
        for (int k = 0; k < 9; ++k)
          sum += (2 - std::abs(k % 3 - 1)) * (2 - std::abs(k / 3 - 1)) * at(x + k % 3 - 1, y + k / 3 - 1);
        ASSERT_EQ(got[static_cast<std::size_t>(i)], x < width ? sum / 16 : 7) << x << "," << y << " of " << width;
      }
    }
  });
}

TEST(MotionKernels, SumSlopesWithoutOverflow) {
  constexpr int stride = 120;
  std::vector<std::uint8_t> from = samples(stride * 60);
  on_every_target([&] {
    for (const int columns : {4, 17, 80, handset::slope_columns}) {
      for (const bool alike : {true, false}) {
        const std::uint8_t* now = from.data() + 26 * stride + 3;
        const std::uint8_t* last = alike ? now : from.data() + 3 * stride + 5;
        const auto sums = handset::sum_slopes(now, last, stride, columns, 20);
        std::int64_t xx = 0, yt = 0, tt = 0, y = 0;
        for (int row = 0; row < 20; ++row) {
          for (int i = 0; i < columns; ++i) {
            const auto slope = [&](int way) {
              const std::uint8_t *a = now + row * stride + i, *b = last + row * stride + i;
              return 8 * (a[way] - a[-way] + b[way] - b[-way]) - (a[2 * way] - a[-2 * way] + b[2 * way] - b[-2 * way]);
            };
            const int step = now[row * stride + i] - last[row * stride + i];
            xx += slope(1) * slope(1), yt += slope(stride) * step, tt += step * step, y += slope(stride);
          }
        }
        EXPECT_EQ(sums.xx, xx) << columns;
        EXPECT_EQ(sums.yt, yt) << columns;
        EXPECT_EQ(sums.tt, tt) << columns;
        EXPECT_EQ(sums.y, y) << columns;
        EXPECT_EQ(sums.count, 20 * columns);
      }
    }
  });
}

}  // namespace

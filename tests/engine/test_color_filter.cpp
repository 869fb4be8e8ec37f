#include "engine/color_filter.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <limits>

#include "engine/filter_thread.h"

namespace {

class ColorFilter : public testing::Test {
 protected:
  void SetUp() override {
    _u = _v = _y = 128;
    _busy = false;
    _color_filter_value = 0.5f;
    _cur_camera_filter = -1;
    std::memset(filter_bitmask, 0, sizeof filter_bitmask);
  }
};

using mask_copy = std::array<std::uint8_t, filter_bitmask_size>;

mask_copy mask() {
  mask_copy copy;
  std::memcpy(copy.data(), filter_bitmask, copy.size());
  return copy;
}

mask_copy built(double threshold, FilterColorMatch which) {
  const mask_copy before = mask();
  filter_init(threshold, which);
  const mask_copy after = mask();
  std::memcpy(filter_bitmask, before.data(), before.size());
  return after;
}

bool mask_has(std::uint8_t luma, std::uint8_t u, std::uint8_t v) {
  const int level = luma >> 3;
  return (filter_bitmask[(level >> 3) * 1024 + (u >> 3) * 32 + (v >> 3)] >> (level & 7)) & 1;
}

bool mask_has_rgb(int red, int green, int blue) {
  std::uint8_t luma = 0, u = 0, v = 0;
  logo_get_yuv_for_rgb(static_cast<std::uint8_t>(red), static_cast<std::uint8_t>(green),
                       static_cast<std::uint8_t>(blue), &luma, &u, &v);
  return mask_has(luma, u, v);
}

TEST_F(ColorFilter, ConvertsRgbToYuvByTruncation) {
  const struct {
    std::uint8_t red, green, blue, luma, u, v;
  } samples[] = {{0, 0, 0, 0, 128, 128},    {255, 0, 0, 76, 84, 255},   {0, 255, 0, 149, 43, 21},
                 {0, 0, 255, 29, 255, 107}, {255, 255, 0, 225, 0, 148}, {100, 100, 100, 100, 127, 127}};
  for (const auto& s : samples) {
    std::uint8_t luma = 1, u = 1, v = 1;
    logo_get_yuv_for_rgb(s.red, s.green, s.blue, &luma, &u, &v);
    EXPECT_EQ(luma, s.luma) << int{s.red} << ' ' << int{s.green} << ' ' << int{s.blue};
    EXPECT_EQ(u, s.u) << int{s.red} << ' ' << int{s.green} << ' ' << int{s.blue};
    EXPECT_EQ(v, s.v) << int{s.red} << ' ' << int{s.green} << ' ' << int{s.blue};
  }
}

TEST_F(ColorFilter, ConvertsYuvToRgbWithinBounds) {
  double red = 0, green = 0, blue = 0;
  get_rgb_for_yuv(100, 138, 118, &red, &green, &blue);
  EXPECT_DOUBLE_EQ(red, (100 - 14.02) / 255);
  EXPECT_DOUBLE_EQ(green, (100 + 7.14 - 3.44) / 255);
  EXPECT_DOUBLE_EQ(blue, (100 + 17.72) / 255);
  get_rgb_for_yuv(255, 128, 255, &red, &green, &blue);
  EXPECT_EQ(red, 1.0);
  EXPECT_EQ(blue, 1.0);
  get_rgb_for_yuv(0, 255, 255, &red, &green, &blue);
  EXPECT_EQ(green, 0.0);
}

TEST_F(ColorFilter, BandLimits) {
  double upper = 0, lower = 0;
  get_color_frame(1, 0, 0.5, &upper, &lower);
  EXPECT_DOUBLE_EQ(upper, 0.5);
  EXPECT_DOUBLE_EQ(lower, -1.0);
  get_color_frame(0.25, 0.5, 0.2, &upper, &lower);
  EXPECT_DOUBLE_EQ(upper, 0.45);
  EXPECT_DOUBLE_EQ(lower, (0.5 - 0.05) / 0.8);
}

TEST_F(ColorFilter, MaskHoldsThePredicateOfEachCellsLowestCorner) {
  using predicate = bool (*)(std::uint8_t, std::uint8_t, std::uint8_t, double);
  const std::pair<FilterColorMatch, predicate> colors[] = {{filter_match_red, color_match_red},
                                                           {filter_match_green, color_match_green},
                                                           {filter_match_blue, color_match_blue},
                                                           {filter_match_yellow, color_match_yellow}};
  for (const auto& [which, matches] : colors) {
    for (const double threshold : {0.1, 0.5, 0.95}) {
      filter_init(threshold, which);
      int set = 0;
      for (int luma = 0; luma < 256; luma += 8) {
        for (int u = 0; u < 256; u += 8) {
          for (int v = 0; v < 256; v += 8) {
            const auto y8 = static_cast<std::uint8_t>(luma), u8 = static_cast<std::uint8_t>(u),
                       v8 = static_cast<std::uint8_t>(v);
            const bool expected = matches(y8, u8, v8, threshold);
            set += expected;
            ASSERT_EQ(mask_has(y8, u8, v8), expected) << which << " at " << luma << ' ' << u << ' ' << v;
            ASSERT_EQ(mask_has(y8 | 7, u8 | 7, v8 | 7), expected);
          }
        }
      }
      EXPECT_GT(set, 0) << which << " at " << threshold;
      EXPECT_LT(set, 32768) << which << " at " << threshold;
    }
  }
}

TEST_F(ColorFilter, EachMaskKeepsItsOwnColorAndNoGrey) {
  const struct {
    FilterColorMatch which;
    int rgb[3];
  } colors[] = {{filter_match_red, {255, 0, 0}},
                {filter_match_green, {0, 255, 0}},
                {filter_match_blue, {0, 0, 255}},
                {filter_match_yellow, {255, 255, 0}}};
  for (const auto& mask_color : colors) {
    filter_init(0.5, mask_color.which);
    for (const auto& color : colors) {
      EXPECT_EQ(mask_has_rgb(color.rgb[0], color.rgb[1], color.rgb[2]), color.which == mask_color.which)
          << "mask " << mask_color.which << ", colour " << color.which;
    }
    for (int grey = 0; grey < 256; ++grey) {
      EXPECT_FALSE(mask_has(static_cast<std::uint8_t>(grey), 128, 128)) << mask_color.which << " at " << grey;
    }
    EXPECT_EQ(mask_has_rgb(255, 255, 255), mask_color.which == filter_match_green)
        << "truncation makes white's chroma 127, whose cell begins in a greenish 120";
  }
}

TEST_F(ColorFilter, EffectsOfTheMenuMapToTheirPredicates) {
  const FilterColorMatch expected[] = {filter_match_yellow, filter_match_blue, filter_match_green, filter_match_red};
  for (const std::int32_t effect : {-5, -1, 0, 7, 8, 9, 10, 11, 12}) {
    auto which = static_cast<FilterColorMatch>(99);
    const bool found = color_match_for_effect(effect, &which);
    EXPECT_EQ(found, effect >= 8 && effect <= 11);
    EXPECT_EQ(which, found ? expected[effect - 8] : static_cast<FilterColorMatch>(99));
  }
}

TEST_F(ColorFilter, CustomColorTruncatesTowardZero) {
  changeCustomColor(0, 200.9f);
  changeCustomColor(1, 300.0f);
  changeCustomColor(2, -1.9f);
  EXPECT_EQ(_y, 200);
  EXPECT_EQ(_u, 300);
  EXPECT_EQ(_v, -1);
  changeCustomColor(-7, 12.5f);
  EXPECT_EQ(_v, 12) << "any type but 0 and 1 is V";
  changeCustomColor(1, std::numeric_limits<float>::quiet_NaN());
  EXPECT_EQ(_u, 0);
  changeCustomColor(1, 1e30f);
  EXPECT_EQ(_u, INT32_MAX);
  changeCustomColor(1, -std::numeric_limits<float>::infinity());
  EXPECT_EQ(_u, INT32_MIN);
}

TEST_F(ColorFilter, ToleranceRebuildsOnlyWhileAColorIsKept) {
  filter_init(0.5, filter_match_green);
  const mask_copy before = mask();

  _cur_camera_filter = 3;
  changeFilterColor(0.7f);
  EXPECT_EQ(_color_filter_value, 0.7f);
  EXPECT_EQ(mask(), before);

  for (const std::int32_t effect : {8, 9, 10, 11}) {
    _cur_camera_filter = effect;
    changeFilterColor(0.625f);
    FilterColorMatch which{};
    ASSERT_TRUE(color_match_for_effect(effect, &which));
    EXPECT_EQ(mask(), built(0.625, which)) << effect;
    EXPECT_NE(mask(), built(0.5, which)) << "the tolerance makes a difference";
  }
  const mask_copy red = mask();
  _busy = true;
  changeFilterColor(0.25f);
  EXPECT_EQ(_color_filter_value, 0.625f);
  EXPECT_EQ(mask(), red);
}

}  // namespace

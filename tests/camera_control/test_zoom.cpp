#include "camera/zoom.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

constexpr zoom_limits_s wide = {-1000, 1000};

/// Levels that a pinch of these ratios sends.
std::vector<int> sent(zoom_state_s* state, const std::vector<float>& ratios, const zoom_limits_s& limits = wide) {
  std::vector<int> levels;
  *state = pinch_start(*state);
  for (const float ratio : ratios) {
    const zoom_update_s update = pinch_update(*state, ratio, limits);
    *state = update.state;
    if (update.level) levels.push_back(*update.level);
  }
  *state = pinch_end(*state);
  return levels;
}

using Levels = std::vector<int>;

TEST(Zoom, SendsFourLevelsForEveryTenth) {
  zoom_state_s state;
  EXPECT_EQ(sent(&state, {1.0F, 1.1F, 1.2F, 1.24F}), (Levels{4, 8}));
  EXPECT_EQ(sent(&state, {1.0F, 0.85F}), (Levels{4}));  // goes on from 8
  EXPECT_EQ(sent(&state, {1.0F, 0.95F, 1.05F}), (Levels{}));
  EXPECT_EQ(sent(&state, {1.0F, 1.55F, 1.0F}), (Levels{24, 4}));
}

TEST(Zoom, CountsFromTheFirstRatioSeen) {
  zoom_state_s state;
  EXPECT_EQ(sent(&state, {1.5F, 1.75F, 1.5F}), (Levels{8, 0}));
  EXPECT_EQ(sent(&state, {2.0F}), (Levels{}));
}

TEST(Zoom, StaysWithinTheLimitsOfTheCameraNowOpen) {
  zoom_state_s state;
  EXPECT_EQ(sent(&state, {1.0F, 2.0F, 2.5F, 2.25F}, {0, 30}), (Levels{30, 30, 18}));
  EXPECT_EQ(sent(&state, {1.0F, 0.0F, 0.25F}, {3, 30}), (Levels{3, 15}));
  EXPECT_EQ(sent(&state, {1.0F, 1.25F}, {0, 8}), (Levels{8}));
}

TEST(Zoom, IsBusyFromStartToEndAndDoesNothingBeforeTheFirstStart) {
  zoom_state_s state;
  const zoom_update_s update = pinch_update(state, 3.0F, wide);
  EXPECT_EQ(update.state, state);
  EXPECT_EQ(update.level, std::nullopt);
  state = pinch_start(state);
  EXPECT_TRUE(state.busy);
  EXPECT_FALSE(pinch_end(state).busy);
}

TEST(Zoom, SurvivesImpossibleRatios) {
  constexpr float huge = std::numeric_limits<float>::max();
  zoom_state_s state;
  EXPECT_EQ(sent(&state, {NAN, INFINITY, 1.0F, NAN, 1.1F}, {0, 60}), (Levels{4}));
  EXPECT_EQ(sent(&state, {-huge, huge, -huge}, {0, 60}), (Levels{60, 0}));
}

}  // namespace

#include "camera/resolution.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Sizes = std::vector<camera_res_t>;

const Sizes phone = {{640, 480}, {1280, 720}, {1920, 1080}, {3264, 2448}};

TEST(PreferredResolution, IsTheNearestOnBothSides) {
  EXPECT_EQ(preferred_resolution(phone), 1);
  EXPECT_EQ(preferred_resolution(Sizes{{1920, 1080}, {640, 480}, {480, 320}, {1280, 720}}), 3);
  // Nearer on one side, equal on the other: entry 3 stays.
  EXPECT_EQ(preferred_resolution(Sizes{{1280, 800}, {1200, 900}, {1360, 900}, {1280, 900}}), 3);
}

TEST(PreferredResolution, ComparesUprightEntriesUpright) {
  EXPECT_EQ(preferred_resolution(Sizes{{480, 640}, {720, 1280}, {1080, 1920}, {2448, 3264}}), 1);
  // Of the two 720p, each is perfect on its own axes and the other is not: the later one replaces the earlier.
  EXPECT_EQ(preferred_resolution(Sizes{{1280, 720}, {720, 1280}, {640, 480}, {3264, 2448}}), 1);
  EXPECT_EQ(preferred_resolution(Sizes{{720, 1280}, {1280, 720}, {640, 480}, {3264, 2448}}), 1);
  // A square entry counts as upright: 280 and 280 off, against 580 and 580 for entry 3 measured upright.
  EXPECT_EQ(preferred_resolution(Sizes{{320, 240}, {480, 320}, {640, 480}, {1300, 700}, {1000, 1000}}), 4);
}

TEST(PreferredResolution, StartsInsideTheList) {
  EXPECT_EQ(preferred_resolution({}), 0);
  EXPECT_EQ(preferred_resolution(Sizes{{3264, 2448}}), 0);
  EXPECT_EQ(preferred_resolution(Sizes{{1280, 720}, {1920, 720}, {1280, 1080}}), 0);
  EXPECT_EQ(preferred_resolution(Sizes{{640, 480}, {1920, 1080}, {1280, 720}}), 2);
  Sizes many;
  for (unsigned i = 0; i < 40; ++i) many.push_back({4000 - 64 * i, 3000 - 48 * i});
  EXPECT_EQ(preferred_resolution(many), 39);
  many[20] = {1279, 721};
  EXPECT_EQ(preferred_resolution(many), 20);
}

TEST(PreferredResolution, SurvivesImpossibleSizes) {
  const Sizes sizes = {{0, 0}, {0xFFFFFFFF, 1}, {1, 0xFFFFFFFF}, {0x80000000 + 1280, 0x80000000 + 720}, {1281, 721}};
  EXPECT_EQ(preferred_resolution(sizes), 4);
}

TEST(ChooseResolution, TakesWhatTheUnitStored) {
  EXPECT_EQ(choose_resolution(CAMERA_UNIT_REAR, -1, phone), 1);
  EXPECT_EQ(choose_resolution(CAMERA_UNIT_REAR, 2, phone), 2);
  EXPECT_EQ(choose_resolution(CAMERA_UNIT_FRONT, 0, phone), 0);
  EXPECT_EQ(choose_resolution(CAMERA_UNIT_FRONT, -1, phone), 0);
  EXPECT_EQ(choose_resolution(CAMERA_UNIT_REAR, -7, phone), 0);
  EXPECT_EQ(choose_resolution(CAMERA_UNIT_DESKTOP, 2, phone), 1);
}

TEST(ChooseResolution, StaysInsideTheList) {
  for (const camera_unit_t unit : {CAMERA_UNIT_FRONT, CAMERA_UNIT_REAR}) {
    EXPECT_EQ(choose_resolution(unit, 3, phone), 3);
    EXPECT_EQ(choose_resolution(unit, 4, phone), 1);
    EXPECT_EQ(choose_resolution(unit, 0x7FFFFFFF, Sizes{{640, 480}}), 0);
    EXPECT_EQ(choose_resolution(unit, 0, {}), std::nullopt);
  }
}

TEST(ResolutionLabel, ShowsTheStoredEntry) {
  EXPECT_EQ(resolution_label(3, phone), "3264 x 2448");
  // The desktop lists fewer sizes than the rear camera whose index labels it.
  EXPECT_EQ(resolution_label(4, phone), "1280 x 720");
  EXPECT_EQ(resolution_label(-1, phone), "1280 x 720");
  EXPECT_EQ(resolution_label(0, {}), "");
}

}  // namespace

#include "camera/scene.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace {

TEST(Scene, ColumnsBelongTogether) {
  const int modes[] = {9, 10, 4, 7, 1};
  for (int i = 0; i < scene_count; ++i) EXPECT_EQ(_supported_scene_modes[i], modes[i]) << i;
  EXPECT_EQ(_menuSceneIconNames[0], std::string("Beach & Snow"));
  EXPECT_EQ(_menuSceneIcons[0], std::string("asset:///images/icon_scene_snow.png"));
  EXPECT_EQ(_menuSceneIconNames[4], std::string("Auto"));
  EXPECT_EQ(_menuSceneIcons[4], std::string("asset:///images/icon_scene.png"));
}

TEST(Scene, OutsideTheTableIsAutoWhichHasNoIcon) {
  for (const int index : {-1, 5, INT_MIN, INT_MAX}) EXPECT_FALSE(scene_icon_visible(scene_or_auto(index))) << index;
  for (const int index : {0, 1, 2, 3}) EXPECT_TRUE(scene_icon_visible(scene_or_auto(index))) << index;
}

}  // namespace

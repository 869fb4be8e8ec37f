// The action menu: its lists, its modes, and what choosing a row does.

#include <gmock/gmock.h>

#include <cstring>
#include <filesystem>

#include "camera/scene.h"
#include "engine/color_filter.h"
#include "engine/filter_thread.h"
#include "engine/overlay.h"
#include "engine/overlay_loader.h"
#include "platform/cascades/stage.h"
#include "tests/application/app_fixture.h"
#include "tests/application/fake_camera_service.h"

namespace cascades = bb::cascades;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

class Menu : public AppTest {
 protected:
  Menu() { start(); }

  void open() const { app->setMenuVisible(true); }
  /// Chooses a row of the list that is shown.
  void choose(int row) const {
    EXPECT_THAT(errors_of([&] { app->peformMenuAction({row}); }),
                StartsWith("selected index " + std::to_string(row) + '\n'));
  }
  /// Opens the menu and walks down.
  void pick(int main_row, int row) const {
    open();
    choose(main_row);
    choose(row);
  }
  void tap() const {
    EXPECT_EQ(errors_of([&] { app->onTap(nullptr); }), "tapped\n");
  }
  bool shown(const char* name) const { return on_page<QQuickItem>(name).isVisible(); }

  QVariantMap row(int index) const { return app->model()->data(QVariantList{index}).toMap(); }
  std::vector<std::string> titles() const {
    std::vector<std::string> found;
    for (int i = 0; i < app->model()->size(); ++i) {
      found.push_back(row(i)["title"].toString().toStdString());
      EXPECT_EQ(row(i)["index"], i);
      EXPECT_TRUE(row(i)["image"].toString().startsWith("asset:///images/")) << found.back();
    }
    return found;
  }
};

TEST_F(Menu, EveryListHasItsRows) {
  const auto main = [](const char* scene) {
    return ElementsAre("Color Filters", "Load Texture", "Default Textures", "Screen Size", "Video Light", scene,
                       "Normal", "Switch Camera");
  };
  EXPECT_THAT(titles(), main("Scene"));  // as before the camera was there
  open();
  EXPECT_THAT(titles(), main("Auto"));
  app->updateTrackInformation();
  EXPECT_THAT(titles(), main("Auto"));
  choose(0);
  EXPECT_THAT(titles(), ElementsAre("Color Mixer", "Yellow Solid", "Blue Solid ", "Green Solid", "Red Solid", "Sepia",
                                    "Negative", "Greyscale", "Yellow", "Blue", "Green", "Red", "Normal"));
  EXPECT_EQ(row(2)["image"], "asset:///images/icon_effect_solid_blue.png");
  app->setMenuVisible(false);
  open();
  EXPECT_THAT(titles(), main("Auto"));
  choose(2);
  EXPECT_EQ(titles().size(), 13U);
  EXPECT_EQ(row(0)["title"], "Vintage");
  EXPECT_EQ(row(12)["title"], "No Texture");
  EXPECT_EQ(row(12)["image"], "asset:///images/icon_logos.png");
  tap();
  open();
  choose(3);
  EXPECT_THAT(titles(), ElementsAre("640 x 480", "1280 x 720", "1920 x 1080", "3264 x 2448"));
  EXPECT_EQ(row(0)["image"], "asset:///images/icon_screen.png");
  tap();
  open();
  choose(5);
  EXPECT_THAT(titles(), ElementsAre("Beach & Snow", "Night", "Closeup", "Action", "Auto"));
  tap();
  open();
  choose(6);
  EXPECT_THAT(titles(), ElementsAre("Stabilization", "Normal"));
  EXPECT_EQ(row(1)["image"], "asset:///images/icon_mode.png");
}

TEST_F(Menu, NoListIsLongerThanItsTable) {
  open();
  choose(3);
  _num_menu_choices = 100;
  for (const int mode : {-1, 0, 1, 3, 4, 6, 7, 88}) {
    app->mMenuMode = mode;
    app->updateTrackInformation();
    EXPECT_EQ(app->model()->size(), menu_row_count(mode, 4)) << mode;
  }
  for (const int count : {0, -1}) {
    _num_menu_choices = count;
    app->updateTrackInformation();
    EXPECT_EQ(app->model()->size(), 0);
  }
  app->onStopCamera();
  delete[] std::exchange(app->mResolutions, nullptr);
  app->mMenuMode = menu_sizes;
  _num_menu_choices = 4;
  app->updateTrackInformation();
  EXPECT_EQ(app->model()->size(), 0);
}

TEST_F(Menu, ModesFollowTheTransitions) {
  struct Step {
    int main_row, mode;
  };
  for (const auto& [main_row, mode] : {Step{0, 7}, Step{2, 6}, Step{3, 1}, Step{5, 3}, Step{6, 4}}) {
    EXPECT_EQ(app->mMenuMode, -1);
    app->mListMenuContainer->setVisible(true);
    open();
    EXPECT_EQ(app->mMenuMode, 0);
    choose(main_row);
    EXPECT_EQ(app->mMenuMode, mode);
    EXPECT_TRUE(shown("listMenuContainer"));
    choose(0);
    EXPECT_EQ(app->mMenuMode, mode == 7 ? 88 : -1);
    EXPECT_FALSE(shown("listMenuContainer"));
    tap();
    EXPECT_EQ(app->mMenuMode, -1);
    open();
    choose(main_row);
    tap();
    EXPECT_EQ(app->mMenuMode, -1);
    EXPECT_TRUE(shown("menuIconImgButton"));
    open();
    choose(main_row);
    app->setMenuVisible(false);
  }
  // Three rows act at once.
  open();
  choose(1);
  EXPECT_EQ(app->mMenuMode, -1);
  EXPECT_NE(handset::Stage::instance()->card(), nullptr) << "the picture picker";
  handset::Stage::instance()->go_back();
  for (const auto& [main_row, command] : {std::pair{4, "light 1"}, {7, "open 1 31"}}) {
    open();
    fake_camera::clear_journal();
    choose(main_row);
    EXPECT_EQ(app->mMenuMode, -1);
    EXPECT_THAT(fake_camera::commands(), testing::Contains(command));
  }
  // What no list holds: an index path that is none, and a row of a list before the mode changed.
  open();
  EXPECT_EQ(errors_of([&] { app->peformMenuAction({}); }), "");
  EXPECT_EQ(errors_of([&] { app->peformMenuAction({99}); }), "");
  choose(0);
  app->mMenuMode = menu_modes;
  fake_camera::clear_journal();
  app->peformMenuAction({9});
  EXPECT_THAT(fake_camera::commands(), ElementsAre());
}

TEST_F(Menu, ARecordingKeepsSizeAndCamera) {
  app->onStartStopRecording();
  ASSERT_NE(app->mVideoFd, -1);
  fake_camera::clear_journal();
  for (const int main_row : {3, 7}) {
    open();
    choose(main_row);
    EXPECT_EQ(app->mMenuMode, -1);
  }
  EXPECT_THAT(fake_camera::commands(), ElementsAre());
  pick(0, 5);
  EXPECT_EQ(_cur_camera_filter, 5);
}

TEST_F(Menu, ColorFilters) {
  for (int r = 1; r < 12; ++r) {
    _cur_camera_filter = -1;
    pick(0, r);
    EXPECT_EQ(_cur_camera_filter, r);
    EXPECT_EQ(app->mMenuMode, -1);
    EXPECT_EQ(shown("effectContainer"), r >= 8) << r;
    EXPECT_EQ(shown("setColorContainer"), r >= 8) << r;
    on_page<QQuickItem>("setColorContainer").setVisible(false);
  }
  EXPECT_EQ(on_page<cascades::ImageView>("effectImg").imageSource(), QUrl("asset:///images/icon_effect_red.png"));
  _modify_color = true;
  pick(0, 12);
  EXPECT_EQ(_cur_camera_filter, -1);
  EXPECT_FALSE(_modify_color);
  EXPECT_FALSE(shown("effectContainer"));
}

TEST_F(Menu, KeptColorsAreBuiltWithTheTolerance) {
  const auto mask = [] { return std::string(reinterpret_cast<const char*>(filter_bitmask), filter_bitmask_size); };
  app->changeFilterColor(0.7F);
  const std::pair<int, FilterColorMatch> kinds[] = {
      {8, filter_match_yellow}, {9, filter_match_blue}, {10, filter_match_green}, {11, filter_match_red}};
  for (const auto& [r, kind] : kinds) {
    pick(0, r);
    const std::string built = mask();
    filter_init(static_cast<double>(0.7F), kind);
    EXPECT_EQ(built, mask()) << r;
    on_page<QQuickItem>("setColorContainer").setVisible(false);
  }
}

TEST_F(Menu, TheColorMixerTakesTheListsPlace) {
  pick(0, 0);
  EXPECT_EQ(_cur_camera_filter, 0);
  EXPECT_TRUE(shown("setYUVContainer"));
  EXPECT_FALSE(shown("menuIconImgButton"));
  EXPECT_FALSE(shown("screensizeContainer"));
  app->changeCustomColor(1, 300.0F);
  app->changeCustomColor(2, 17.9F);
  EXPECT_EQ(_u, 300);
  EXPECT_EQ(_v, 17);
  tap();
  EXPECT_EQ(app->mMenuMode, -1);
  EXPECT_FALSE(shown("setYUVContainer"));
  EXPECT_TRUE(shown("menuIconImgButton"));
  EXPECT_TRUE(shown("screensizeContainer"));
  EXPECT_EQ(_cur_camera_filter, 0);

  // The menu can be opened over the panel when something else has brought its button back.
  pick(0, 0);
  open();
  EXPECT_FALSE(shown("setYUVContainer"));
  EXPECT_TRUE(shown("screensizeContainer"));
  EXPECT_EQ(titles().size(), 8U);
}

TEST_F(Menu, ATapWithTheToleranceShownBelongsToIt) {
  pick(0, 11);
  ASSERT_TRUE(shown("setColorContainer"));
  tap();
  EXPECT_TRUE(_modify_color);
  EXPECT_TRUE(shown("setColorContainer"));
  EXPECT_FALSE(shown("screensizeContainer"));
  EXPECT_FALSE(shown("menuIconImgButton"));
  tap();
  EXPECT_FALSE(shown("setColorContainer"));
  EXPECT_TRUE(shown("screensizeContainer"));
  EXPECT_TRUE(shown("menuIconImgButton"));
}

TEST_F(Menu, WhatTheToleranceHidIsBackWithAnotherFilter) {
  for (const int row : {12, 5}) {
    pick(0, 11);
    tap();
    ASSERT_FALSE(shown("screensizeContainer"));
    app->onStartStopRecording();  // which brings the menu's button back
    pick(0, row);
    EXPECT_TRUE(shown("screensizeContainer")) << row;
    EXPECT_TRUE(shown("menuIconImgButton")) << row;
    app->onStartStopRecording();
    _modify_color = false;
  }
}

TEST_F(Menu, TexturesAreLoadedFromThePackage) {
  fullscreen = false;
  pick(2, 0);
  const std::string path = app->mSettings.overlayPath;
  EXPECT_EQ(path, sandbox.file("app/native/assets/images/textures/eff_vintage.png"));
  EXPECT_TRUE(fullscreen);
  EXPECT_FALSE(logo_image.enabled);
  ASSERT_TRUE(wait_until([] { return logo_image.enabled; }));
  EXPECT_EQ(logo_image.width, 1280);
  EXPECT_EQ(logo_image.height, 720);
  pick(2, 12);
  EXPECT_STREQ(app->mSettings.overlayPath, "");
  EXPECT_FALSE(logo_image.enabled);
  EXPECT_FALSE(fullscreen);

  // Taken back before it is there: no alert, no overlay.
  pick(2, 11);
  pick(2, 12);
  EXPECT_THAT(errors_of([] { wait_for(1300); }), Not(HasSubstr("logo")));
  EXPECT_FALSE(logo_image.enabled);
}

TEST_F(Menu, SizesRestartTheCamera) {
  fake_camera::clear_journal();
  pick(3, 0);
  EXPECT_EQ(stored_settings().rearResolutionIndex, 0);
  EXPECT_EQ(_screen_wid, 640);
  EXPECT_THAT(fake_camera::commands(), Contains("open 2 31"));
}

TEST_F(Menu, ScenesAndModes) {
  fake_camera::clear_journal();
  pick(5, 1);
  EXPECT_THAT(fake_camera::commands(), ElementsAre("scene 10"));
  EXPECT_TRUE(shown("sceneImg"));
  EXPECT_STREQ(_menuIconNames[main_row_scene], "Night");
  pick(5, 4);
  EXPECT_FALSE(shown("sceneImg"));
  EXPECT_STREQ(_menuIcons[main_row_scene], "asset:///images/icon_scene.png");
  pick(6, 0);
  EXPECT_TRUE(shown("modeImg"));
  EXPECT_EQ(stored_settings().stabilization, 1);
  EXPECT_STREQ(_menuIconNames[main_row_mode], "Stabilization");
  fake_camera::fail("set_video 7=0", EIO);
  pick(6, 1);
  EXPECT_EQ(stored_settings().stabilization, 1);
  EXPECT_EQ(app->mMenuMode, -1);
}

TEST_F(Menu, TheListIsPlacedByTheDisplay) {
  cascades::Container& list = on_page<cascades::Container>("iconListViewContainer");
  open();
  EXPECT_EQ(list.topPadding(), 200);
  choose(5);
  EXPECT_EQ(list.topPadding(), 200);
  tap();
  open();
  choose(2);
  EXPECT_EQ(list.topPadding(), 10);
  tap();
  app->mRotation.mCaptureAngle = 270;
  open();
  EXPECT_EQ(list.topPadding(), 0);
  choose(6);
  EXPECT_EQ(list.topPadding(), 10);
}

TEST(MenuTables, TextsAreCutToTheirSlots) {
  char slot[menu_text_size];
  set_menu_text(slot, std::string(100, 'x').c_str());
  EXPECT_EQ(std::string(slot), std::string(63, 'x'));
  set_menu_text(slot, "");
  EXPECT_STREQ(slot, "");
}

TEST(MenuTables, PaddingsOfLowDisplays) {
  EXPECT_EQ(opening_padding(0, 720), 0);
  EXPECT_EQ(opening_padding(180, 721), 200);
  EXPECT_EQ(main_row_padding(7, 0, 720), 10);
  EXPECT_EQ(main_row_padding(7, 180, 721), 200);
  EXPECT_EQ(main_row_padding(3, 0, 1280), 10);
}

}  // namespace

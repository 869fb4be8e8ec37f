// Sizes, scenes, light and zoom.

#include <gmock/gmock.h>

#include <cerrno>
#include <cstring>

#include "camera/scene.h"
#include "engine/color_filter.h"
#include "engine/filter_thread.h"
#include "engine/overlay.h"
#include "engine/overlay_loader.h"
#include "tests/application/app_fixture.h"
#include "tests/application/fake_camera_service.h"

using namespace bb::cascades;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

namespace {

class CameraControls : public AppTest {
 protected:
  QString size_label() const { return on_page<Label>("screensize").text(); }
  QUrl light_button() const { return on_page<ImageButton>("screenImg").defaultImageSource(); }
  std::vector<std::string> zooms(std::initializer_list<float> ratios) {
    fake_camera::clear_journal();
    app->onPinchStart(nullptr);
    for (const float ratio : ratios) {
      PinchEvent event(ratio, {});
      app->onPinchUpdate(&event);
    }
    app->onPinchEnd(nullptr);
    return fake_camera::journal();
  }
};

TEST_F(CameraControls, TheLabelShowsTheSizeInUse) {
  start();
  EXPECT_EQ(size_label(), "1280 x 720");
  app->handleScreenRecordingAction();
  EXPECT_EQ(size_label(), "1280 x 720");
  app->handleSwitchCameraAction();
  EXPECT_EQ(size_label(), "640 x 480");
  remove("screensize");
  app->set_screen_size_label();
}

TEST_F(CameraControls, ChoosingASizeRestartsTheCameraWithItsLight) {
  settings.logoPosition = 3;
  start();
  app->handleFlashLightAction();
  logo_pos = 0;
  logo_image = allocate_overlay(4, 4);
  logo_image.enabled = true;
  fake_camera::clear_journal();
  app->choose_resolution_row(2);
  EXPECT_THAT(fake_camera::commands(),
              ElementsAre("light 0", "disable", "close", "open 2 31", "focus 5", "set_video 1=1920 2=1080",
                          testing::StartsWith("set_vf 1=1920 2=1080"), "start_vf 123", "scene 1", "enable", "light 1"));
  EXPECT_EQ(stored_settings().rearResolutionIndex, 2);
  EXPECT_EQ(size_label(), "1920 x 1080");
  EXPECT_EQ(_screen_wid, 1920);
  EXPECT_TRUE(app->mLightOn);
  EXPECT_TRUE(app->mSavedOverlayEnabled);
  EXPECT_FALSE(logo_image.enabled);
  EXPECT_EQ(logo_pos, 3);
  EXPECT_EQ(app->mMenuMode, menu_closed);
}

TEST_F(CameraControls, ASizeIsKeptPerCameraAlsoWhenTheRestartFails) {
  start();
  app->handleSwitchCameraAction();
  app->choose_resolution_row(3);
  EXPECT_EQ(app->mCameraUnit, CAMERA_UNIT_FRONT);
  EXPECT_EQ(size_label(), "3264 x 2448");
  fake_camera::answer("start_vf", {EIO});
  app->choose_resolution_row(1);
  EXPECT_EQ(app->mCameraHandle, CAMERA_HANDLE_INVALID);
  const PrefsRecord stored = stored_settings();
  EXPECT_EQ(stored.frontResolutionIndex, 1);
  EXPECT_EQ(stored.rearResolutionIndex, 1);
}

TEST_F(CameraControls, ANewSizeDrawsTheStampAnewAndLoadsTheOverlay) {
  settings.timeFormat = 5;
  settings.timePosition = 1;
  start();
  fullscreen = true;  // as for every texture: no question is asked
  std::strcpy(app->mSettings.overlayPath, "app/native/assets/images/textures/eff_brick.png");
  app->choose_resolution_row(0);
  EXPECT_TRUE(datetime_image.enabled);
  EXPECT_EQ(datetime_image.x + datetime_image.width, 640);
  EXPECT_TRUE(wait_until([] { return logo_image.enabled; }));
}

TEST_F(CameraControls, TheSizeButtonOpensTheListOfSizes) {
  start();
  app->setScreenSize();
  EXPECT_EQ(app->mMenuMode, menu_sizes);
  EXPECT_EQ(_num_menu_choices, 4);
  EXPECT_EQ(app->mModel->size(), 4);
  EXPECT_TRUE(app->mListMenuContainer->isVisible());
  EXPECT_FALSE(on_page<ImageButton>("menuIconImgButton").isVisible());
  EXPECT_EQ(on_page<Container>("iconListViewContainer").topPadding(), 10.0F);
}

TEST_F(CameraControls, WithoutAListTheSizeButtonDoesNothing) {
  start();
  remove("iconListViewContainer");
  app->setScreenSize();
  EXPECT_EQ(app->mMenuMode, menu_closed);
  EXPECT_TRUE(on_page<ImageButton>("menuIconImgButton").isVisible());
}

TEST_F(CameraControls, WhileRecordingTheSizeButtonIsTheLight) {
  start();
  app->startRecording();
  on_page<ImageButton>("screenImg").setVisible(false);
  const QUrl on("asset:///images/icon_rec_lighton.png"), off("asset:///images/icon_rec_lightoff.png");
  for (const bool light : {true, false}) {
    app->setScreenSize();
    EXPECT_EQ(app->mLightOn, light);
    EXPECT_EQ(light_button(), light ? on : off);
    EXPECT_EQ(on_page<ImageButton>("screenImg").pressedImageSource(), light ? off : on);
    EXPECT_TRUE(on_page<ImageButton>("screenImg").isVisible());
  }
  EXPECT_EQ(app->mMenuMode, menu_closed);
}

TEST_F(CameraControls, TheButtonKnowsWhetherTheLightIsALamp) {
  for (const bool lamp : {true, false}) {
    fake_camera::unit(CAMERA_UNIT_REAR).lamp = lamp;
    start();
    app->startRecording();
    EXPECT_EQ(on_page<ImageButton>("screenImg").property("lightIsLamp"), QVariant(lamp));
    end();
  }
}

TEST_F(CameraControls, ScenesAreStoredAndShown) {
  start();
  EXPECT_FALSE(app->mSceneIcon->isVisible());
  EXPECT_STREQ(_menuIconNames[main_row_scene], "Auto");
  app->mMenuMode = menu_scenes;
  app->choose_scene_row(1);
  EXPECT_THAT(fake_camera::journal(), Contains("scene 10"));
  EXPECT_EQ(stored_settings().sceneIndex, 1);
  EXPECT_STREQ(_menuIcons[main_row_scene], "asset:///images/icon_scene_night.png");
  EXPECT_STREQ(_menuIconNames[main_row_scene], "Night");
  EXPECT_EQ(app->mSceneIcon->imageSource(), QUrl("asset:///images/icon_scene_night.png"));
  EXPECT_TRUE(app->mSceneIcon->isVisible());
  EXPECT_EQ(app->mMenuMode, menu_closed);

  fake_camera::answer("scene 9", {EINVAL});
  app->mMenuMode = menu_scenes;
  app->choose_scene_row(0);
  EXPECT_EQ(stored_settings().sceneIndex, 1);
  EXPECT_STREQ(_menuIconNames[main_row_scene], "Night");
  EXPECT_EQ(app->mMenuMode, menu_closed);

  app->choose_scene_row(scene_auto);
  EXPECT_FALSE(app->mSceneIcon->isVisible());
  EXPECT_STREQ(_menuIcons[main_row_scene], "asset:///images/icon_scene.png");
}

TEST_F(CameraControls, AStoredSceneIsAppliedAndADamagedOneIsAuto) {
  settings.sceneIndex = 0;
  start();
  EXPECT_THAT(fake_camera::journal(), Contains("scene 9"));
  EXPECT_TRUE(app->mSceneIcon->isVisible());
  EXPECT_STREQ(_menuIconNames[main_row_scene], "Beach & Snow");
  app->mSettings.sceneIndex = 99;
  app->apply_stored_scene();
  EXPECT_EQ(fake_camera::journal().back(), "scene 1");
  EXPECT_FALSE(app->mSceneIcon->isVisible());
}

TEST_F(CameraControls, TheLightIsToggledWhereThereIsOne) {
  start();
  fake_camera::clear_journal();
  fake_camera::fail("light", EIO);  // is not looked at
  app->handleFlashLightAction();
  EXPECT_TRUE(app->mLightOn);
  EXPECT_STREQ(_menuIcons[main_row_light], "asset:///images/icon_lighton.png");
  app->handleFlashLightAction();
  EXPECT_FALSE(app->mLightOn);
  EXPECT_STREQ(_menuIcons[main_row_light], "asset:///images/icon_lightoff.png");
  EXPECT_THAT(fake_camera::commands(), ElementsAre("light 1", "light 0"));

  app->handleSwitchCameraAction();
  fake_camera::clear_journal();
  app->handleFlashLightAction();
  EXPECT_FALSE(app->mLightOn);
  EXPECT_STREQ(_menuIcons[main_row_light], "asset:///images/icon_lightoff.png");
  app->onStopCamera();
  app->handleFlashLightAction();
  EXPECT_THAT(fake_camera::commands(), Not(Contains("light 1")));
}

TEST_F(CameraControls, APinchZoomsByFourForEveryTenth) {
  start();
  EXPECT_THAT(zooms({1.0F, 1.1F, 1.2F, 1.24F}), ElementsAre("zoom 4 smooth", "zoom 8 smooth"));
  EXPECT_EQ(last_zoom, 8);
  EXPECT_THAT(zooms({1.0F, 0.85F}), ElementsAre("zoom 4 smooth"));
  EXPECT_THAT(zooms({1.0F, 9.0F}), ElementsAre("zoom 120 smooth"));
  EXPECT_THAT(zooms({9.0F, 0.5F}), ElementsAre("zoom 0 smooth"));
}

TEST_F(CameraControls, ALevelOutlivesTheCameraUntilTheNextPinch) {
  fake_camera::unit(CAMERA_UNIT_FRONT).zoom_max = 10;
  start();
  zooms({1.0F, 2.0F});
  fake_camera::clear_journal();
  app->handleSwitchCameraAction();
  EXPECT_THAT(fake_camera::journal(), Not(Contains(testing::StartsWith("zoom"))));
  EXPECT_EQ(app->mZoomState.mZoom, 40);
  EXPECT_THAT(zooms({1.0F, 1.1F}), ElementsAre("zoom 10 smooth"));
}

TEST_F(CameraControls, APinchKeepsTheSlidersQuietUntilItEndsOrIsCancelled) {
  start();
  PinchEvent event(1.5F, {});
  fake_camera::clear_journal();
  app->onPinchUpdate(&event);
  EXPECT_THAT(fake_camera::journal(), ElementsAre());
  EXPECT_FALSE(_busy);
  app->onPinchStart(&event);
  EXPECT_TRUE(_busy);
  app->onPinchCancel();
  EXPECT_FALSE(_busy);
}

}  // namespace

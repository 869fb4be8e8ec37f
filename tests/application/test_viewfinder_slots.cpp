#include <gmock/gmock.h>

#include <QTimer>

#include <cerrno>
#include <cstring>

#include "engine/color_filter.h"
#include "engine/filter_thread.h"
#include "engine/overlay.h"
#include "engine/overlay_loader.h"
#include "tests/application/app_fixture.h"
#include "tests/application/fake_camera_service.h"

using bb::cascades::Container;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

namespace {

constexpr const char* configured =
    "Selecting resolution 1280 x 720 index=1\n"
    "video wid 1280 hi 720\n"
    "initial video angle 0\n"
    "initial viewfinder angle 0\n"
    "camera opened\n";
constexpr const char* started = "viewfinder configured\nviewfinder started\n";
constexpr const char* gave_up = "couldn't start viewfinder\nerror: : Input/output error\n";
constexpr const char* stabilization_icon = "asset:///images/icon_mode_stabilization.png";

class ViewfinderSlots : public AppTest {
 protected:
  /// The application with its camera closed and nothing in the journal.
  void start_closed() {
    start();
    app->onStopCamera();
    fake_camera::clear_journal();
  }
  int create(camera_unit_t unit) { return app->createViewfinder(unit, "group", "window"); }
  /// @return what it wrote to the error stream
  std::string create_and_expect(camera_unit_t unit, int result) {
    return errors_of([=, this] { EXPECT_EQ(create(unit), result); });
  }
};

TEST_F(ViewfinderSlots, TheRearCameraStartsStepByStep) {
  start();
  EXPECT_EQ(app->mCameraUnit, CAMERA_UNIT_REAR);
  EXPECT_TRUE(fake_camera::is_open());
  app->onStopCamera();
  fake_camera::clear_journal();

  EXPECT_EQ(errors_of([this] { app->onStartRear(); }), std::string(configured) + started + "created viewfinder\n");
  const std::string window = " 11=" + app->mViewfinderWindow->windowGroup().toStdString() + " 12=cameraViewfinder";
  EXPECT_THAT(fake_camera::journal(),
              ElementsAre("open 2 31", "get_sizes 0", "get_sizes 4", "focus 5", "has_feature 10", "get_vf 0",
                          "get_rotations 0", "get_rotations 4", "get_video 6", "get_vf 6", "set_video 1=1280 2=720",
                          "set_vf 1=1280 2=720" + window, "start_vf 123", "scene 1", "get_zoom_limits", "enable"));
  EXPECT_EQ(mHandle, app->mCameraHandle);
  EXPECT_EQ(_screen_wid, 1280);
  EXPECT_EQ(_screen_hi, 720);
  EXPECT_EQ(app->mZoomLimits.mZoomMax, 120);

  fake_camera::clear_journal();
  app->onStopCamera();
  EXPECT_THAT(fake_camera::journal(), ElementsAre("disable", "close"));
  EXPECT_EQ(app->mCameraHandle, CAMERA_HANDLE_INVALID);
  app->onStopCamera();
  EXPECT_THAT(fake_camera::journal(), ElementsAre("disable", "close"));
}

TEST_F(ViewfinderSlots, TheFrontCameraSaysWhatItCannotDo) {
  start_closed();
  EXPECT_THAT(
      errors_of([this] { app->onStartFront(); }),
      testing::AllOf(testing::StartsWith("\nonStartFront - unit desktop\nSelecting resolution 640 x 480 index=0\n"),
                     EndsWith("viewfinder started\ncreated viewfinder\n")));
  EXPECT_EQ(errors_of([this] { app->onStartFront(); }),
            "\nonStartFront - unit desktop\ncamera already running\n\ncan't open - unit desktop\n");
  EXPECT_EQ(errors_of([this] { app->onStartRear(); }), "camera already running\n");
}

TEST_F(ViewfinderSlots, ARunningCameraIsLeftAlone) {
  start();
  fake_camera::clear_journal();
  _screen_recording = true;
  EXPECT_EQ(create_and_expect(CAMERA_UNIT_FRONT, 16), "camera already running\n");
  EXPECT_THAT(fake_camera::journal(), ElementsAre());
  EXPECT_EQ(app->mCameraUnit, CAMERA_UNIT_REAR);
  EXPECT_TRUE(_screen_recording);
}

TEST_F(ViewfinderSlots, ACameraThatDoesNotOpen) {
  start_closed();
  fake_camera::answer("open", {ENODEV});
  EXPECT_EQ(create_and_expect(CAMERA_UNIT_FRONT, 5), "could not open camera\n");
  EXPECT_EQ(app->mCameraUnit, CAMERA_UNIT_FRONT);
  EXPECT_EQ(app->mCameraHandle, CAMERA_HANDLE_INVALID);
  EXPECT_THAT(fake_camera::journal(), ElementsAre("open 1 31"));
}

TEST_F(ViewfinderSlots, AViewfinderThatIsRefusedIsClosedAndCanBeTriedAgain) {
  start_closed();
  fake_camera::answer("set_vf 1=", {EIO});
  EXPECT_EQ(create_and_expect(CAMERA_UNIT_REAR, 5), std::string(configured) + gave_up);
  EXPECT_EQ(app->mCameraHandle, CAMERA_HANDLE_INVALID);
  EXPECT_EQ(app->mResolutionIndex, 1);
  EXPECT_THAT(fake_camera::journal(), testing::AllOf(Not(Contains("start_vf 123")), Contains("close")));

  fake_camera::answer("start_vf", {EIO});
  EXPECT_EQ(create_and_expect(CAMERA_UNIT_REAR, 5), std::string(configured) + "viewfinder configured\n" + gave_up);
  EXPECT_FALSE(fake_camera::is_open());
  EXPECT_THAT(fake_camera::journal(), Not(Contains("enable")));

  EXPECT_EQ(create_and_expect(CAMERA_UNIT_REAR, 0), std::string(configured) + started);
}

TEST_F(ViewfinderSlots, WhatIsRefusedOnTheWayDoesNotStopTheCamera) {
  settings.stabilization = 1;
  settings.sceneIndex = 1;
  start_closed();
  fake_camera::fail("set_video 7=", ENOTSUP);
  fake_camera::fail("set_video 1=", EBUSY);
  fake_camera::fail("focus", ENOTSUP);
  fake_camera::fail("get_video 6", EIO);
  fake_camera::fail("get_vf 6", EIO);
  fake_camera::fail("get_zoom_limits", EIO);
  fake_camera::fail("scene", ENOTSUP);
  app->mSceneIcon->setVisible(false);
  set_menu_text(_menuIconNames[main_row_scene], "as before");
  app->mZoomLimits = {3, 4};
  EXPECT_EQ(create_and_expect(CAMERA_UNIT_REAR, 0),
            "Selecting resolution 1280 x 720 index=1\n"
            "set CAMERA_IMGPROP_STABILIZATION failed: : Operation not supported\n"
            "video wid 1280 hi 720\n"
            "camera opened\n" +
                std::string(started) + "can't not set scene mode in createViewfinder()\n");
  EXPECT_FALSE(app->mSceneIcon->isVisible());
  EXPECT_STREQ(_menuIconNames[main_row_scene], "as before");
  EXPECT_EQ(app->mZoomLimits.mZoomMin, 3);
}

TEST_F(ViewfinderSlots, TheListMayHaveAnyLength) {
  struct Row {
    std::size_t count;
    int stored, used;
  };
  constexpr Row rows[] = {{1, -1, 0}, {1, 3, 0},  {3, -1, 1},   {3, 2, 2},
                          {3, 3, 1},  {3, -7, 0}, {40, 39, 39}, {40, 40, 1}};
  start_closed();
  for (const Row& row : rows) {
    auto& sizes = fake_camera::unit(CAMERA_UNIT_REAR).sizes;
    sizes = {{640, 480}, {1280, 720}, {1920, 1080}};
    sizes.resize(row.count, {3840, 2160});
    app->mSettings.rearResolutionIndex = row.stored;
    EXPECT_EQ(create(CAMERA_UNIT_REAR), 0);
    EXPECT_EQ(app->mResolutionIndex, row.used) << row.count << " sizes, stored " << row.stored;
    // A choice beyond the list is kept for the camera that it was made for.
    const bool beyond = row.stored >= static_cast<int>(row.count);
    EXPECT_EQ(app->mSettings.rearResolutionIndex, beyond ? row.stored : row.used);
    EXPECT_EQ(_num_screen_res, static_cast<int>(row.count));
    app->onStopCamera();
  }
}

TEST_F(ViewfinderSlots, WithoutSizesThereIsNoViewfinder) {
  start_closed();
  fake_camera::unit(CAMERA_UNIT_REAR).sizes.clear();
  const std::string no_data = "couldn't start viewfinder\nerror: : No data available\n";
  EXPECT_EQ(create_and_expect(CAMERA_UNIT_REAR, 5), no_data);
  fake_camera::unit(CAMERA_UNIT_REAR).sizes = {{640, 480}};
  fake_camera::fail("get_sizes", EIO);
  EXPECT_EQ(create_and_expect(CAMERA_UNIT_REAR, 5), no_data);
  EXPECT_FALSE(fake_camera::is_open());
  EXPECT_EQ(app->mSettings.rearResolutionIndex, 1);  // the choice of the start stays
}

TEST_F(ViewfinderSlots, EachUnitHasItsIndex) {
  settings.rearResolutionIndex = 2;
  settings.frontResolutionIndex = 3;
  start_closed();
  for (const auto& [unit, index] : {std::pair(CAMERA_UNIT_REAR, 2), {CAMERA_UNIT_FRONT, 3}, {CAMERA_UNIT_DESKTOP, 1}}) {
    ASSERT_EQ(create(unit), 0);
    EXPECT_EQ(app->mResolutionIndex, index);
    app->onStopCamera();
  }
  EXPECT_EQ(app->mSettings.rearResolutionIndex, 2);
  EXPECT_EQ(app->mSettings.frontResolutionIndex, 3);
}

TEST_F(ViewfinderSlots, ASquareDisplayLeavesTheAnglesAlone) {
  start_closed();
  fake_camera::unit(CAMERA_UNIT_REAR).video_rotation = 90;
  fake_camera::unit(CAMERA_UNIT_REAR).vf_rotation = 270;
  EXPECT_THAT(create_and_expect(CAMERA_UNIT_REAR, 0),
              HasSubstr("initial video angle 90\ninitial viewfinder angle 270\n"));
  EXPECT_EQ(app->mRotation.mVideoAngle, 90);
  EXPECT_EQ(app->mRotation.mVfAngle, 270);

  app->onStopCamera();
  fake_camera::unit(CAMERA_UNIT_REAR).video_rotation = 0;
  _device_z10 = false;
  EXPECT_THAT(create_and_expect(CAMERA_UNIT_REAR, 0), Not(HasSubstr("angle")));
  EXPECT_EQ(app->mRotation.mVideoAngle, 90);
}

TEST_F(ViewfinderSlots, TheLastFilmCanBePlayed) {
  start_closed();
  EXPECT_EQ(create(CAMERA_UNIT_REAR), 0);
  EXPECT_FALSE(on_page<Container>("playContainer").isVisible());
  app->onStopCamera();
  app->mSettings.lastVideoPath[0] = '/';
  EXPECT_EQ(create(CAMERA_UNIT_REAR), 0);
  EXPECT_TRUE(on_page<Container>("playContainer").isVisible());
}

TEST_F(ViewfinderSlots, RevocationDuringTheStartAndAfterIt) {
  start_closed();
  bool armed = true;
  fake_camera::on_call("start_vf", [&armed] {
    if (armed) fake_camera::revoke();
  });
  EXPECT_THAT(create_and_expect(CAMERA_UNIT_REAR, 0), HasSubstr("Resource are being revoked!\n"));
  EXPECT_TRUE(_major_error);
  app->onStopCamera();
  EXPECT_FALSE(fake_camera::is_open());

  // Unplugged while it runs: the camera stays open until it is stopped, and can be opened again.
  armed = false;
  _major_error = false;
  EXPECT_EQ(create(CAMERA_UNIT_REAR), 0);
  fake_camera::clear_journal();
  EXPECT_EQ(errors_of([] { fake_camera::revoke(); }), "Resource are being revoked!\n");
  EXPECT_TRUE(_major_error);
  EXPECT_THAT(fake_camera::journal(), ElementsAre("disable"));
  EXPECT_TRUE(fake_camera::is_open());
  app->onStopCamera();
  EXPECT_EQ(create(CAMERA_UNIT_REAR), 0);
  EXPECT_EQ(fake_camera::announce(), 0);
  EXPECT_TRUE(fake_camera::wait_returned(1));
}

TEST_F(ViewfinderSlots, ALostCameraEndsTheRecordingOnThePageAndIsOpenedWhenItComesBack) {
  fake_camera::unit(CAMERA_UNIT_REAR).features.insert(CAMERA_FEATURE_VIDEOLIGHT);
  start();
  app->onStartStopRecording();
  app->handleFlashLightAction();
  ASSERT_TRUE(app->mLightOn);
  fake_camera::clear_journal();
  fake_camera::offer(CAMERA_UNIT_REAR);
  wait_for(50);
  EXPECT_THAT(fake_camera::commands(), ElementsAre()) << "a recording is not cut short for a better camera";

  errors_of([] { fake_camera::revoke(); });
  EXPECT_TRUE(wait_until([this] { return app->mVideoFd == -1; }));
  EXPECT_THAT(fake_camera::commands(), Contains("stop_video"));
  EXPECT_FALSE(on_page<Container>("RecordContainer").isVisible());
  EXPECT_FALSE(app->mRecordTimer->isActive());
  app->handleFlashLightAction();
  fake_camera::clear_journal();
  fake_camera::offer(CAMERA_UNIT_FRONT);
  fake_camera::offer(CAMERA_UNIT_REAR);
  errors_of(
      [this] { EXPECT_TRUE(wait_until([] { return fake_camera::is_open() && fake_camera::commands().size() > 8; })); });
  const std::vector<std::string> calls = fake_camera::commands();
  EXPECT_THAT(calls, testing::IsSupersetOf({"light 0", "close", "open 2 31", "light 1"}));
  EXPECT_THAT(calls, Not(Contains("open 1 31")));
  EXPECT_TRUE(app->mLightOn);
  EXPECT_EQ(app->mVideoFd, -1) << "never resumed";
}

TEST_F(ViewfinderSlots, NoCameraIsOpenedBehindAFilm) {
  fake_camera::answer("open 2", {ENODEV});
  errors_of([this] { start(); });
  ASSERT_EQ(app->mCameraHandle, CAMERA_HANDLE_INVALID);
  on_page<Container>("videoContainer").setVisible(true);
  fake_camera::clear_journal();
  fake_camera::offer(CAMERA_UNIT_REAR);
  wait_for(50);
  EXPECT_THAT(fake_camera::journal(), ElementsAre());
  on_page<Container>("videoContainer").setVisible(false);
  errors_of([this] {
    fake_camera::offer(CAMERA_UNIT_REAR);
    EXPECT_TRUE(wait_until([this] { return app->mCameraHandle != CAMERA_HANDLE_INVALID; }));
  });
}

TEST_F(ViewfinderSlots, RestartingOpensTheUnitThatWasUsed) {
  start_closed();
  _busy = true;
  app->restartCamera();
  EXPECT_FALSE(_busy);
  EXPECT_EQ(app->mCameraUnit, CAMERA_UNIT_REAR);
  for (const auto& [used, opened] :
       {std::pair(CAMERA_UNIT_FRONT, CAMERA_UNIT_FRONT), {CAMERA_UNIT_DESKTOP, CAMERA_UNIT_REAR}}) {
    app->onStopCamera();
    app->mCameraUnit = used;
    app->restartCamera();
    EXPECT_EQ(app->mCameraUnit, opened);
  }
}

TEST_F(ViewfinderSlots, SwitchingSwitchesTheLightOffAndTheOverlayToo) {
  start();
  app->handleFlashLightAction();
  logo_image = allocate_overlay(4, 4);
  logo_image.enabled = true;
  fake_camera::clear_journal();
  app->handleSwitchCameraAction();
  EXPECT_THAT(fake_camera::commands(), testing::AllOf(testing::Contains("open 1 31"), Not(Contains("light 1"))));
  const std::vector<std::string> commands = fake_camera::commands();
  EXPECT_THAT(std::vector(commands.begin(), commands.begin() + 4),
              ElementsAre("light 0", "disable", "close", "open 1 31"));
  EXPECT_FALSE(app->mLightOn);
  EXPECT_TRUE(app->mSavedOverlayEnabled);
  EXPECT_FALSE(logo_image.enabled);

  // And back; from the desktop it goes to the front as from the rear.
  app->handleSwitchCameraAction();
  EXPECT_EQ(app->mCameraUnit, CAMERA_UNIT_REAR);
  EXPECT_FALSE(app->mLightOn);
  app->handleScreenRecordingAction();
  app->handleSwitchCameraAction();
  EXPECT_EQ(app->mCameraUnit, CAMERA_UNIT_FRONT);
}

TEST_F(ViewfinderSlots, SwitchingLoadsTheOverlayAgain) {
  start();
  fullscreen = true;  // as for every texture: no question is asked
  std::strcpy(app->mSettings.overlayPath, "app/native/assets/images/textures/eff_brick.png");
  app->handleSwitchCameraAction();
  EXPECT_FALSE(logo_image.enabled);
  EXPECT_TRUE(wait_until([] { return logo_image.enabled; }));
}

TEST_F(ViewfinderSlots, TheStampFollowsTheFrames) {
  settings.timeFormat = 5;
  settings.timePosition = 1;  // top right
  start();
  EXPECT_TRUE(datetime_image.enabled);
  EXPECT_EQ(datetime_image.x + datetime_image.width, 1280);
  app->handleSwitchCameraAction();
  EXPECT_EQ(datetime_image.x + datetime_image.width, 640);
  app->mDatetimeImage = QImage();  // whose sheet was missing has a plate
  app->handleSwitchCameraAction();
  EXPECT_EQ(datetime_image.x + datetime_image.width, 1280);
}

TEST_F(ViewfinderSlots, ChoosingStabilization) {
  start();
  EXPECT_EQ(errors_of([this] { app->choose_mode_row(mode_row_stabilization); }), "stabilization set\n");
  EXPECT_THAT(fake_camera::journal(), Contains("set_video 7=1"));
  EXPECT_STREQ(_menuIcons[main_row_mode], stabilization_icon);
  EXPECT_STREQ(_menuIconNames[main_row_mode], "Stabilization");
  EXPECT_EQ(app->mModeIcon->imageSource(), QUrl(stabilization_icon));
  EXPECT_TRUE(app->mModeIcon->isVisible());
  EXPECT_EQ(stored_settings().stabilization, 1);

  fake_camera::answer("set_video 7=0", {ENOTSUP});
  app->mMenuMode = menu_modes;
  EXPECT_EQ(errors_of([this] { app->choose_mode_row(mode_row_normal); }), "error in stabilization set\n");
  EXPECT_EQ(app->mMenuMode, menu_closed);
  EXPECT_TRUE(app->mModeIcon->isVisible());
  EXPECT_EQ(stored_settings().stabilization, 1);

  app->mMenuMode = menu_modes;
  EXPECT_EQ(errors_of([this] { app->choose_mode_row(mode_row_normal); }), "stabilization set\n");
  EXPECT_STREQ(_menuIcons[main_row_mode], "asset:///images/icon_mode.png");
  EXPECT_STREQ(_menuIconNames[main_row_mode], "Normal");
  EXPECT_FALSE(app->mModeIcon->isVisible());
  EXPECT_EQ(stored_settings().stabilization, 0);
  EXPECT_EQ(app->mMenuMode, menu_closed);
}

TEST_F(ViewfinderSlots, StoredStabilizationShowsAtEachOpening) {
  settings.stabilization = 1;
  start();
  EXPECT_THAT(fake_camera::journal(), Contains("set_video 7=1"));
  EXPECT_TRUE(app->mModeIcon->isVisible());
  EXPECT_STREQ(_menuIconNames[main_row_mode], "Stabilization");
}

}  // namespace

#include <gmock/gmock.h>

#include <cerrno>

#include "platform/cascades/orientation.h"
#include "tests/application/app_fixture.h"
#include "tests/application/fake_camera_service.h"

using bb::cascades::OrientationSupport;
using bb::cascades::UIOrientation;
using testing::ElementsAre;

namespace {

class RotationSlots : public AppTest {
 protected:
  ~RotationSlots() override { OrientationSupport::instance()->turnTo(0); }
  int window_property(int property) const {
    int value = -2;
    screen_get_window_property_iv(app->mViewfinderWindow->windowHandle(), property, &value);
    return value;
  }
  void attach_viewfinder() const {
    fake_camera::post_frame();
    ASSERT_TRUE(wait_until([this] { return app->mViewfinderWindow->isBound(); }));
  }
};

TEST_F(RotationSlots, RotationsThatCannotBeReadAreLogged) {
  struct Row {
    const char* call;
    int from;
    const char* log;
    int known;
  };
  constexpr Row rows[] = {
      {"get_vf 0", 1, "error reading video format\n", 0},
      {"get_rotations", 1, "error querying num video rotations\nerror querying video rotations\n", 0},
      {"get_rotations", 2, "error querying video rotations\n", 4},
      {"nothing", 1, "", 4}};
  for (const Row& row : rows) {
    fake_camera::reset();
    start();
    fake_camera::fail(row.call, EIO, row.from);
    EXPECT_EQ(errors_of([this] { app->querySupportedRotations(); }), row.log);
    EXPECT_EQ(app->mNumVideoRotations, row.known) << row.call << row.from;
    end();
  }
}

TEST_F(RotationSlots, TheViewfinderStreamTurnsAloneWhereItIsNotShared) {
  fake_camera::unit(CAMERA_UNIT_REAR).features.erase(CAMERA_FEATURE_SHARED_ROTATION);
  start();
  EXPECT_TRUE(app->mSeparateVfRotation);
  app->handleSwitchCameraAction();
  EXPECT_FALSE(app->mSeparateVfRotation);
}

TEST_F(RotationSlots, TheWindowTurnsWithTheHandset) {
  start();
  fake_camera::clear_journal();
  OrientationSupport::instance()->turnTo(90);
  EXPECT_EQ(errors_of([this] { app->onOrientationAboutToChange(UIOrientation::Landscape); }),
            "WIN: 270 VF: 0 VID: 0 MIRROR: false\nonOrientationAboutToChange() 90\norientation 1\n");
  EXPECT_THAT(fake_camera::journal(), ElementsAre("set_vf 6=0", "set_video 6=0"));
  EXPECT_EQ(window_property(SCREEN_PROPERTY_ROTATION), 270);  // as created: there is no window yet to turn

  OrientationSupport::instance()->turnTo(180);
  attach_viewfinder();
  EXPECT_EQ(window_property(SCREEN_PROPERTY_ROTATION), 180);
  EXPECT_EQ(window_property(SCREEN_PROPERTY_ZORDER), -1);
  EXPECT_EQ(window_property(SCREEN_PROPERTY_MIRROR), 0);
}

TEST_F(RotationSlots, AnAttachedWindowIsLogged) {
  start();
  const screen_window_t window = app->mViewfinderWindow->windowHandle();
  char handle[32];
  std::snprintf(handle, sizeof handle, "%p", static_cast<void*>(window));
  EXPECT_EQ(
      errors_of([&] { app->onWindowAttached(window, "group", "cameraViewfinder"); }),
      std::string("onWindowAttached: ") + handle + ", group, cameraViewfinder\nWIN: 0 VF: 0 VID: 0 MIRROR: false\n");
}

TEST_F(RotationSlots, TheFrontCamerasWindowIsMirrored) {
  start();
  app->handleSwitchCameraAction();
  OrientationSupport::instance()->turnTo(90);
  attach_viewfinder();
  EXPECT_EQ(window_property(SCREEN_PROPERTY_MIRROR), 1);
  EXPECT_EQ(window_property(SCREEN_PROPERTY_ROTATION), 270);
  EXPECT_EQ(app->mRotation.mCaptureAngle, 90);
}

TEST_F(RotationSlots, ARecordingTurnsTheStreams) {
  start();
  attach_viewfinder();
  app->updateAngles(90);
  fake_camera::clear_journal();
  app->startRecording();
  EXPECT_THAT(fake_camera::commands(), testing::IsSupersetOf({"set_vf 6=270", "set_video 6=270"}));
  EXPECT_FALSE(app->mChooseVideoAngle);
  EXPECT_EQ(window_property(SCREEN_PROPERTY_ROTATION), 0);

  // Turning afterwards turns only the window.
  app->updateAngles(0);
  EXPECT_EQ(app->mRotation.mVideoAngle, 270);
}

TEST_F(RotationSlots, AnAngleThatTheVideoCannotHaveIsLogged) {
  fake_camera::unit(CAMERA_UNIT_REAR).rotations = {0, 90};
  start();
  app->updateAngles(90);
  const rotation_state_s before = app->mRotation;
  app->mSettings.shutterSound = 0;
  EXPECT_EQ(errors_of([this] { app->startRecording(); }), "video rotation 270 not supported.\n");
  EXPECT_EQ(app->mRotation, before);
  EXPECT_NE(app->mVideoFd, -1);
}

}  // namespace

#include <gtest/gtest.h>
#include <linux/media.h>
#include <linux/videodev2.h>
#include <sys/sysmacros.h>

#include <cerrno>

#include "platform/camera/control_plan.h"
#include "tests/camera/fake_controls.h"

using handset::CameraWishes;
using handset::ControlPlan;
using handset::ControlSetting;
using handset::DeviceControl;
using testing::ElementsAre;
using testing::IsEmpty;
using Settings = std::vector<ControlSetting>;

namespace {

std::vector<DeviceControl> listed(FakeCamera& camera) {
  return handset::list_controls(camera.open());
}

TEST(ListControls, TakesWhatCanBeReadAndSetAndPutBack) {
  FakeCamera camera;
  camera.controls = {{V4L2_CID_GAIN, integer(0, 10, 0, 3)},  // no step
                     {V4L2_CID_BACKLIGHT_COMPENSATION, integer(5, 1, 1, 3)},
                     {V4L2_CID_ZOOM_ABSOLUTE, integer(1, 10, 1, 3)},
                     {V4L2_CID_EXPOSURE_AUTO_PRIORITY, integer(0, 1, 1, 0)},
                     {V4L2_CID_FOCUS_AUTO, boolean(1)},
                     {V4L2_CID_FOCUS_ABSOLUTE, integer(0, 250, 5, 30)},  // governed
                     {V4L2_CID_AUTO_FOCUS_START, {V4L2_CTRL_TYPE_BUTTON, 0, 0, 0, 0, V4L2_CTRL_FLAG_WRITE_ONLY}},
                     {V4L2_CID_ILLUMINATORS_1, boolean(0)},
                     {V4L2_CID_BRIGHTNESS, integer(0, 255, 1, 128)}};
  camera.controls[V4L2_CID_ZOOM_ABSOLUTE].flags = V4L2_CTRL_FLAG_INACTIVE;
  camera.controls[V4L2_CID_EXPOSURE_AUTO_PRIORITY].flags = V4L2_CTRL_FLAG_READ_ONLY;
  camera.controls[V4L2_CID_ILLUMINATORS_1].get_error = EIO;
  std::vector<std::uint32_t> ids;
  for (const DeviceControl& control : listed(camera)) {
    ids.push_back(control.id);
    EXPECT_GT(control.step, 0);
  }
  EXPECT_THAT(ids, ElementsAre(V4L2_CID_GAIN, V4L2_CID_FOCUS_AUTO, V4L2_CID_FOCUS_ABSOLUTE, V4L2_CID_AUTO_FOCUS_START));
  camera.unplug(true);
  EXPECT_THAT(listed(camera), IsEmpty());
}

/// Three entities, of which the last is a flash.
class FakeMedia : public handset::ControlDevice {
 public:
  int call(unsigned long request, void* argument) override {
    auto* entity = static_cast<media_entity_desc*>(argument);
    if (request != MEDIA_IOC_ENUM_ENTITIES || (entity->id & MEDIA_ENT_ID_FLAG_NEXT) == 0) return EINVAL;
    entity->id = (entity->id & ~MEDIA_ENT_ID_FLAG_NEXT) + 1;
    if (entity->id > 3) return EINVAL;
    entity->type = entity->id == flash ? MEDIA_ENT_F_FLASH : MEDIA_ENT_F_CAM_SENSOR;
    entity->dev.major = 81;
    entity->dev.minor = entity->id;
    return 0;
  }
  std::uint32_t flash = 3;
};

TEST(ListControls, FindsTheFlashOfAMediaDevice) {
  FakeMedia media;
  EXPECT_EQ(handset::flash_of(media), makedev(81, 3));
  media.flash = 0;
  EXPECT_EQ(handset::flash_of(media), 0U);
}

TEST(ShareZoom, GoesAsFarAsTheDeviceAndLeavesTheRestToThePicture) {
  const struct {
    const char* what;
    std::int64_t minimum, maximum, step;
    int level, device;
    double picture;
  } cases[] = {
      {"level 0 is the device's shortest", 100, 200, 1, 0, 100, 1},
      {"within its range the device does it all", 100, 200, 1, 20, 150, 1},
      {"its end", 100, 200, 1, 40, 200, 1},
      {"one level beyond its end", 100, 200, 1, 41, 200, 2.025 / 2},
      {"far beyond it", 100, 200, 1, 120, 200, 2},
      {"a range beyond ours", 100, 500, 1, 120, 400, 1},
      {"coarse steps are rounded down and made up for", 100, 500, 100, 60, 200, 1.25},
      {"steps that do not reach the end", 100, 250, 100, 120, 200, 2},
      {"a range without a focal length is 1x to 4x", 0, 60, 1, 120, 60, 1},
      {"in which the levels are spread", 0, 60, 1, 40, 20, 1},
      {"and rounded down, too", 0, 3, 1, 50, 1, 2.25 / 2},
      {"below zero", -50, 50, 1, 60, 0, 1},
      {"nothing to move", 100, 100, 1, 120, 100, 4},
  };
  for (const auto& c : cases) {
    FakeCamera camera;
    camera.controls = {
        {V4L2_CID_ZOOM_ABSOLUTE, integer(c.minimum, c.maximum, c.step, static_cast<std::int32_t>(c.minimum))}};
    const handset::ZoomShare share = handset::share_zoom(listed(camera).front(), handset::magnification_of(c.level));
    EXPECT_EQ(share.device, c.device) << c.what;
    EXPECT_NEAR(share.picture, c.picture, 1e-9) << c.what;
  }
}

TEST(ShareZoom, MultipliesToTheLevelsMagnification) {
  for (const std::uint64_t step : {1U, 7U, 33U, 90U}) {
    FakeCamera camera;
    camera.controls = {{V4L2_CID_ZOOM_ABSOLUTE, integer(100, 320, step, 100)}};
    const DeviceControl zoom = listed(camera).front();
    for (int level = 0; level <= handset::zoom_maximum; ++level) {
      const handset::ZoomShare share = handset::share_zoom(zoom, handset::magnification_of(level));
      EXPECT_NEAR(share.device / 100.0 * share.picture, 1 + level / 40.0, 1e-9) << level;
      EXPECT_GE(share.picture, 1);
      EXPECT_EQ((share.device - 100) % static_cast<int>(step), 0);
    }
  }
}

TEST(PlanControls, LeavesADeviceAloneThatNobodySpokeOf) {
  FakeCamera camera(webcam());
  const ControlPlan plan = handset::plan_controls(listed(camera), {});
  EXPECT_THAT(plan.settings, IsEmpty());
  EXPECT_EQ(plan.picture_zoom, 1);
}

TEST(PlanControls, MakesScenesOfExposureAndGain) {
  FakeCamera camera(webcam());
  const struct {
    camera_scenemode_t scene;
    Settings settings;
  } cases[] = {
      {CAMERA_SCENE_NIGHT, {{V4L2_CID_EXPOSURE_AUTO_PRIORITY, 1}, {V4L2_CID_GAIN, 150}}},
      {CAMERA_SCENE_ACTION, {{V4L2_CID_EXPOSURE_AUTO_PRIORITY, 0}, {V4L2_CID_GAIN, 100}}},
      {CAMERA_SCENE_BEACH_SNOW, {{V4L2_CID_BACKLIGHT_COMPENSATION, 2}}},
      {CAMERA_SCENE_CLOSEUP, {}},
      {CAMERA_SCENE_AUTO, {}},
  };
  for (const auto& c : cases) {
    const ControlPlan plan = handset::plan_controls(listed(camera), {.scene = c.scene});
    EXPECT_EQ(plan.settings, c.settings) << c.scene;
    EXPECT_EQ(plan.scene_in_device, !c.settings.empty()) << c.scene;
  }
}

TEST(PlanControls, PrefersTheDevicesOwnScenesAndBias) {
  FakeCamera camera(webcam());
  // Thousandths of a stop; the entries have gaps.
  camera.controls[V4L2_CID_AUTO_EXPOSURE_BIAS] =
      menu({{0, -2000}, {1, -1000}, {2, 0}, {4, 667}, {5, 1333}, {6, 2000}}, 2, true);
  const auto settings = [&](camera_scenemode_t scene) {
    return handset::plan_controls(listed(camera), {.scene = scene}).settings;
  };
  EXPECT_EQ(settings(CAMERA_SCENE_BEACH_SNOW), (Settings{{V4L2_CID_AUTO_EXPOSURE_BIAS, 4}})) << "1000 is as far from 5";
  camera.controls[V4L2_CID_SCENE_MODE] = menu({{0, 0}, {2, 0}, {11, 0}}, 0);
  EXPECT_EQ(settings(CAMERA_SCENE_BEACH_SNOW), (Settings{{V4L2_CID_SCENE_MODE, V4L2_SCENE_MODE_BEACH_SNOW}}));
  EXPECT_EQ(settings(CAMERA_SCENE_ACTION), (Settings{{V4L2_CID_SCENE_MODE, V4L2_SCENE_MODE_SPORTS}}));
  EXPECT_EQ(settings(CAMERA_SCENE_NIGHT).size(), 2U) << "the menu has no night";
}

TEST(PlanControls, SwitchesManualExposureToAutomaticForAScene) {
  FakeCamera camera(webcam());
  camera.controls[V4L2_CID_EXPOSURE_AUTO].value = V4L2_EXPOSURE_MANUAL;
  const ControlPlan plan = handset::plan_controls(listed(camera), {.scene = CAMERA_SCENE_NIGHT});
  EXPECT_THAT(plan.settings,
              testing::Contains(ControlSetting{V4L2_CID_EXPOSURE_AUTO, V4L2_EXPOSURE_APERTURE_PRIORITY}));
}

TEST(PlanControls, LeavesASceneToThePictureThatWouldChangeNothing) {
  FakeCamera camera;
  camera.controls = {{V4L2_CID_EXPOSURE_AUTO_PRIORITY, boolean(1)}, {V4L2_CID_GAIN, integer(0, 100, 1, 90)}};
  const ControlPlan plan = handset::plan_controls(listed(camera), {.scene = CAMERA_SCENE_NIGHT});
  EXPECT_FALSE(plan.scene_in_device);
  EXPECT_THAT(plan.settings, IsEmpty()) << "a gain that is higher already is not lowered";
}

TEST(PlanControls, FocusesAsTheDeviceCan) {
  const auto focus = [](FakeCamera& camera, camera_focusmode_t mode) {
    const std::vector<DeviceControl> controls = listed(camera);
    const Settings settings = handset::plan_controls(controls, {.focus = mode, .focus_runs = 3}).settings;
    EXPECT_TRUE(settings.empty() || handset::can_focus(controls, mode)) << mode;
    return settings;
  };
  FakeCamera camera(webcam());
  EXPECT_EQ(focus(camera, CAMERA_FOCUSMODE_CONTINUOUS_AUTO), (Settings{{V4L2_CID_FOCUS_AUTO, 1}}));
  EXPECT_EQ(focus(camera, CAMERA_FOCUSMODE_FIXED), (Settings{{V4L2_CID_FOCUS_AUTO, 0}}));
  EXPECT_EQ(focus(camera, CAMERA_FOCUSMODE_MACRO),
            (Settings{{V4L2_CID_FOCUS_AUTO, 0}, {V4L2_CID_FOCUS_ABSOLUTE, 250}}));
  EXPECT_THAT(focus(camera, CAMERA_FOCUSMODE_AUTO), IsEmpty()) << "it has no button for that";
  camera.controls[V4L2_CID_AUTO_FOCUS_START] = {V4L2_CTRL_TYPE_BUTTON, 0, 0, 0, 0, V4L2_CTRL_FLAG_WRITE_ONLY};
  EXPECT_EQ(focus(camera, CAMERA_FOCUSMODE_AUTO), (Settings{{V4L2_CID_FOCUS_AUTO, 0}, {V4L2_CID_AUTO_FOCUS_START, 3}}));

  FakeCamera by_hand;
  by_hand.controls = {{V4L2_CID_FOCUS_ABSOLUTE, integer(0, 252, 5, 30)}};
  EXPECT_THAT(focus(by_hand, CAMERA_FOCUSMODE_CONTINUOUS_AUTO), IsEmpty());
  EXPECT_EQ(focus(by_hand, CAMERA_FOCUSMODE_MACRO), (Settings{{V4L2_CID_FOCUS_ABSOLUTE, 250}})) << "a step's multiple";

  FakeCamera ranged;
  ranged.controls = {{V4L2_CID_FOCUS_AUTO, boolean(0)}, {V4L2_CID_AUTO_FOCUS_RANGE, menu({{0, 0}, {2, 0}}, 0)}};
  EXPECT_EQ(focus(ranged, CAMERA_FOCUSMODE_MACRO),
            (Settings{{V4L2_CID_FOCUS_AUTO, 1}, {V4L2_CID_AUTO_FOCUS_RANGE, V4L2_AUTO_FOCUS_RANGE_MACRO}}));

  FakeCamera fixed;
  fixed.controls = {{V4L2_CID_ZOOM_ABSOLUTE, integer(1, 5, 1, 1)}};
  EXPECT_FALSE(handset::can_focus(listed(fixed)));
  EXPECT_THAT(focus(fixed, CAMERA_FOCUSMODE_CONTINUOUS_AUTO), IsEmpty());
}

TEST(PlanControls, LightsALampAndNothingElse) {
  const CameraWishes lit{.light = true};
  FakeCamera camera(webcam());
  camera.controls[V4L2_CID_FLASH_LED_MODE] = menu({{0, 0}, {1, 0}}, 0);  // flashes, but does not burn
  EXPECT_FALSE(handset::has_lamp(listed(camera)));
  EXPECT_FALSE(handset::plan_controls(listed(camera), lit).light_in_device);
  camera.controls[V4L2_CID_FLASH_LED_MODE] = menu({{0, 0}, {1, 0}, {2, 0}}, 0);
  EXPECT_TRUE(handset::has_lamp(listed(camera)));
  const ControlPlan plan = handset::plan_controls(listed(camera), lit);
  EXPECT_TRUE(plan.light_in_device);
  EXPECT_EQ(plan.settings, (Settings{{V4L2_CID_FLASH_LED_MODE, V4L2_FLASH_LED_MODE_TORCH}}));

  FakeCamera microscope;
  microscope.controls = {{V4L2_CID_ILLUMINATORS_1, boolean(0)}};
  EXPECT_EQ(handset::plan_controls(listed(microscope), lit).settings, (Settings{{V4L2_CID_ILLUMINATORS_1, 1}}));
}

}  // namespace

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/videodev2.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <thread>

#include "platform/camera/device_controls.h"
#include "tests/camera/fake_controls.h"
#include "tests/support/temp_dir.h"

using namespace std::chrono_literals;
using handset::CameraWishes;
using handset::ControlJournal;
using handset::ControlSetting;
using handset::DeviceControls;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

constexpr char identity[] = "Webcam@usb-1.2";

class Controls : public testing::Test {
 protected:
  Controls() { camera_.controls[V4L2_CID_ZOOM_ABSOLUTE] = integer(100, 200, 1, 100); }
  ~Controls() override {
    if (controls_) close();
  }

  /// Opens the camera and waits until it is known what it can do.
  void open() {
    controls_ = DeviceControls::start({identity, folder(), [this](const auto&) { return camera_.open(); },
                                       [this] {
                                         ++changes_;
                                         changes_.notify_all();
                                       }});
    wait_changes(1);
  }
  void wait_changes(int count) {
    for (int seen = changes_; seen < count; seen = changes_) changes_.wait(seen);
  }
  void close() {
    controls_->release();
    EXPECT_TRUE(controls_->wait_released(20s));
    controls_.reset();
    changes_ = 0;
  }
  /// All that the camera has, by control.
  std::map<std::uint32_t, std::int32_t> values() {
    std::map<std::uint32_t, std::int32_t> values;
    for (const auto& [id, control] : camera_.controls) values[id] = camera_.value(id);
    return values;
  }
  std::string folder() const { return dir_.file("controls"); }
  bool has_journal() const { return std::filesystem::exists(ControlJournal(folder(), identity).path()); }

  const TempDir dir_;
  FakeCamera camera_{webcam()};
  std::shared_ptr<DeviceControls> controls_;
  std::atomic<int> changes_{0};
};

TEST_F(Controls, AreSetInOrderAndPutBack) {
  std::atomic<int> unwritten{0};
  camera_.before_set = [&] { unwritten += has_journal() ? 0 : 1; };
  open();
  EXPECT_THAT(camera_.take_log(), IsEmpty());
  EXPECT_FALSE(has_journal());
  const handset::ControlPlan plan =
      controls_->ask({.scene = CAMERA_SCENE_NIGHT, .focus = CAMERA_FOCUSMODE_MACRO, .zoom = 120});
  EXPECT_TRUE(plan.scene_in_device);
  EXPECT_EQ(plan.picture_zoom, 2);
  ASSERT_TRUE(camera_.wait_value(V4L2_CID_ZOOM_ABSOLUTE, 200));
  EXPECT_THAT(camera_.take_log(), ElementsAre(Pair(V4L2_CID_EXPOSURE_AUTO_PRIORITY, 1), Pair(V4L2_CID_GAIN, 150),
                                              Pair(V4L2_CID_FOCUS_AUTO, 0), Pair(V4L2_CID_FOCUS_ABSOLUTE, 250),
                                              Pair(V4L2_CID_ZOOM_ABSOLUTE, 200)));
  EXPECT_EQ(unwritten, 0) << "changed before the journal held how it was";
  close();
  EXPECT_THAT(camera_.take_log(), ElementsAre(Pair(V4L2_CID_EXPOSURE_AUTO_PRIORITY, 0), Pair(V4L2_CID_GAIN, 20),
                                              Pair(V4L2_CID_FOCUS_AUTO, 1), Pair(V4L2_CID_ZOOM_ABSOLUTE, 100)))
      << "the lens is in the camera's own hands again";
  EXPECT_FALSE(has_journal());
}

TEST_F(Controls, OfASceneAreAsFoundInTheNextOne) {
  camera_.controls[V4L2_CID_BACKLIGHT_COMPENSATION].value = 1;
  open();
  controls_->ask({.scene = CAMERA_SCENE_NIGHT});
  ASSERT_TRUE(camera_.wait_value(V4L2_CID_GAIN, 150));
  controls_->ask({.scene = CAMERA_SCENE_BEACH_SNOW});
  ASSERT_TRUE(camera_.wait_value(V4L2_CID_BACKLIGHT_COMPENSATION, 2));
  EXPECT_EQ(camera_.value(V4L2_CID_GAIN), 20);
  controls_->ask({});
  EXPECT_TRUE(camera_.wait_value(V4L2_CID_BACKLIGHT_COMPENSATION, 1));
}

TEST_F(Controls, GetTheirManualExposureAndFocusBack) {
  camera_.controls[V4L2_CID_EXPOSURE_AUTO].value = V4L2_EXPOSURE_MANUAL;
  camera_.controls[V4L2_CID_FOCUS_AUTO].value = 0;
  const auto found = values();
  open();
  controls_->ask({.scene = CAMERA_SCENE_ACTION, .focus = CAMERA_FOCUSMODE_CONTINUOUS_AUTO});
  ASSERT_TRUE(camera_.wait_value(V4L2_CID_FOCUS_AUTO, 1));
  EXPECT_EQ(camera_.value(V4L2_CID_EXPOSURE_AUTO), V4L2_EXPOSURE_APERTURE_PRIORITY);
  camera_.move(V4L2_CID_EXPOSURE_ABSOLUTE, 1000);
  camera_.move(V4L2_CID_FOCUS_ABSOLUTE, 200);
  controls_->ask({.scene = CAMERA_SCENE_ACTION, .focus = CAMERA_FOCUSMODE_CONTINUOUS_AUTO, .zoom = 40});
  ASSERT_TRUE(camera_.wait_value(V4L2_CID_ZOOM_ABSOLUTE, 200));
  EXPECT_EQ(camera_.value(V4L2_CID_FOCUS_ABSOLUTE), 200) << "set while the camera focuses";
  close();
  EXPECT_EQ(values(), found);
}

TEST_F(Controls, FocusOnceWhenTheyAreAskedTo) {
  camera_.controls[V4L2_CID_AUTO_FOCUS_START] = {V4L2_CTRL_TYPE_BUTTON, 0, 0, 0, 0, V4L2_CTRL_FLAG_WRITE_ONLY};
  open();
  CameraWishes wishes{.focus = CAMERA_FOCUSMODE_AUTO, .focus_runs = 1};
  controls_->ask(wishes);
  ASSERT_TRUE(camera_.wait_tried(V4L2_CID_AUTO_FOCUS_START, 1));
  wishes.zoom = 40;
  controls_->ask(wishes);
  ASSERT_TRUE(camera_.wait_value(V4L2_CID_ZOOM_ABSOLUTE, 200));
  wishes.focus_runs = 2;
  controls_->ask(wishes);
  ASSERT_TRUE(camera_.wait_tried(V4L2_CID_AUTO_FOCUS_START, 2));
  close();
  int runs = 0;
  for (const auto& [id, value] : camera_.take_log()) runs += id == V4L2_CID_AUTO_FOCUS_START ? 1 : 0;
  EXPECT_EQ(runs, 2);
}

TEST_F(Controls, ThatComeFasterThanTheDeviceAreSkipped) {
  camera_.before_set = [] { std::this_thread::sleep_for(20ms); };
  open();
  for (int level = 0; level <= 40; ++level) {
    controls_->ask({.zoom = level});
    std::this_thread::sleep_for(1ms);
  }
  ASSERT_TRUE(camera_.wait_value(V4L2_CID_ZOOM_ABSOLUTE, 200));
  const auto log = camera_.take_log();
  EXPECT_LT(log.size(), 40U);
  EXPECT_THAT(log.back(), Pair(V4L2_CID_ZOOM_ABSOLUTE, 200));
}

TEST_F(Controls, ThatRefuseAreNotThereAndThePictureTakesOver) {
  for (auto& [id, control] : camera_.controls) control.set_error = EIO;
  camera_.controls[V4L2_CID_FLASH_LED_MODE] = menu({{0, 0}, {2, 0}}, 0);
  camera_.controls[V4L2_CID_FLASH_LED_MODE].set_error = EBUSY;
  open();
  EXPECT_TRUE(controls_->can_focus());
  EXPECT_TRUE(controls_->has_lamp());
  const CameraWishes wishes{.scene = CAMERA_SCENE_NIGHT, .light = true, .focus = CAMERA_FOCUSMODE_MACRO, .zoom = 120};
  controls_->ask(wishes);
  wait_changes(2);
  const handset::ControlPlan plan = controls_->ask(wishes);
  EXPECT_FALSE(plan.scene_in_device);
  EXPECT_FALSE(plan.light_in_device);
  EXPECT_EQ(plan.picture_zoom, 4);
  EXPECT_FALSE(controls_->has_lamp());
  EXPECT_FALSE(controls_->can_focus()) << "its motor is the autofocus's, which cannot be switched off";
  close();
  EXPECT_THAT(camera_.take_log(), IsEmpty());
  EXPECT_FALSE(has_journal()) << "nothing was changed";
}

TEST_F(Controls, OfAnUnpluggedCameraArePutBackWhenItComesAgain) {
  const auto found = values();
  open();
  controls_->ask({.scene = CAMERA_SCENE_NIGHT, .focus = CAMERA_FOCUSMODE_MACRO});
  ASSERT_TRUE(camera_.wait_value(V4L2_CID_FOCUS_ABSOLUTE, 250));
  camera_.unplug(true);
  close();
  EXPECT_TRUE(has_journal());
  open();  // its node is still there, and dead
  close();
  EXPECT_TRUE(has_journal());

  camera_.unplug(false);
  camera_.take_log();
  open();
  EXPECT_EQ(camera_.value(V4L2_CID_GAIN), found.at(V4L2_CID_GAIN));
  EXPECT_EQ(camera_.value(V4L2_CID_FOCUS_AUTO), 1);
  EXPECT_FALSE(has_journal());
  // What is found now is what the user had, not what the lost session left.
  controls_->ask({.scene = CAMERA_SCENE_ACTION});
  ASSERT_TRUE(camera_.wait_value(V4L2_CID_GAIN, 100));
  close();
  EXPECT_EQ(camera_.value(V4L2_CID_GAIN), found.at(V4L2_CID_GAIN));
}

TEST_F(Controls, AreNotPutBackFromAJournalThatIsNotTheirs) {
  const ControlJournal journal(folder(), identity);
  const std::vector<ControlSetting> other = {{V4L2_CID_GAIN, 77}};
  ControlJournal(folder(), "Another@usb-1.3").save(other);
  const std::string head = "camera controls 1\n" + std::string(identity) + "\n";
  const std::string gain = std::to_string(V4L2_CID_GAIN);
  for (const std::string& text :
       {std::string(), "camera controls 1\nAnother@usb-1.3\n" + gain + " 77\n", "camera controls 2\n" + gain + " 77\n",
        head + gain + " 5000\n", head + gain + "\n", head + gain + " 77 1\n", head + "9963776 1\n"}) {
    write_file(journal.path(), text);
    open();
    EXPECT_EQ(camera_.value(V4L2_CID_GAIN), 20) << text;
    close();
  }
  EXPECT_THAT(camera_.take_log(), IsEmpty());
  EXPECT_EQ(ControlJournal(folder(), "Another@usb-1.3").load(), other);
}

TEST_F(Controls, WorkWithoutAPlaceForTheJournal) {
  write_file(folder(), "a file where the folder should be");
  open();
  controls_->ask({.zoom = 40});
  EXPECT_TRUE(camera_.wait_value(V4L2_CID_ZOOM_ABSOLUTE, 200));
  close();
  EXPECT_EQ(camera_.value(V4L2_CID_ZOOM_ABSOLUTE), 100);
}

TEST_F(Controls, AreKnownToBeNoneWhereTheNodeDoesNotOpen) {
  controls_ = DeviceControls::start({identity, folder(), [](const auto&) { return handset::ControlDevices(); },
                                     [this] {
                                       ++changes_;
                                       changes_.notify_all();
                                     }});
  wait_changes(1);
  EXPECT_TRUE(controls_->known());
  EXPECT_FALSE(controls_->can_focus());
  EXPECT_EQ(controls_->ask({.zoom = 120}).picture_zoom, 4);
}

TEST_F(Controls, DoNotKeepAnybodyWaiting) {
  // A device that is busy elsewhere is not waited for any longer once it is not wanted.
  controls_ = DeviceControls::start({identity, folder(),
                                     [](const std::atomic<bool>& cancelled) {
                                       while (!cancelled) std::this_thread::sleep_for(1ms);
                                       return handset::ControlDevices();
                                     },
                                     [] {}});
  EXPECT_FALSE(controls_->known());
  EXPECT_EQ(controls_->ask({.zoom = 120}).picture_zoom, 4);
  close();

  // A camera that does not answer is left behind, and put right when it does.
  std::atomic<bool> stuck{true};
  std::atomic<bool> asked{false};
  camera_.before_set = [&] {
    asked = true;
    asked.notify_all();
    stuck.wait(true);
  };
  open();
  controls_->ask({.zoom = 40});
  asked.wait(false);
  controls_->release();
  EXPECT_FALSE(controls_->wait_released(10ms));
  stuck = false;
  stuck.notify_all();
  EXPECT_TRUE(controls_->wait_released(20s));
  EXPECT_EQ(camera_.value(V4L2_CID_ZOOM_ABSOLUTE), 100);
}

}  // namespace

#include <gmock/gmock.h>

#include <QTimer>
#include <cerrno>
#include <cstdio>

#include "engine/color_filter.h"
#include "engine/filter_thread.h"
#include "engine/overlay.h"
#include "platform/cascades/stage.h"
#include "tests/application/app_fixture.h"
#include "tests/application/fake_camera_service.h"

using namespace bb::cascades;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

namespace {

constexpr const char* start_sound = "play to the end event_recording_start";
constexpr const char* stop_sound = "play event_recording_stop";
constexpr std::size_t sepia_chroma = 1280 * 720;

class RecordingSlots : public AppTest {
 protected:
  void start_quietly() {
    start();
    fake_camera::clear_journal();
  }
  void show_overlay() {
    logo_image = allocate_overlay(4, 4);
    logo_image.enabled = true;
  }
  static std::string toast() {
    const QObject* const shown = handset::Stage::instance()->toast();
    return shown ? shown->property("body").toString().toStdString() : "";
  }
  bool visible(const char* container) const { return on_page<Container>(container).isVisible(); }
  std::pair<QString, QString> images(const char* button) const {
    const auto& found = on_page<ImageButton>(button);
    return {found.defaultImageSource().toString(), found.pressedImageSource().toString()};
  }
  void expect_idle_look() {
    EXPECT_EQ(app->mVideoFd, -1);
    EXPECT_FALSE(visible("RecordContainer"));
    EXPECT_TRUE(visible("playContainer"));
    EXPECT_TRUE(on_page<ImageButton>("menuIconImgButton").isVisible());
    EXPECT_EQ(images("imgbut_record_stop"), std::pair(QString("asset:///images/ic_camera_normal.png"),
                                                      QString("asset:///images/ic_camera_toggle.png")));
    EXPECT_EQ(images("screenImg"),
              std::pair(QString("asset:///images/icon_film.png"), QString("asset:///images/icon_film_pressed.png")));
    EXPECT_NE(on_page<Label>("screensize").text(), "");
    EXPECT_FALSE(app->mRecordTimer->isActive());
  }
};

TEST_F(RecordingSlots, StartAndStopInOrder) {
  start_quietly();
  app->onStartStopRecording();
  EXPECT_THAT(fake_camera::commands(), ElementsAre(start_sound, "set_vf 6=0", "set_video 6=0", "hold_video 1",
                                                   "roll_open 256 0", "start_video /roll/VID_1.mp4", "hold_video 0"));
  EXPECT_EQ(app->mVideoFd, 101);
  EXPECT_TRUE(visible("RecordContainer"));
  EXPECT_FALSE(visible("playContainer"));
  EXPECT_EQ(on_page<Label>("screensize").text(), "");
  EXPECT_EQ(images("imgbut_record_stop"), std::pair(QString("asset:///images/ic_camera_stop.png"),
                                                    QString("asset:///images/ic_camera__stop_toggle.png")));
  EXPECT_EQ(images("screenImg"), std::pair(QString("asset:///images/icon_rec_lightoff.png"),
                                           QString("asset:///images/icon_rec_lighton.png")));
  EXPECT_TRUE(app->mRecordTimer->isActive());
  EXPECT_EQ(app->mRecordTimer->interval(), 1000);

  fake_camera::clear_journal();
  app->onStartStopRecording();
  EXPECT_THAT(fake_camera::commands(), ElementsAre("stop_video", stop_sound, "roll_close 101"));
  expect_idle_look();
  EXPECT_EQ(on_page<Label>("screensize").text(), "1280 x 720");
}

TEST_F(RecordingSlots, ThePathIsSavedBeforeAnyControlChanges) {
  start_quietly();
  std::vector<std::string> paths;
  const auto look = [&] { paths.emplace_back(stored_settings().lastVideoPath); };
  fake_camera::on_call("start_video", look);
  const auto watching = QObject::connect(&on_page<Label>("screensize"), &Label::textChanged, app.get(), look);
  app->onStartStopRecording();
  QObject::disconnect(watching);
  EXPECT_THAT(paths, ElementsAre("", "/roll/VID_1.mp4"));
  end();  // changes the label once more
}

TEST_F(RecordingSlots, ALongPathJustFits) {
  start_quietly();
  const std::string path = "/" + std::string(254, 'x');
  fake_camera::set_film_name(path);
  app->onStartStopRecording();
  EXPECT_EQ(stored_settings().lastVideoPath, path);
}

TEST_F(RecordingSlots, TheThreeSlotsAreOneToggle) {
  start_quietly();
  app->record_stop();
  EXPECT_NE(app->mVideoFd, -1);
  app->startRecording();
  EXPECT_EQ(app->mVideoFd, -1);
}

TEST_F(RecordingSlots, WithoutACameraNothingHappens) {
  start();
  app->onStopCamera();
  fake_camera::clear_journal();
  app->onStartStopRecording();
  EXPECT_THAT(fake_camera::journal(), ElementsAre());
  EXPECT_EQ(app->mVideoFd, -1);
}

TEST_F(RecordingSlots, AFilmThatCannotBeCreated) {
  start_quietly();
  show_overlay();
  fake_camera::answer("roll_open", {ENOSPC});
  EXPECT_EQ(errors_of([this] { app->onStartStopRecording(); }), "WIN: 0 VF: 0 VID: 0 MIRROR: false\n");
  EXPECT_THAT(fake_camera::commands(), ElementsAre(start_sound, "set_vf 6=0", "set_video 6=0", "hold_video 1",
                                                   "roll_open 256 0", "hold_video 0", stop_sound));
  EXPECT_EQ(toast(), "Cannot record: the storage is full");
  EXPECT_EQ(app->mVideoFd, -1);
  EXPECT_TRUE(logo_image.enabled);
  EXPECT_FALSE(visible("RecordContainer"));
}

TEST_F(RecordingSlots, ARecordingThatDoesNotStart) {
  start_quietly();
  show_overlay();
  fake_camera::answer("start_video", {ENODEV});
  EXPECT_EQ(errors_of([this] { app->onStartStopRecording(); }),
            "WIN: 0 VF: 0 VID: 0 MIRROR: false\nfailed to start recording\n");
  const std::vector<std::string> commands = fake_camera::commands();
  EXPECT_THAT(std::vector(commands.end() - 4, commands.end()),
              ElementsAre("start_video /roll/VID_1.mp4", "roll_close 101", "hold_video 0", stop_sound));
  EXPECT_EQ(toast().substr(0, 15), "Cannot record: ");
  EXPECT_EQ(app->mVideoFd, -1);
  EXPECT_EQ(fake_camera::open_films(), 0);
  EXPECT_TRUE(logo_image.enabled);
  EXPECT_STREQ(stored_settings().lastVideoPath, "");
  EXPECT_FALSE(visible("RecordContainer"));
}

TEST_F(RecordingSlots, NoSoundsWhereTheyAreNotWanted) {
  settings.shutterSound = 0;
  start_quietly();
  app->onStartStopRecording();
  app->onStartStopRecording();
  fake_camera::answer("roll_open", {EIO});
  app->onStartStopRecording();
  fake_camera::answer("start_video", {EIO});
  app->onStartStopRecording();
  EXPECT_THAT(fake_camera::journal(), Not(Contains(testing::StartsWith("play"))));
}

TEST_F(RecordingSlots, TheOverlayRestsWhileARecordingStartsAndIsThereWhenItsFilmBegins) {
  start_quietly();
  show_overlay();
  std::vector<bool> drawn;
  for (const char* const call : {"start_video", "hold_video 0"})
    fake_camera::on_call(call, [&drawn] { drawn.push_back(logo_image.enabled); });
  app->onStartStopRecording();
  EXPECT_THAT(drawn, ElementsAre(false, true));
}

TEST_F(RecordingSlots, OnlyStampsWithSecondsTick) {
  for (const int format : {0, 1, 4, 5, 8}) {
    settings.timeFormat = format;
    start();
    app->onStartStopRecording();
    EXPECT_EQ(datetime_image.enabled, format > 0);
    EXPECT_EQ(app->mDatetimeTimer && app->mDatetimeTimer->isActive(), format >= 1 && format <= 4) << format;
    app->onStartStopRecording();
    EXPECT_FALSE(app->mDatetimeTimer && app->mDatetimeTimer->isActive()) << format;
    end();
  }
}

TEST_F(RecordingSlots, AFormatChosenWhileRecordingTicksAsItShould) {
  start();
  const auto ticks_with = [this](int format) {
    app->mSettings.timeFormat = format;
    app->saveSettings();
    return app->mDatetimeTimer && app->mDatetimeTimer->isActive();
  };
  EXPECT_FALSE(ticks_with(1)) << "nothing is recorded";
  app->onStartStopRecording();
  EXPECT_TRUE(ticks_with(2));
  EXPECT_FALSE(ticks_with(6));
  EXPECT_TRUE(ticks_with(1));
  EXPECT_FALSE(ticks_with(0));
}

TEST_F(RecordingSlots, TheLightGoesOffWithTheRecording) {
  start();
  app->onStartStopRecording();
  app->setScreenSize();
  EXPECT_TRUE(app->mLightOn);
  app->onStartStopRecording();
  EXPECT_FALSE(app->mLightOn);
  expect_idle_look();
}

TEST_F(RecordingSlots, TheStopCompletesWhateverTheCameraSays) {
  start();
  app->onStartStopRecording();
  fake_camera::revoke();
  fake_camera::fail("stop_video", ENOSPC);
  fake_camera::fail("roll_close", EIO);
  app->onStartStopRecording();
  expect_idle_look();
}

TEST_F(RecordingSlots, ARecordingThatEndsByItselfTakesClockAndButtonAlong) {
  std::snprintf(settings.lastVideoPath, sizeof settings.lastVideoPath, "/roll/VID_0.mp4");
  for (const int closing : {0, ENODATA}) {
    start();
    app->onStartStopRecording();
    EXPECT_STREQ(stored_settings().lastVideoPath, "/roll/VID_1.mp4");
    fake_camera::answer("roll_close", {closing});
    fake_camera::end_recording(ENOSPC);
    EXPECT_TRUE(wait_until([this] { return app->mVideoFd == -1; }));
    expect_idle_look();
    // An empty film is removed, and is not the last one.
    EXPECT_STREQ(stored_settings().lastVideoPath, closing == 0 ? "/roll/VID_1.mp4" : "/roll/VID_0.mp4");
    end();
  }
}

TEST_F(RecordingSlots, TheClockShowsTheTimeAndBlinks) {
  start_quietly();
  app->onStartStopRecording();
  const QUrl odd("asset:///images/icon_reddot2.png"), even("asset:///images/icon_reddot.png");
  struct Row {
    int tick;
    const char* text;
    QUrl dot;
  };
  const Row rows[] = {{1, "00:01", odd},    {59, "00:59", odd},       {60, "01:00", even},
                      {3599, "59:59", odd}, {3600, "01:00:00", even}, {3661, "01:01:01", odd}};
  for (const Row& row : rows) {
    app->mRecordSeconds = row.tick - 1;
    app->updateClockTimer();
    EXPECT_EQ(app->mRecordLabel->text(), row.text);
    EXPECT_EQ(app->mRecordRedDotImg->imageSource(), row.dot);
  }
}

TEST_F(RecordingSlots, ASecondRecordingStartsTheSameClockFromZero) {
  start_quietly();
  app->onStartStopRecording();
  QTimer* const timer = app->mRecordTimer;
  app->updateClockTimer();
  app->onStartStopRecording();
  app->onStartStopRecording();
  EXPECT_EQ(app->mRecordTimer, timer);
  EXPECT_EQ(app->mRecordSeconds, 0);
  EXPECT_TRUE(wait_until([this] { return app->mRecordLabel->text() == "00:02" || app->mRecordSeconds == 2; }));
  EXPECT_EQ(app->mRecordLabel->text(), "00:02");
}

TEST_F(RecordingSlots, ClosingTheCameraEndsTheRecording) {
  start_quietly();
  app->onStartStopRecording();
  fake_camera::clear_journal();
  app->handleSwitchCameraAction();
  const std::vector<std::string> commands = fake_camera::commands();
  EXPECT_THAT(std::vector(commands.begin(), commands.begin() + 4),
              ElementsAre("disable", "close", "roll_close 101", "open 1 31"));
  expect_idle_look();
}

TEST_F(RecordingSlots, TheLightGoesOffWithTheCameraThatEndsTheRecording) {
  start_quietly();
  app->onStartStopRecording();
  app->handleFlashLightAction();
  ASSERT_TRUE(app->mLightOn);
  fake_camera::clear_journal();
  app->playVideo();
  EXPECT_FALSE(app->mLightOn);
  EXPECT_STREQ(_menuIcons[4], "asset:///images/icon_lightoff.png");
  EXPECT_THAT(fake_camera::commands(), Contains("light 0"));
  handset::Stage::instance()->go_back();
}

TEST_F(RecordingSlots, TheEndOfTheProgramEndsTheRecording) {
  start_quietly();
  app->onStartStopRecording();
  fake_camera::clear_journal();
  end();
  EXPECT_THAT(fake_camera::commands(), ElementsAre("disable", "close", "roll_close 101"));
  EXPECT_EQ(fake_camera::open_films(), 0);
}

TEST_F(RecordingSlots, APageWithoutControlsRecordsAllTheSame) {
  start_quietly();
  for (const char* const name :
       {"screensize", "screenImg", "imgbut_record_stop", "playContainer", "RecordContainer", "menuIconImgButton"}) {
    remove(name);
  }
  app->mRecordLabel = nullptr;  // they were in the container
  app->mRecordRedDotImg = nullptr;
  app->onStartStopRecording();
  app->updateClockTimer();
  app->setScreenSize();
  app->onStartStopRecording();
  EXPECT_EQ(app->mVideoFd, -1);
  EXPECT_THAT(fake_camera::commands(), Contains("roll_close 101"));
}

class ScreenRecordingSlots : public RecordingSlots {
 protected:
  /// U of the first pixel after the filter thread has edited a frame; the sources' is 128.
  int edited_chroma() {
    const int pairs = ++pairs_;
    EXPECT_EQ(fake_camera::announce(), 0);
    EXPECT_TRUE(fake_camera::wait_returned(pairs));
    return fake_camera::frame()[sepia_chroma];
  }

 private:
  int pairs_ = 0;
};

TEST_F(ScreenRecordingSlots, TheDesktopIsNotEditedAndALensIsAgain) {
  settings.frontResolutionIndex = 1;
  start();
  _cur_camera_filter = 5;
  EXPECT_EQ(edited_chroma(), 110);
  app->handleFlashLightAction();
  show_overlay();
  fake_camera::clear_journal();
  app->startScreenRecorder();
  const std::vector<std::string> commands = fake_camera::commands();
  EXPECT_THAT(std::vector(commands.begin(), commands.begin() + 4),
              ElementsAre("light 0", "disable", "close", "open 3 31"));
  EXPECT_TRUE(_screen_recording);
  EXPECT_FALSE(logo_image.enabled);
  EXPECT_EQ(images("screenrecord_img"),
            std::pair(QString("asset:///images/ic_stop_normal.png"), QString("asset:///images/ic_stop_selected.png")));
  EXPECT_EQ(edited_chroma(), 128);

  app->handleSwitchCameraAction();
  EXPECT_FALSE(_screen_recording);
  EXPECT_EQ(edited_chroma(), 110);
}

TEST_F(ScreenRecordingSlots, AgainClosesAndOpensAgain) {
  start();
  remove("screenrecorderContainer");
  app->startScreenRecorder();
  fake_camera::clear_journal();
  EXPECT_THAT(errors_of([this] { app->startScreenRecorder(); }),
              testing::EndsWith("viewfinder started\ncreated viewfinder\n"));
  EXPECT_THAT(fake_camera::commands(), testing::IsSupersetOf({"close", "open 3 31"}));
  EXPECT_TRUE(_screen_recording);
  app->onStartStopRecording();
  EXPECT_STREQ(stored_settings().lastVideoPath, "/roll/VID_1.mp4");
}

TEST_F(ScreenRecordingSlots, ADesktopThatDoesNotOpenLeavesNoCamera) {
  start();
  app->startScreenRecorder();
  fake_camera::answer("start_vf", {EIO});
  app->startScreenRecorder();
  EXPECT_FALSE(_screen_recording);
  EXPECT_EQ(app->mCameraHandle, CAMERA_HANDLE_INVALID);
  app->restartCamera();
  EXPECT_EQ(app->mCameraUnit, CAMERA_UNIT_REAR);
}

TEST_F(ScreenRecordingSlots, TheFrontCamerasLightIsNotTouched) {
  fake_camera::unit(CAMERA_UNIT_FRONT).features.insert(CAMERA_FEATURE_VIDEOLIGHT);
  start();
  app->handleSwitchCameraAction();
  app->handleFlashLightAction();
  fake_camera::clear_journal();
  app->startScreenRecorder();
  EXPECT_THAT(fake_camera::commands(), Not(Contains("light 0")));
}

}  // namespace

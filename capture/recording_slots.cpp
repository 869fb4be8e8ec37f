#include <QCoreApplication>
#include <QPointer>
#include <QTimer>
#include <cerrno>
#include <cstdio>
#include <string>
#include <thread>

#include "app/page_controls.h"
#include "app/tarnelapp.h"
#include "capture/record_clock.h"
#include "engine/overlay.h"
#include "engine/stamp.h"
#include "platform/camera/camera_config.h"
#include "platform/camera/camera_roll.h"
#include "platform/camera/film_trouble.h"
#include "platform/device/sandbox.h"
#include "platform/sound/soundplayer.h"

using namespace bb::cascades;

namespace {

constexpr const char* stop_sound = "event_recording_stop";

/// The film is turned as the handset is held when it begins.
void choose_rotation(tarnelApp* app) {
  app->mChooseVideoAngle = true;
  app->updateAngles(app->mRotation.mDisplayAngle);
  app->applyRotations(true);
  app->mChooseVideoAngle = false;
}

void say_why(tarnelApp* app, const std::string& reason) {
  app->showToast(("Cannot record: " + reason).c_str());
}

/// The toast about films that were cut off; empty if there are none.
std::string cut_off_notice(const std::vector<std::string>& films) {
  if (films.empty()) return {};
  if (films.size() == 1) return "A film was cut off. What was recorded of it is in the Camera folder: " + films[0];
  return std::to_string(films.size()) + " films were cut off. What was recorded of them is in the Camera folder.";
}

/// @param name  receives the film's path
/// @return false when there is no recording; nothing is left open then
bool start_film(tarnelApp* app, char (&name)[prefs_text_size]) {
  const camera_handle_t handle = app->mCameraHandle;
  if (const int error =
          camera_roll_open_video(handle, &app->mVideoFd, name, sizeof name, CAMERA_ROLL_VIDEO_FMT_DEFAULT)) {
    app->mVideoFd = -1;
    say_why(app, handset::film_trouble(error));
    return false;
  }
  const int error = camera_start_video(handle, name, nullptr, nullptr, nullptr);
  if (error == CAMERA_EOK) return true;
  say_why(app, error == EIO ? "the camera gives no picture" : handset::film_trouble(error));
  std::fputs("failed to start recording\n", stderr);
  camera_roll_close_video(app->mVideoFd);
  app->mVideoFd = -1;
  return false;
}

void show_recording_look(tarnelApp* app) {
  if (Label* const label = app->control<Label>("screensize")) label->setText(QString());
  set_visible(app->control<Container>("playContainer"), false);
  set_visible(app->control<Container>("RecordContainer"), true);
  app->show_light_state(app->control<ImageButton>("screenImg"));
  set_images(app->control<ImageButton>("imgbut_record_stop"), "asset:///images/ic_camera_stop.png",
             "asset:///images/ic_camera__stop_toggle.png");
}

void show_idle_look(tarnelApp* app) {
  set_visible(app->control<Container>("RecordContainer"), false);
  app->showMenuIcon(true);
  set_images(app->control<ImageButton>("imgbut_record_stop"), "asset:///images/ic_camera_normal.png",
             "asset:///images/ic_camera_toggle.png");
  set_images(app->control<ImageButton>("screenImg"), "asset:///images/icon_film.png",
             "asset:///images/icon_film_pressed.png");
  app->set_screen_size_label();
}

void start_recording(tarnelApp* app) {
  PrefsRecord& settings = app->mSettings;
  app->suspend_overlay();
  if (time_format(settings) > 0) app->generate_datetime();
  if (settings.shutterSound) soundplayer_play_sound_blocking("event_recording_start");
  choose_rotation(app);
  char name[prefs_text_size] = "";
  // The film begins when its effects are in place: with the overlay, which rests until the page has its new look.
  handset::camera_hold_video(app->mCameraHandle, true);
  if (!start_film(app, name)) {
    handset::camera_hold_video(app->mCameraHandle, false);
    restore_logo_image(app->mSavedOverlayEnabled);
    if (settings.shutterSound) soundplayer_play_sound(stop_sound);
    return;
  }
  // Before anything can go wrong with the page: the film that is being written must be found after a crash.
  app->mVideoBefore = settings.lastVideoPath;
  std::snprintf(settings.lastVideoPath, sizeof settings.lastVideoPath, "%s", name);
  app->save_settings();
  show_recording_look(app);
  app->start_record_timer();
  app->showMenuIcon(true);
  restore_logo_image(app->mSavedOverlayEnabled);
  handset::camera_hold_video(app->mCameraHandle, false);
  if (stamp_ticks(time_format(settings))) app->start_datetime_timer();
}

}  // namespace

void tarnelApp::onStartStopRecording() {
  if (mCameraHandle == CAMERA_HANDLE_INVALID) return;
  if (mVideoFd == -1) {
    start_recording(this);
  } else {
    end_recording();
  }
}

void tarnelApp::startRecording() {
  onStartStopRecording();
}

void tarnelApp::record_stop() {
  onStartStopRecording();
}

// Completes also when the film has ended by itself before.
void tarnelApp::end_recording() {
  if (mDatetimeTimer) mDatetimeTimer->stop();
  if (mRecordTimer) mRecordTimer->stop();
  if (mCameraHandle != CAMERA_HANDLE_INVALID) {
    camera_stop_video(mCameraHandle);
    if (mSettings.shutterSound) soundplayer_play_sound(stop_sound);
  }
  if (camera_roll_close_video(mVideoFd) == ENODATA) {
    // There is no such film: the one before it is the last one still.
    std::snprintf(mSettings.lastVideoPath, sizeof mSettings.lastVideoPath, "%s", mVideoBefore.c_str());
    save_settings();
  }
  mVideoFd = -1;
  show_idle_look(this);
  if (mLightOn) handleFlashLightAction();
  set_visible(control<Container>("playContainer"), mSettings.lastVideoPath[0] != '\0');
}

void tarnelApp::tidy_films(const handset::CompleteFilm& complete) {
  std::thread([app = QPointer<tarnelApp>(this), folder = camera_roll_dir(), complete] {
    const handset::RollFindings found = handset::tidy_camera_roll(folder, complete);
    const std::string words = cut_off_notice(found.completed);
    for (const std::string& name : found.completed) std::fprintf(stderr, "completed a film: %s\n", name.c_str());
    if (words.empty()) return;
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [app, words] {
          if (app) app->showToast(words.c_str());
        },
        Qt::QueuedConnection);
  }).detach();
}

void tarnelApp::start_record_timer() {
  if (!mRecordTimer) {
    mRecordTimer = new QTimer(this);
    connect(mRecordTimer, &QTimer::timeout, this, &tarnelApp::updateClockTimer);
  }
  mRecordTimer->start(record_clock_period_ms);
  mRecordSeconds = 0;
}

void tarnelApp::updateClockTimer() {
  ++mRecordSeconds;
  set_image(mRecordRedDotImg, record_dot_image(mRecordSeconds));
  if (mRecordLabel) mRecordLabel->setText(QString::fromStdString(record_clock_text(mRecordSeconds)));
}

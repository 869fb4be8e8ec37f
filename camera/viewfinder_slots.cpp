#include <QCoreApplication>
#include <QDebug>
#include <cerrno>
#include <cstdio>
#include <optional>

#include "app/page_controls.h"
#include "app/tarnelapp.h"
#include "camera/resolution.h"
#include "engine/color_filter.h"
#include "engine/filter_thread.h"
#include "engine/overlay.h"
#include "platform/camera/camera_config.h"

using namespace bb::cascades;

namespace {

/// Passed to the status callback, which ignores it.
void* const status_argument = reinterpret_cast<void*>(std::intptr_t{123});

/// @return false if the camera has no sizes
bool choose_size(tarnelApp* app) {
  std::int32_t& stored = resolution_field(app->mSettings, app->mCameraUnit);
  const std::optional<int> index = choose_resolution(app->mCameraUnit, stored, app->resolutions());
  if (!index) return false;
  app->mResolutionIndex = *index;
  // A choice beyond this camera's list is kept for the camera that it was made for.
  if (app->mCameraUnit != CAMERA_UNIT_DESKTOP && stored < static_cast<int>(app->resolutions().size())) stored = *index;
  return true;
}

void apply_stored_stabilization(tarnelApp* app) {
  if (!app->mSettings.stabilization) return;
  if (camera_set_video_property(app->mCameraHandle, CAMERA_IMGPROP_STABILIZATION, 1, CAMERA_IMGPROP_END) ==
      CAMERA_EOK) {
    app->turnon_stabilization();
  } else {
    std::perror("set CAMERA_IMGPROP_STABILIZATION failed: ");
  }
}

void read_initial_angles(tarnelApp* app) {
  rotation_state_s& angles = app->mRotation;
  if (camera_get_video_property(app->mCameraHandle, CAMERA_IMGPROP_ROTATION, &angles.mVideoAngle, CAMERA_IMGPROP_END) ==
      CAMERA_EOK) {
    qDebug().noquote() << "initial video angle" << angles.mVideoAngle;
  }
  if (camera_get_vf_property(app->mCameraHandle, CAMERA_IMGPROP_ROTATION, &angles.mVfAngle, CAMERA_IMGPROP_END) ==
      CAMERA_EOK) {
    qDebug().noquote() << "initial viewfinder angle" << angles.mVfAngle;
  }
}

/// Setup that depends on the camera alone, before its streams run.
void configure_camera(tarnelApp* app, const camera_res_t& size) {
  const int width = static_cast<int>(size.width);
  const int height = static_cast<int>(size.height);
  std::fprintf(stderr, "Selecting resolution %d x %d index=%d\n", width, height, app->mResolutionIndex);
  app->set_screen_size_label();
  apply_stored_stabilization(app);
  camera_set_focus_mode(app->mCameraHandle, CAMERA_FOCUSMODE_CONTINUOUS_AUTO);
  _screen_wid = width;
  _screen_hi = height;
  std::fprintf(stderr, "video wid %d hi %d\n", width, height);
  app->querySupportedRotations();
  if (_device_z10) read_initial_angles(app);
  qDebug().noquote() << "camera opened";
}

/// @return 0, or an errno value
int start_streams(camera_handle_t handle, const camera_res_t& size, const QByteArray& group, const QByteArray& id) {
  const int width = static_cast<int>(size.width);
  const int height = static_cast<int>(size.height);
  camera_set_video_property(handle, CAMERA_IMGPROP_WIDTH, width, CAMERA_IMGPROP_HEIGHT, height, CAMERA_IMGPROP_END);
  const int refused = camera_set_vf_property(handle, CAMERA_IMGPROP_WIDTH, width, CAMERA_IMGPROP_HEIGHT, height,
                                             CAMERA_IMGPROP_WIN_GROUPID, group.constData(), CAMERA_IMGPROP_WIN_ID,
                                             id.constData(), CAMERA_IMGPROP_END);
  if (refused != CAMERA_EOK) return refused;
  std::fputs("viewfinder configured\n", stderr);
  const int failed = camera_start_video_viewfinder(handle, nullptr, tarnelApp::status_callback, status_argument);
  if (failed == CAMERA_EOK) std::fputs("viewfinder started\n", stderr);
  return failed;
}

/// Setup once the camera runs.
/// @return 0, or an errno value if no frame would be edited
int enter_running(tarnelApp* app) {
  app->apply_stored_scene();
  if (app->mSettings.lastVideoPath[0] != '\0') set_visible(app->control<Container>("playContainer"), true);
  bool smooth = false;
  camera_get_zoom_limits(app->mCameraHandle, &app->mZoomLimits.mZoomMin, &app->mZoomLimits.mZoomMax, &smooth);
  return start_filter_thread(app->mCameraHandle);
}

int give_up(tarnelApp* app, int error) {
  std::fputs("couldn't start viewfinder\n", stderr);
  errno = error;
  std::perror("error: ");
  camera_close(app->mCameraHandle);
  app->mCameraHandle = CAMERA_HANDLE_INVALID;
  return EIO;
}

bool start_lens(tarnelApp* app, camera_unit_t unit) {
  const ForeignWindowControl& window = *app->mViewfinderWindow;
  if (app->createViewfinder(unit, window.windowGroup(), window.windowId()) != 0) return false;
  qDebug().noquote() << "created viewfinder";
  // The stamp was placed for the previous camera's frames. Before the first one there is none, nor its glyph sheet.
  const bool drawn_before = datetime_image.enabled || !app->mDatetimeImage.isNull();
  if (time_format(app->mSettings) > 0 && drawn_before) app->generate_datetime();
  return true;
}

}  // namespace

int tarnelApp::createViewfinder(camera_unit_t unit, const QString& group, const QString& id) {
  // Opening the desktop may ask its user first, while timers keep running.
  static bool opening = false;
  if (mCameraHandle != CAMERA_HANDLE_INVALID || opening) {
    qDebug().noquote() << "camera already running";
    return EBUSY;
  }
  mCameraUnit = unit;
  camera_handle_t handle = CAMERA_HANDLE_INVALID;
  opening = true;
  const int refused = camera_open(unit, CAMERA_MODE_ALL, &handle);
  opening = false;
  if (refused != CAMERA_EOK) {
    qDebug().noquote() << "could not open camera";
    return EIO;
  }
  mCameraHandle = handle;
  mHandle = handle;
  if (unit != CAMERA_UNIT_DESKTOP) _screen_recording = false;
  get_video_size(nullptr);
  if (!choose_size(this)) return give_up(this, ENODATA);
  const camera_res_t size = mResolutions[mResolutionIndex];
  configure_camera(this, size);
  if (const int error = start_streams(handle, size, group.toUtf8(), id.toUtf8())) return give_up(this, error);
  if (const int error = enter_running(this)) return give_up(this, error);
  return 0;
}

void tarnelApp::onStartRear() {
  if (mViewfinderWindow) start_lens(this, CAMERA_UNIT_REAR);
}

void tarnelApp::onStartFront() {
  std::fputs("\nonStartFront - unit desktop\n", stderr);
  if (!mViewfinderWindow || start_lens(this, CAMERA_UNIT_FRONT)) return;
  std::fputs("\ncan't open - unit desktop\n", stderr);
}

void tarnelApp::onStopCamera() {
  if (mVideoFd != -1) handset::camera_wait_first_frame(mCameraHandle);
  kill_thread();
  if (mCameraHandle == CAMERA_HANDLE_INVALID) return;
  // The recording that ends with the camera would have switched it off, and no longer can.
  if (mVideoFd != -1 && mLightOn) handleFlashLightAction();
  camera_close(mCameraHandle);
  mCameraHandle = CAMERA_HANDLE_INVALID;
  if (mVideoFd != -1) end_recording();
}

void tarnelApp::status_callback(camera_handle_t handle, camera_devstatus_t status, std::uint16_t extra, void* arg) {
  if (handle != mHandle) return;  // from a camera closed meanwhile
  filter_status_callback(handle, status, extra, arg);
  if (status != CAMERA_STATUS_RESOURCES_REVOKED && status != CAMERA_STATUS_VIDEO_FAILED) return;
  // The recording is over: clock and stop button must not stay on without one.
  QMetaObject::invokeMethod(
      QCoreApplication::instance(),
      [handle] {
        auto* const app = QCoreApplication::instance()->findChild<tarnelApp*>(QString(), Qt::FindDirectChildrenOnly);
        if (app && app->mCameraHandle == handle && app->mVideoFd != -1) app->end_recording();
      },
      Qt::QueuedConnection);
}

void tarnelApp::reopen_camera() {
  const auto* const film = control<Container>("videoContainer");
  const bool film_is_shown = film && film->isVisible();
  if (mVideoFd != -1 || film_is_shown) return;
  if (mMenuMode == menu_sizes) hide_menu();  // they belong to the other camera
  const int width = _screen_wid;
  const int height = _screen_hi;
  const bool light_was_on = mLightOn;
  suspend_overlay();
  if (mCameraUnit == CAMERA_UNIT_REAR && mLightOn) handleFlashLightAction();
  onStopCamera();
  restartCamera();
  if (width == _screen_wid && height == _screen_hi) {
    restore_logo_image(mSavedOverlayEnabled);
  } else if (mSettings.overlayPath[0] != '\0') {
    load_logo(mSettings.overlayPath);
  }
  if (light_was_on && !mLightOn) handleFlashLightAction();
}

void tarnelApp::restartCamera() {
  _busy = false;
  if (mCameraUnit == CAMERA_UNIT_FRONT) {
    onStartFront();
  } else {
    onStartRear();
  }
}

void tarnelApp::handleSwitchCameraAction() {
  suspend_overlay();
  if (mCameraUnit == CAMERA_UNIT_REAR && mLightOn) handleFlashLightAction();
  onStopCamera();
  if (mCameraUnit == CAMERA_UNIT_FRONT) {
    onStartRear();
  } else {
    onStartFront();
  }
  if (mSettings.overlayPath[0] != '\0') load_logo(mSettings.overlayPath);
}

void tarnelApp::turnon_stabilization() {
  set_menu_text(_menuIcons[main_row_mode], _menuModeIcons[mode_row_stabilization]);
  set_menu_text(_menuIconNames[main_row_mode], _menuModeIconNames[mode_row_stabilization]);
  set_image(mModeIcon, _menuModeIcons[mode_row_stabilization]);
  set_visible(mModeIcon, true);
}

void tarnelApp::choose_mode_row(int row) {
  const bool on = row == mode_row_stabilization;
  if (camera_set_video_property(mCameraHandle, CAMERA_IMGPROP_STABILIZATION, on ? 1 : 0, CAMERA_IMGPROP_END) !=
      CAMERA_EOK) {
    std::fputs("error in stabilization set\n", stderr);
    hide_menu();
    return;
  }
  std::fputs("stabilization set\n", stderr);
  mSettings.stabilization = on ? 1 : 0;
  if (on) {
    turnon_stabilization();
  } else {
    set_visible(mModeIcon, false);
    set_menu_text(_menuIcons[main_row_mode], _menuModeIcons[mode_row_normal]);
    set_menu_text(_menuIconNames[main_row_mode], _menuModeIconNames[mode_row_normal]);
  }
  save_settings();
  hide_menu();
}

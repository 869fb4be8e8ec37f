#include <QDebug>
#include <algorithm>

#include "app/tarnelapp.h"

using namespace bb::cascades;

namespace {

void flush_window(screen_window_t window) {
  void* context = nullptr;
  if (screen_get_window_property_pv(window, SCREEN_PROPERTY_CONTEXT, &context) == 0) {
    screen_flush_context(static_cast<screen_context_t>(context), 0);
  }
}

int display_direction() {
  return OrientationSupport::instance()->displayDirection();
}

}  // namespace

void tarnelApp::querySupportedRotations() {
  mSeparateVfRotation = !camera_has_feature(mCameraHandle, CAMERA_FEATURE_SHARED_ROTATION);
  mVideoRotations.reset();
  mNumVideoRotations = 0;
  int format = 0;
  if (camera_get_vf_property(mCameraHandle, CAMERA_IMGPROP_FORMAT, &format, CAMERA_IMGPROP_END) != CAMERA_EOK) {
    qDebug().noquote() << "error reading video format";
    return;
  }
  const auto type = static_cast<camera_frametype_t>(format);
  int count = 0;
  if (camera_get_supported_video_rotations(mCameraHandle, type, 0, &count, nullptr) == CAMERA_EOK) {
    mNumVideoRotations = count;
  } else {
    qDebug().noquote() << "error querying num video rotations";
  }
  mVideoRotations = std::make_unique<int[]>(static_cast<std::size_t>(mNumVideoRotations));
  if (camera_get_supported_video_rotations(mCameraHandle, type, mNumVideoRotations, &count, mVideoRotations.get()) !=
      CAMERA_EOK) {
    qDebug().noquote() << "error querying video rotations";
  } else {
    mNumVideoRotations = std::min(mNumVideoRotations, count);
  }
}

void tarnelApp::updateAngles(int displayDirection) {
  const rotation_inputs_s inputs{
      .front = mCameraUnit == CAMERA_UNIT_FRONT,
      .camera_open = mCameraHandle != CAMERA_HANDLE_INVALID,
      .mChooseVideoAngle = mChooseVideoAngle,
      .mSeparateVfRotation = mSeparateVfRotation,
      .mVideoRotations = {mVideoRotations.get(), static_cast<std::size_t>(mNumVideoRotations)}};
  const rotation_update_s update = update_angles(mRotation, displayDirection, inputs);
  mRotation = update.state;
  qDebug().noquote() << QString::fromStdString(update.log);
}

void tarnelApp::applyRotations(bool flush) {
  camera_set_vf_property(mCameraHandle, CAMERA_IMGPROP_ROTATION, mRotation.mVfAngle, CAMERA_IMGPROP_END);
  camera_set_video_property(mCameraHandle, CAMERA_IMGPROP_ROTATION, mRotation.mVideoAngle, CAMERA_IMGPROP_END);
  if (!mViewfinderWindow || !mViewfinderWindow->isBound()) return;
  const screen_window_t window = mViewfinderWindow->windowHandle();
  const int mirror = mRotation.mMirror ? 1 : 0;
  screen_set_window_property_iv(window, SCREEN_PROPERTY_ROTATION, &mRotation.mWindowAngle);
  screen_set_window_property_iv(window, SCREEN_PROPERTY_MIRROR, &mirror);
  if (flush) flush_window(window);
}

void tarnelApp::onWindowAttached(screen_window_t win, QString group, QString id) {
  qDebug().noquote().nospace() << "onWindowAttached: " << static_cast<const void*>(win) << ", " << group << ", " << id;
  const int behind = -1;
  screen_set_window_property_iv(win, SCREEN_PROPERTY_ZORDER, &behind);
  updateAngles(display_direction());
  applyRotations(true);
  flush_window(win);
}

void tarnelApp::onOrientationAboutToChange(UIOrientation::Type orientation) {
  updateAngles(display_direction());
  qDebug().noquote().nospace() << "onOrientationAboutToChange() " << mRotation.mDisplayAngle;
  qDebug().noquote().nospace() << "orientation " << static_cast<int>(orientation);
  applyRotations(true);
}

#include <QDebug>

#include "app/page_controls.h"
#include "app/tarnelapp.h"
#include "engine/filter_thread.h"
#include "engine/overlay.h"

using namespace bb::cascades;

void tarnelApp::startScreenRecorder() {
  if (control<Container>("screenrecorderContainer")) {
    set_images(control<ImageButton>("screenrecord_img"), "asset:///images/ic_stop_normal.png",
               "asset:///images/ic_stop_selected.png");
  }
  handleScreenRecordingAction();
}

void tarnelApp::handleScreenRecordingAction() {
  suspend_logo_image();
  if (mCameraUnit == CAMERA_UNIT_REAR && mLightOn) handleFlashLightAction();
  onStopCamera();
  _screen_recording = false;
  if (!mViewfinderWindow) return;
  if (createViewfinder(CAMERA_UNIT_DESKTOP, mViewfinderWindow->windowGroup(), mViewfinderWindow->windowId()) != 0)
    return;
  qDebug().noquote() << "created viewfinder";
  _screen_recording = true;
}

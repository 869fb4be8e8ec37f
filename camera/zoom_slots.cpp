#include "camera/zoom.h"

#include "app/tarnelapp.h"
#include "engine/color_filter.h"

using bb::cascades::PinchEvent;

void tarnelApp::onPinchStart([[maybe_unused]] PinchEvent* pinchEvent) {
  mZoomState = pinch_start(mZoomState);
  last_zoom = mZoomState.last_zoom;
  _busy = mZoomState.busy;
}

void tarnelApp::onPinchUpdate(PinchEvent* pinchEvent) {
  const zoom_update_s update = pinch_update(mZoomState, pinchEvent->pinchRatio(), mZoomLimits);
  mZoomState = update.state;
  last_zoom = mZoomState.last_zoom;
  if (update.level) camera_set_zoom(mCameraHandle, *update.level, true);
}

void tarnelApp::onPinchEnd([[maybe_unused]] PinchEvent* pinchEvent) {
  mZoomState = pinch_end(mZoomState);
  _busy = mZoomState.busy;
}

void tarnelApp::onPinchCancel() {
  onPinchEnd(nullptr);
}

#include "app/page_controls.h"
#include "app/tarnelapp.h"
#include "platform/camera/camera_config.h"

void tarnelApp::handleFlashLightAction() {
  if (!camera_has_feature(mCameraHandle, CAMERA_FEATURE_VIDEOLIGHT)) return;
  const bool on = !mLightOn;
  set_menu_text(_menuIcons[main_row_light],
                on ? "asset:///images/icon_lighton.png" : "asset:///images/icon_lightoff.png");
  camera_config_videolight(mCameraHandle, on ? CAMERA_VIDEOLIGHT_ON : CAMERA_VIDEOLIGHT_OFF);
  mLightOn = on;
}

void tarnelApp::show_light_state(bb::cascades::ImageButton* button) {
  const char* const on = "asset:///images/icon_rec_lighton.png";
  const char* const off = "asset:///images/icon_rec_lightoff.png";
  set_images(button, mLightOn ? on : off, mLightOn ? off : on);
  if (button) button->setProperty("lightIsLamp", handset::camera_light_is_lamp(mCameraHandle));
}

#include "camera/resolution.h"

#include <algorithm>

#include "app/page_controls.h"
#include "app/tarnelapp.h"
#include "engine/overlay_loader.h"
#include "engine/stamp.h"
#include "platform/cascades/animation.h"

using namespace bb::cascades;

namespace {

/// Of the size list, which opens without the status area above it; pixels.
constexpr float list_top_padding = 10.0F;

void open_size_list(tarnelApp* app) {
  app->showMenuIcon(false);
  app->mMenuMode = menu_sizes;
  _num_menu_choices = _num_screen_res;
  app->updateTrackInformation();
  if (!app->mListMenuContainer) return;
  app->mListMenuContainer->setVisible(true);
  if (app->mMenuAnim) app->mMenuAnim->play();
}

}  // namespace

void tarnelApp::get_video_size([[maybe_unused]] DropDown* unused) {
  delete[] mResolutions;
  mResolutions = nullptr;
  unsigned count = 0;
  camera_get_video_vf_resolutions(mCameraHandle, 0, &count, nullptr);
  mResolutions = new camera_res_t[count]{};
  unsigned filled = 0;
  camera_get_video_vf_resolutions(mCameraHandle, count, &filled, mResolutions);
  _num_screen_res = static_cast<int>(std::min(filled, count));
  mResolutionIndex = preferred_resolution(resolutions());
}

void tarnelApp::set_screen_size_label() {
  Label* const label = control<Label>("screensize");
  if (!label) return;
  const int stored = resolution_field(mSettings, mCameraUnit);
  label->setText(QString::fromStdString(resolution_label(stored, resolutions())));
}

void tarnelApp::setScreenSize() {
  if (mVideoFd != -1) {
    handleFlashLightAction();
    ImageButton* const button = control<ImageButton>("screenImg");
    show_light_state(button);
    set_visible(button, true);
    return;
  }
  Container* const list = control<Container>("iconListViewContainer");
  if (!list) return;
  list->setTopPadding(list_top_padding);
  open_size_list(this);
}

void tarnelApp::choose_resolution_row(int row) {
  resolution_field(mSettings, mCameraUnit) = row;
  save_settings();
  hide_menu();
  const bool light_was_on = mLightOn;
  suspend_overlay();
  if (mCameraUnit == CAMERA_UNIT_REAR && mLightOn) handleFlashLightAction();
  onStopCamera();
  if (mCameraUnit == CAMERA_UNIT_FRONT) {
    onStartFront();
  } else {
    onStartRear();
  }
  free_datetime_image();
  generate_datetime();
  logo_pos = logo_position(mSettings);
  if (mSettings.overlayPath[0] != '\0') load_logo(mSettings.overlayPath);
  if (light_was_on) handleFlashLightAction();
}

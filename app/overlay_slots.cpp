#include <QDir>
#include <QFile>
#include <QTimer>

#include "app/page_controls.h"
#include "app/tarnelapp.h"
#include "engine/color_filter.h"
#include "engine/overlay.h"
#include "engine/overlay_loader.h"
#include "engine/picture.h"

namespace cascades = bb::cascades;

namespace {

constexpr int overlay_delay_ms = 1000;

}  // namespace

void tarnelApp::suspend_overlay() {
  mSavedOverlayEnabled = suspend_logo_image();
}

bool tarnelApp::load_logo(const char* path) {
  if (!store_overlay_path(mSettings.overlayPath, path)) return false;
  suspend_logo_image();
  QTimer::singleShot(overlay_delay_ms, this, &tarnelApp::delay_load_logo);
  return true;
}

/// The overlay has been suspended before.
void tarnelApp::replace_overlay(const char* path, bool fill_frame) {
  const bool filled_frame = fullscreen.exchange(fill_frame);
  if (load_logo(path)) return;
  fullscreen = filled_frame;
  restore_logo_image(mSavedOverlayEnabled);
}

void tarnelApp::delay_load_logo() {
  // Dialogs run an event loop of their own, in which the next load may come due.
  mOverlayOutdated = mBuildingOverlay;
  if (mBuildingOverlay) return;
  mBuildingOverlay = true;
  do {
    mOverlayOutdated = false;
    build_overlay();
  } while (mOverlayOutdated);
  mBuildingOverlay = false;
}

void tarnelApp::build_overlay() {
  free_logo_image();
  const QByteArray chosen = mSettings.overlayPath;
  if (chosen.isEmpty()) return;  // taken back while the timer ran
  const QByteArray path = QFile::encodeName(QDir::current().absoluteFilePath(QFile::decodeName(chosen)));
  logo_pos = logo_position(mSettings);
  const bool stretch = !fullscreen && wants_resize(path.constData());
  if (chosen != mSettings.overlayPath) return;  // the answer was to a question about another picture
  mOverlayOutdated = false;
  if (stretch) fullscreen = true;
  if (logo_load_image(0, 0, path.constData(), fullscreen) == 0) {
    mSavedOverlayEnabled = true;  // whatever suspended the overlay before it was there
  } else {
    showAlert("Texture must be in ARG32 format.");
  }
}

bool tarnelApp::wants_resize(const char* path) {
  return resize_question_applies(read_picture(path)) && AskAlert("Resize texture to full screen?");
}

void tarnelApp::open_file_picker(int) {
  namespace pickers = cascades::pickers;
  // Opened a second time, it would forget that the overlay was on.
  if (!mPickerOpen) suspend_overlay();
  mPickerOpen = true;
  mFilePicker->setMode(pickers::FilePickerMode::Picker);
  mFilePicker->setType(pickers::FileType::Picture);
  mFilePicker->open();
}

void tarnelApp::onFilesSelected(QStringList list) {
  if (list.isEmpty()) return onFileCanceled();
  mPickerOpen = false;
  mSelectedFile = list.first();
  replace_overlay(QFile::encodeName(mSelectedFile).constData(), false);
}

void tarnelApp::onFileCanceled() {
  mPickerOpen = false;
  restore_logo_image(mSavedOverlayEnabled);
}

void tarnelApp::changeFilterColor(float value) {
  ::changeFilterColor(value);
}

void tarnelApp::changeCustomColor(int type, float value) {
  ::changeCustomColor(type, value);
}

void tarnelApp::setModifyEffectColor() {
  auto* const tolerance = control<cascades::Container>("setColorContainer");
  if (!tolerance) return;
  _modify_color = !_modify_color;
  tolerance->setVisible(_modify_color);
  set_visible(control<cascades::Container>("screensizeContainer"), !_modify_color);
  showMenuIcon(!_modify_color);
}

#include <QTimer>
#include <cstdint>

#include "app/page_controls.h"
#include "app/tarnelapp.h"
#include "engine/filter_thread.h"
#include "engine/overlay.h"
#include "engine/stamp.h"
#include "platform/cascades/qml_document.h"

namespace cascades = bb::cascades;

namespace {

constexpr const char* sheet_document = "asset:///Prefs.qml";

/// A drop-down's row is the field's value; what is read goes through the function that keeps it in its table.
struct choice_s {
  const char* control;
  std::int32_t PrefsRecord::*field;
  int (*index)(const PrefsRecord&);
};
constexpr choice_s choices[] = {
    {"timeformatDropdown", &PrefsRecord::timeFormat, time_format},
    {"colorDropdown", &PrefsRecord::timeColor, time_color},
    {"positionDropdown", &PrefsRecord::timePosition, time_position},
    {"position", &PrefsRecord::logoPosition, logo_position},
};

struct flag_s {
  const char* control;
  std::uint8_t PrefsRecord::*field;
};
constexpr flag_s flags[] = {
    {"shuttersound", &PrefsRecord::shutterSound},
    {"includelogo", &PrefsRecord::includeLogo},
    {"logooriginalcolor", &PrefsRecord::logoOriginalColor},
};

template <typename T>
T* sheet_control(const cascades::Sheet* sheet, const char* name) {
  return sheet ? sheet->findChild<T*>(QLatin1String(name)) : nullptr;
}

}  // namespace

int tarnelApp::read_settings() {
  fill_texture_titles(_menuSaveLogosIconNames);
  const int read = ::read_settings(prefs_path, &mSettings);
  _include_logo_original_color = mSettings.logoOriginalColor != 0;
  return read;
}

void tarnelApp::save_settings() {
  ::save_settings(prefs_path, mSettings);
}

void tarnelApp::handleSettingAction() {
  openSettings();
}

void tarnelApp::openSettings() {
  // Opened a second time, it would forget what was typed, and that the overlay was on.
  if (mSettingsSheet && mSettingsSheet->isOpened()) return;
  suspend_overlay();
  if (!mSettingsSheet) mSettingsSheet = load_settings_sheet();
  if (!mSettingsSheet) return;
  fill_settings_sheet();
  mSettingsSheet->open();
}

cascades::Sheet* tarnelApp::load_settings_sheet() {
  cascades::QmlDocument* const document = cascades::QmlDocument::create(QString::fromUtf8(sheet_document), this);
  document->setContextProperty(QStringLiteral("_mainApp"), this);
  auto* const sheet = document->createRootObject<cascades::Sheet>();
  if (!sheet) delete document;
  return sheet;
}

void tarnelApp::fill_settings_sheet() const {
  for (const choice_s& choice : choices) {
    auto* const control = sheet_control<cascades::DropDown>(mSettingsSheet, choice.control);
    if (control) control->setSelectedIndex(choice.index(mSettings));
  }
  for (const flag_s& flag : flags) {
    auto* const control = sheet_control<cascades::CheckBox>(mSettingsSheet, flag.control);
    if (control) control->setChecked(mSettings.*flag.field != 0);
  }
  const bool stamped = time_format(mSettings) != 0;
  set_visible(sheet_control<cascades::DropDown>(mSettingsSheet, "colorDropdown"), stamped);
  set_visible(sheet_control<cascades::DropDown>(mSettingsSheet, "positionDropdown"), stamped);
  set_visible(sheet_control<cascades::Container>(mSettingsSheet, "logooriginalcolor_container"),
              mSettings.includeLogo != 0);
}

void tarnelApp::read_settings_sheet() {
  for (const choice_s& choice : choices) {
    const auto* const control = sheet_control<cascades::DropDown>(mSettingsSheet, choice.control);
    if (control && control->selectedIndex() >= 0) mSettings.*choice.field = control->selectedIndex();
  }
  for (const flag_s& flag : flags) {
    const auto* const control = sheet_control<cascades::CheckBox>(mSettingsSheet, flag.control);
    if (control) mSettings.*flag.field = control->isChecked() ? 1 : 0;
  }
}

void tarnelApp::apply_settings() {
  _include_logo_original_color = mSettings.logoOriginalColor != 0;
  _include_logo = mSettings.includeLogo != 0;
  save_settings();
  free_datetime_image();
  if (time_format(mSettings) > 0) {
    load_datetime_template();
    generate_datetime();
  }
  // The format of a recording's stamp may have got or lost its seconds; otherwise only the start and stop see to that.
  if (mVideoFd != -1 && stamp_ticks(time_format(mSettings))) {
    start_datetime_timer();
  } else if (mDatetimeTimer) {
    mDatetimeTimer->stop();
  }
  if (mSettings.overlayPath[0] != '\0') load_logo(mSettings.overlayPath);
}

void tarnelApp::saveSettings() {
  read_settings_sheet();
  apply_settings();
  if (mSettingsSheet) mSettingsSheet->close();
}

void tarnelApp::cancelSettings() {
  restore_logo_image(mSavedOverlayEnabled);
  if (mSettingsSheet) mSettingsSheet->close();
}

// The settings sheet.

#include <gmock/gmock.h>

#include <QQmlEngine>
#include <cstring>
#include <filesystem>

#include "engine/filter_thread.h"
#include "engine/overlay.h"
#include "engine/overlay_loader.h"
#include "tests/application/app_fixture.h"
#include "tests/engine/overlay_planes.h"

namespace cascades = bb::cascades;

namespace {

class Settings : public AppTest {
 protected:
  template <typename T>
  T& on_sheet(const char* name) const {
    T* const found = app->mSettingsSheet->findChild<T*>(QLatin1String(name));
    EXPECT_NE(found, nullptr) << name;
    return *found;
  }
  int chosen(const char* name) const { return on_sheet<cascades::DropDown>(name).selectedIndex(); }
  void choose(const char* name, int row) const { on_sheet<cascades::DropDown>(name).setSelectedIndex(row); }
  bool checked(const char* name) const { return on_sheet<cascades::CheckBox>(name).isChecked(); }
  void check(const char* name, bool on) const { on_sheet<cascades::CheckBox>(name).setChecked(on); }
  bool shown(const char* name) const {
    EXPECT_TRUE(wait_until([&] { return on_sheet<QQuickItem>("shuttersound").isVisible(); })) << "the sheet slides in";
    return on_sheet<QQuickItem>(name).isVisible();
  }

  void change_everything() const {
    choose("timeformatDropdown", 6);
    choose("colorDropdown", 5);
    choose("positionDropdown", 4);
    choose("position", 3);
    check("shuttersound", false);
    check("includelogo", false);
    check("logooriginalcolor", false);
  }
  static std::string file() { return read_file(prefs_path); }
  static void show_overlay() {
    logo_image_s built = allocate_overlay(8, 8);
    built.enabled = true;
    logo_image_s old = exchange_overlay(logo_image, built);
    free_overlay(old);
  }
};

TEST_F(Settings, TheSheetIsFilledFromTheRecord) {
  settings.timeFormat = 3;
  settings.timeColor = 2;
  settings.timePosition = 1;
  settings.logoPosition = 6;
  settings.shutterSound = 0;
  settings.logoOriginalColor = 0;
  start();
  app->handleSettingAction();
  ASSERT_TRUE(app->mSettingsSheet && app->mSettingsSheet->isOpened());
  EXPECT_EQ(chosen("timeformatDropdown"), 3);
  EXPECT_EQ(chosen("colorDropdown"), 2);
  EXPECT_EQ(chosen("positionDropdown"), 1);
  EXPECT_EQ(chosen("position"), 6);
  EXPECT_FALSE(checked("shuttersound"));
  EXPECT_TRUE(checked("includelogo"));
  EXPECT_FALSE(checked("logooriginalcolor"));
  EXPECT_TRUE(shown("colorDropdown") && shown("positionDropdown") && shown("logooriginalcolor_container"));
}

TEST_F(Settings, WhatDoesNotApplyIsHiddenAndWildIndexesAreTheDefaults) {
  settings.timeFormat = 9;
  settings.timeColor = -1;
  settings.includeLogo = 0;
  start();
  app->handleSettingAction();
  EXPECT_EQ(chosen("timeformatDropdown"), 0);
  EXPECT_EQ(chosen("colorDropdown"), 0);
  EXPECT_FALSE(shown("colorDropdown") || shown("positionDropdown") || shown("logooriginalcolor_container"));
}

TEST_F(Settings, SavingStoresAndApplies) {
  start();
  app->handleSettingAction();
  change_everything();
  app->saveSettings();
  EXPECT_FALSE(app->mSettingsSheet->isOpened());
  const PrefsRecord stored = stored_settings();
  EXPECT_EQ(stored.timeFormat, 6);
  EXPECT_EQ(stored.timeColor, 5);
  EXPECT_EQ(stored.timePosition, 4);
  EXPECT_EQ(stored.logoPosition, 3);
  EXPECT_EQ(stored.shutterSound, 0);
  EXPECT_EQ(file()[18264], 0);
  EXPECT_EQ(stored.logoOriginalColor, 0);
  EXPECT_FALSE(_include_logo);
  EXPECT_FALSE(_include_logo_original_color);
  EXPECT_TRUE(datetime_image.enabled);
  EXPECT_EQ(datetime_image.width, 8 * 33 + 2 * 28 + 4);
  EXPECT_EQ(datetime_image.x, 1280 - datetime_image.width);

  cascades::Sheet* const sheet = app->mSettingsSheet;
  app->mSettings.timeColor = 1;
  app->handleSettingAction();
  EXPECT_EQ(app->mSettingsSheet, sheet);
  EXPECT_EQ(chosen("colorDropdown"), 1);
  choose("timeformatDropdown", 0);
  app->saveSettings();
  EXPECT_FALSE(datetime_image.enabled);
  EXPECT_EQ(datetime_image.luma, nullptr);
}

TEST_F(Settings, CancellingChangesNothing) {
  settings.timeFormat = 5;
  start();
  show_overlay();
  const std::string before = file();
  app->handleSettingAction();
  EXPECT_FALSE(logo_image.enabled);
  change_everything();
  app->handleSettingAction();  // a second time while it is open
  EXPECT_EQ(chosen("timeformatDropdown"), 6);
  app->cancelSettings();
  EXPECT_FALSE(app->mSettingsSheet->isOpened());
  EXPECT_TRUE(logo_image.enabled);
  EXPECT_TRUE(datetime_image.enabled);
  EXPECT_EQ(file(), before);
  EXPECT_EQ(app->mSettings.timeFormat, 5);
  app->handleSettingAction();
  EXPECT_EQ(chosen("timeformatDropdown"), 5);
}

TEST_F(Settings, SavingLoadsTheOverlayAnew) {
  start();
  fullscreen = true;
  app->load_logo(sandbox.file("app/native/assets/images/textures/eff_brick.png").c_str());
  ASSERT_TRUE(wait_until([] { return logo_image.enabled; }));
  fullscreen = false;
  QImage picture(_screen_wid, 100, QImage::Format_ARGB32);
  picture.fill(Qt::red);
  ASSERT_TRUE(picture.save(QString::fromStdString(sandbox.file("data/red.png"))));
  app->load_logo("data/red.png");
  ASSERT_TRUE(wait_until([] { return logo_image.enabled; }));
  EXPECT_EQ(logo_image.y, 0);
  app->handleSettingAction();
  choose("position", 3);
  app->saveSettings();
  ASSERT_TRUE(wait_until([] { return logo_image.enabled; }));
  EXPECT_EQ(logo_image.y, (_screen_hi - 100) / 2);
}

TEST_F(Settings, MissingControlsKeepTheirFields) {
  settings.timeColor = 4;
  settings.shutterSound = 1;
  start();
  app->handleSettingAction();
  delete &on_sheet<QObject>("colorDropdown");
  delete &on_sheet<QObject>("logooriginalcolor_container");
  app->cancelSettings();
  app->handleSettingAction();
  choose("timeformatDropdown", -1);
  check("shuttersound", false);
  app->saveSettings();
  EXPECT_EQ(stored_settings().timeColor, 4);
  EXPECT_EQ(stored_settings().timeFormat, 0);
  EXPECT_EQ(stored_settings().logoOriginalColor, 1);
  EXPECT_EQ(stored_settings().shutterSound, 0);
}

TEST_F(Settings, ASheetThatIsNoneOnlySwitchesTheOverlayOff) {
  const std::string path = sandbox.file("app/native/assets/Prefs.qml");
  for (const char* const text : {"import bb.cascades.state 1.0\nPage {}\n", "nonsense"}) {
    std::filesystem::remove(path);
    write_file(path, text);
    cascades::Application::instance()->engine()->clearComponentCache();
    start();
    show_overlay();
    app->handleSettingAction();
    EXPECT_EQ(app->mSettingsSheet, nullptr);
    EXPECT_FALSE(logo_image.enabled);
    app->cancelSettings();
    EXPECT_TRUE(logo_image.enabled);
    app->saveSettings();
    end();
  }
}

TEST_F(Settings, AFailedSaveStillApplies) {
  start();
  app->handleSettingAction();
  choose("timeformatDropdown", 8);
  std::filesystem::remove(prefs_path);
  std::filesystem::create_directories(std::filesystem::path(prefs_path) / "full");
  EXPECT_EQ(errors_of([&] { app->saveSettings(); }), "error saving prefs: : Is a directory\n");
  EXPECT_EQ(app->mSettings.timeFormat, 8);
  EXPECT_TRUE(datetime_image.enabled);
}

}  // namespace

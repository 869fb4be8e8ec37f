#include "tests/application/app_fixture.h"

#include <cstdlib>
#include <filesystem>

#include "engine/overlay_loader.h"
#include "platform/cascades/assets.h"
#include "tests/application/fake_camera_service.h"
#include "tests/engine/engine_state.h"
#include "tests/support/surroundings.h"

namespace fs = std::filesystem;
using bb::cascades::Application;

namespace {

constexpr int patience_ms = 10000;

// Owned by GoogleTest.
[[maybe_unused]] testing::Environment* const surroundings = testing::AddGlobalTestEnvironment(new Surroundings);

/// Links to what `from` holds, but for what is there already.
void link_all(const fs::path& from, const fs::path& to) {
  fs::create_directories(to);
  for (const fs::directory_entry& entry : fs::directory_iterator(from)) {
    const fs::path link = to / entry.path().filename();
    if (!fs::exists(fs::symlink_status(link))) fs::create_symlink(entry.path(), link);
  }
}

void make_package(const fs::path& package) {
  link_all(TEST_PACKAGE_DIR, package / "native/assets");
  link_all(fs::path(MORVANE_PACKAGE_DIR) / "native/assets", package / "native/assets");
  link_all(fs::path(MORVANE_PACKAGE_DIR) / "native", package / "native");
}

}  // namespace

AppTest::AppTest() : settings(default_settings()) {
  settings.firstRunHintShown = 1;
  settings.installRegistered = 1;
  fs::create_directory(sandbox.file("data"));
  make_package(sandbox.file("app"));
  fs::current_path(sandbox.path());
  setenv("HOME", sandbox.file("data").c_str(), 1);
  bb::cascades::set_package_dir(QString::fromStdString(sandbox.file("app")));
  fake_camera::reset();
  reset_engine();
  fullscreen = false;
  logo_pos = 0;
}

AppTest::~AppTest() {
  end();
  fs::current_path("/");
}

void AppTest::start() {
  ::save_settings(prefs_path, settings);
  start_as_it_is();
}

void AppTest::start_as_it_is() {
  app = std::make_unique<tarnelApp>(Application::instance());
}

void AppTest::end() {
  app.reset();
}

std::string AppTest::errors_of(const std::function<void()>& action) {
  testing::internal::CaptureStderr();
  action();
  return testing::internal::GetCapturedStderr();
}

bool AppTest::wait_until(const std::function<bool()>& condition) {
  return run_until(condition, patience_ms);
}

void AppTest::wait_for(int milliseconds) {
  run_for(milliseconds);
}

void AppTest::remove(const char* name) const {
  delete app->mRoot->findChild<QObject*>(QLatin1String(name));
}

PrefsRecord AppTest::stored_settings() {
  PrefsRecord record;
  ::read_settings(prefs_path, &record);
  return record;
}

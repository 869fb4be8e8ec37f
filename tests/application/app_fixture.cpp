#include "tests/application/app_fixture.h"

#include <unistd.h>

#include <QElapsedTimer>
#include <QTimer>
#include <cstdlib>
#include <filesystem>

#include "engine/overlay_loader.h"
#include "platform/cascades/assets.h"
#include "tests/application/fake_camera_service.h"
#include "tests/engine/engine_state.h"

namespace fs = std::filesystem;
using bb::cascades::Application;

namespace {

constexpr int patience_ms = 10000;

/// Lives from before the first test until after the last one: Qt allows one application at a time, and what it reads
/// from the environment it reads once.
class Surroundings : public testing::Environment {
 public:
  void SetUp() override {
    for (const char* const name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"}) {
      setenv(name, home_.file(name).c_str(), 1);
    }
    setenv("XDG_RUNTIME_DIR", home_.path().c_str(), 1);
    setenv("HOME", home_.path().c_str(), 1);
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    setenv("QT_QUICK_BACKEND", "software", 1);
    application_ = std::make_unique<Application>(argc_, argv_);
  }
  void TearDown() override { application_.reset(); }

 private:
  const TempDir home_;
  int argc_ = 1;
  char name_[8] = "morvane";
  char* argv_[2] = {name_, nullptr};
  std::unique_ptr<Application> application_;
};

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
  QElapsedTimer clock;
  clock.start();
  while (!condition()) {
    if (clock.elapsed() > patience_ms) return false;
    QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    usleep(1000);
  }
  return true;
}

void AppTest::wait_for(int milliseconds) {
  QEventLoop loop;
  QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
  loop.exec();
}

void AppTest::remove(const char* name) const {
  delete app->mRoot->findChild<QObject*>(QLatin1String(name));
}

PrefsRecord AppTest::stored_settings() {
  PrefsRecord record;
  ::read_settings(prefs_path, &record);
  return record;
}

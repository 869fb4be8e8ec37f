#include "tests/system/window_test.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QKeyEvent>
#include <QQuickWindow>
#include <QTimer>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "platform/cascades/application.h"

namespace {

class Surroundings : public testing::Environment {
 public:
  const std::string& home() const { return home_.path(); }
  void SetUp() override {
    for (const char* const name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
      setenv(name, home_.file(name).c_str(), 1);
    setenv("XDG_RUNTIME_DIR", home_.path().c_str(), 1);
    setenv("HOME", home_.path().c_str(), 1);
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    setenv("QT_QUICK_BACKEND", "software", 1);
    std::filesystem::create_directories(home_.file("Pictures"));
    application_ = std::make_unique<bb::cascades::Application>(argc_, argv_);
  }
  void TearDown() override { application_.reset(); }

 private:
  const TempDir home_;
  int argc_ = 1;
  char name_[8] = "morvane";
  char* argv_[2] = {name_, nullptr};
  std::unique_ptr<bb::cascades::Application> application_;
};

// Owned by GoogleTest.
Surroundings* const surroundings = new Surroundings;
[[maybe_unused]] testing::Environment* const registered = testing::AddGlobalTestEnvironment(surroundings);

}  // namespace

/// A test before may have ended the application's loop, which closes the window.
WindowTest::WindowTest() {
  bb::cascades::Application::instance()->desktopWindow()->show();
}

const std::string& WindowTest::home() {
  return surroundings->home();
}

bool WindowTest::wait_until(const std::function<bool()>& condition, int patience_ms) {
  QElapsedTimer clock;
  clock.start();
  while (!condition()) {
    if (clock.elapsed() > patience_ms) return false;
    wait_for(5);
  }
  return true;
}

void WindowTest::wait_for(int milliseconds) {
  QEventLoop loop;
  QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
  loop.exec();
}

void WindowTest::press(Qt::Key key, const QString& text) {
  for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
    QKeyEvent event(type, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(bb::cascades::Application::instance()->desktopWindow(), &event);
  }
}

std::string WindowTest::errors_of(const std::function<void()>& action) {
  testing::internal::CaptureStderr();
  action();
  return testing::internal::GetCapturedStderr();
}

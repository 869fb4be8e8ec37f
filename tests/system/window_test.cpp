#include "tests/system/window_test.h"

#include <QElapsedTimer>
#include <QKeyEvent>
#include <QQuickWindow>
#include <filesystem>

#include "platform/cascades/application.h"
#include "tests/support/surroundings.h"

namespace {

class UserWithPictures : public Surroundings {
 protected:
  void prepare(const TempDir& home) override { std::filesystem::create_directories(home.file("Pictures")); }
};

// Owned by GoogleTest.
Surroundings* const surroundings = new UserWithPictures;
[[maybe_unused]] testing::Environment* const registered = testing::AddGlobalTestEnvironment(surroundings);

}  // namespace

/// A test before may have ended the application's loop, which closes the window.
WindowTest::WindowTest() {
  bb::cascades::Application::instance()->desktopWindow()->show();
}

const std::string& WindowTest::home() {
  return surroundings->home().path();
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
  run_for(milliseconds);
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

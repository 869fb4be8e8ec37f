#include "tests/support/surroundings.h"

#include <unistd.h>

#include <QElapsedTimer>
#include <QTimer>
#include <cstdlib>

bool Surroundings::on_display() {
  return qEnvironmentVariable("QT_QPA_PLATFORM") == QLatin1String("xcb");
}

void Surroundings::SetUp() {
  for (const char* const name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"}) {
    setenv(name, home_.file(name).c_str(), 1);
  }
  setenv("XDG_RUNTIME_DIR", home_.path().c_str(), 1);
  setenv("HOME", home_.path().c_str(), 1);
  unsetenv("WAYLAND_DISPLAY");
  if (!on_display()) {
    unsetenv("DISPLAY");
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
  }
  setenv("QT_QUICK_BACKEND", "software", 1);
  prepare(home_);
  application_ = std::make_unique<bb::cascades::Application>(argc_, argv_);
}

bool run_until(const std::function<bool()>& condition, int patience_ms) {
  QElapsedTimer clock;
  clock.start();
  while (!condition()) {
    if (clock.elapsed() > patience_ms) return false;
    QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    usleep(1000);
  }
  return true;
}

void run_for(int milliseconds) {
  QEventLoop loop;
  QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
  loop.exec();
}

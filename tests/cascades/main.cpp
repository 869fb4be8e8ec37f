// The test program, and the roles in which the tests start it as another process.

#include <gmock/gmock.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <cstdio>

#include "platform/cascades/assets.h"
#include "platform/cascades/single_instance.h"
#include "tests/cascades/fixture.h"

namespace {

QString package;

/// Takes the place of the one instance, says so, and keeps it until it is killed.
int hold_place(int& argc, char** argv) {
  QCoreApplication app(argc, argv);
  const handset::SingleInstance instance(argv[2]);
  std::puts(instance.is_first() ? "first" : "second");
  std::fflush(stdout);
  return instance.is_first() ? QCoreApplication::exec() : 0;
}

/// Takes half a second to be destroyed.
struct SlowToEnd : QObject {
  using QObject::QObject;
  ~SlowToEnd() override {
    std::puts("ending");
    std::fflush(stdout);
    QThread::msleep(500);
    std::puts("ended");
    std::fflush(stdout);
  }
};

/// An application with a window until a signal ends it.
int wait_for_end(int& argc, char** argv) {
  bb::cascades::Application app(argc, argv);
  new SlowToEnd(&app);
  QTimer::singleShot(0, [] {
    std::puts("running");
    std::fflush(stdout);
  });
  return bb::cascades::Application::exec();
}

}  // namespace

QString test_package() {
  return package;
}

QStringList role(const QString& name, const QStringList& arguments) {
  return QStringList{"--role-" + name} + arguments;
}

int main(int argc, char** argv) {
  if (argc > 2 && qstrcmp(argv[1], "--role-hold") == 0) return hold_place(argc, argv);
  if (argc > 1 && qstrcmp(argv[1], "--role-wait") == 0) return wait_for_end(argc, argv);
  // Nobody's preferences, no bus.
  const QTemporaryDir home;
  for (const char* variable : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"}) {
    qputenv(variable, home.path().toUtf8());
  }
  qunsetenv("DBUS_SESSION_BUS_ADDRESS");
  package = home.filePath("package");
  QDir().mkpath(package + "/native/assets");
  bb::cascades::set_package_dir(package);
  testing::InitGoogleMock(&argc, argv);
  bb::cascades::Application app(argc, argv);
  return RUN_ALL_TESTS();
}

#include "platform/cascades/keep_awake.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFile>

namespace handset {

namespace {

/// Connecting without an address would start a new bus.
bool has_bus() {
  return !qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") ||
         QFile::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/bus"));
}

QDBusMessage call(const char* method) {
  return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.ScreenSaver"),
                                        QStringLiteral("/org/freedesktop/ScreenSaver"),
                                        QStringLiteral("org.freedesktop.ScreenSaver"), QLatin1String(method));
}

}  // namespace

KeepAwake::~KeepAwake() {
  wanted_ = false;
  release();
}

void KeepAwake::set(bool awake) {
  if (wanted_ == awake) return;
  wanted_ = awake;
  if (!awake) return release();
  if (asked_ || cookie_ || !has_bus()) return;
  asked_ = true;
  QDBusMessage inhibit = call("Inhibit");
  inhibit << QCoreApplication::applicationName() << QStringLiteral("The camera is on");
  auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(inhibit), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
    const QDBusPendingReply<uint> reply = *finished;
    asked_ = false;
    if (!reply.isError()) cookie_ = reply.value();
    finished->deleteLater();
    if (!wanted_) release();
  });
}

void KeepAwake::release() {
  if (!cookie_) return;
  QDBusMessage uninhibit = call("UnInhibit");
  uninhibit << *cookie_;
  QDBusConnection::sessionBus().send(uninhibit);
  cookie_.reset();
}

}  // namespace handset

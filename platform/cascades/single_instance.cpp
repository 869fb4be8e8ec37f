#include "platform/cascades/single_instance.h"

#include <unistd.h>

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QDir>
#include <QLocalSocket>
#include <QLockFile>
#include <QThread>
#include <cstdio>

namespace handset {

namespace {

constexpr int patience_ms = 3000;
/// An instance that has closed its socket is completing its film, which may take fifteen seconds.
constexpr int end_patience_ms = 20000;
constexpr char token_variable[] = "XDG_ACTIVATION_TOKEN";

/// Next to other programs' sockets, or in the temporary folder if the user has no runtime folder.
QString base_name(const QString& sandbox) {
  const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
  const QString folder = !runtime.isEmpty() && QDir(runtime).exists() ? runtime : QDir::tempPath();
  const QByteArray key = QCryptographicHash::hash(sandbox.toUtf8(), QCryptographicHash::Sha1).toHex().left(12);
  return QStringLiteral("%1/morvane-%2-%3").arg(folder).arg(getuid()).arg(QString::fromLatin1(key));
}

/// Passes the desktop's activation token from this process to the running one.
enum class Answer { given, silence, nobody_there };
Answer ask_to_come_forward(const QString& name) {
  QLocalSocket socket;
  socket.connectToServer(name);
  if (!socket.waitForConnected(patience_ms)) return Answer::nobody_there;
  socket.write(qgetenv(token_variable) + '\n');
  const bool answered = socket.waitForBytesWritten(patience_ms) && socket.waitForReadyRead(patience_ms);
  return answered ? Answer::given : Answer::silence;
}

}  // namespace

SingleInstance::SingleInstance(const QString& sandbox, QObject* parent) : QObject(parent) {
  const QString base = base_name(sandbox);
  lock_ = std::make_unique<QLockFile>(base + QStringLiteral(".lock"));
  lock_->setStaleLockTime(0);
  const QString socket = base + QStringLiteral(".socket");
  const QDeadlineTimer silence(patience_ms), end(end_patience_ms);
  // The lock's owner may not listen yet, or may be ending right now.
  for (Answer answer = Answer::nobody_there; !(answer == Answer::silence ? silence : end).hasExpired();) {
    if (lock_->tryLock(0)) {
      first_ = true;
      take_place(socket);
      return;
    }
    if (lock_->error() != QLockFile::LockFailedError) {
      std::fprintf(stderr, "cannot lock %s.lock: a second start will not find this one\n", qUtf8Printable(base));
      first_ = true;
      return;
    }
    answer = ask_to_come_forward(socket);
    if (answer == Answer::given) return;
    QThread::msleep(50);
  }
  std::fputs("Morvane runs already, but does not answer\n", stderr);
}

SingleInstance::~SingleInstance() = default;

void SingleInstance::take_place(const QString& socket) {
  QLocalServer::removeServer(socket);
  server_.setSocketOptions(QLocalServer::UserAccessOption);
  connect(&server_, &QLocalServer::newConnection, this, &SingleInstance::answer);
  // A program that is ending no longer comes to the front: the next one waits for its place.
  connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, &server_, &QLocalServer::close);
  if (server_.listen(socket)) return;
  std::fprintf(stderr, "cannot listen at %s: %s\n", qUtf8Printable(socket), qUtf8Printable(server_.errorString()));
}

void SingleInstance::answer() {
  while (QLocalSocket* socket = server_.nextPendingConnection()) {
    connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    const auto read = [this, socket] {
      if (!socket->canReadLine()) return;
      const QByteArray token = socket->readLine().trimmed();
      if (!token.isEmpty()) qputenv(token_variable, token);
      socket->write("\n");
      Q_EMIT activation_requested();
    };
    connect(socket, &QLocalSocket::readyRead, this, read);
    read();
  }
}

}  // namespace handset

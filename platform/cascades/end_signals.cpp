#include "platform/cascades/end_signals.h"

#include <fcntl.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QSocketNotifier>
#include <cerrno>
#include <csignal>

namespace handset {

namespace {

int pipe_ends[2] = {-1, -1};

// Async-signal-safe calls only. If the pipe is full, the message is already in it.
void tell(int) {
  const int error = errno;
  const char byte = 0;
  [[maybe_unused]] const ssize_t written = write(pipe_ends[1], &byte, 1);
  errno = error;
}

bool open_pipe() {
  if (pipe_ends[0] != -1) return true;
  if (pipe2(pipe_ends, O_CLOEXEC | O_NONBLOCK) != 0) return false;
  struct sigaction action = {};
  action.sa_handler = tell;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  sigaction(SIGTERM, &action, nullptr);
  sigaction(SIGINT, &action, nullptr);
  return true;
}

}  // namespace

void quit_on_signals(QObject* owner) {
  if (!open_pipe()) return;
  auto* notifier = new QSocketNotifier(pipe_ends[0], QSocketNotifier::Read, owner);
  QObject::connect(notifier, &QSocketNotifier::activated, owner, [] {
    char bytes[16];
    while (read(pipe_ends[0], bytes, sizeof bytes) > 0) {
    }
    QCoreApplication::exit(0);
  });
}

}  // namespace handset

#include "platform/camera/server_link.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>

namespace handset {
namespace {

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

std::string socket_path() {
  std::string name = variable("PIPEWIRE_REMOTE");
  if (name.empty()) name = "pipewire-0";
  if (name.front() == '/') return name;
  std::string folder = variable("PIPEWIRE_RUNTIME_DIR");
  if (folder.empty()) folder = variable("XDG_RUNTIME_DIR");
  return folder.empty() ? "" : folder + "/" + name;
}

}  // namespace

int connect_to_server() {
  const std::string path = socket_path();
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof address.sun_path) return -1;
  path.copy(address.sun_path, path.size());
  // Without waiting: a server that hangs and has a full queue is no server.
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (fd < 0) return -1;
  if (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) return fd;
  close(fd);
  return -1;
}

void wait_for_hang_up(int fd) {
  pollfd watched{fd, 0, 0};
  while (poll(&watched, 1, -1) < 0 && errno == EINTR) {
  }
}

}  // namespace handset

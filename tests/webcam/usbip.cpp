#include "tests/webcam/usbip.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>

namespace webcam {
namespace {

// Documentation/usb/usbip_protocol.rst.
constexpr std::uint32_t cmd_submit = 1;
constexpr std::uint32_t cmd_unlink = 2;
constexpr std::uint32_t ret_submit = 3;
constexpr std::uint32_t ret_unlink = 4;
constexpr std::uint32_t direction_in = 1;

constexpr int speed_high = 3;
constexpr const char* attach_file = "/sys/devices/platform/vhci_hcd.0/attach";

using Words = std::array<std::uint32_t, 12>;  ///< a message's header, in network order

/// @return errno, 0 when the controller has taken the socket
int attach(int port, int socket) {
  const std::string line = std::to_string(port) + " " + std::to_string(socket) + " " + std::to_string(port + 1) + " " +
                           std::to_string(speed_high);
  std::FILE* file = std::fopen(attach_file, "we");
  if (file == nullptr) return errno;
  std::setvbuf(file, nullptr, _IONBF, 0);
  const int error = std::fwrite(line.data(), 1, line.size(), file) == line.size() ? 0 : errno;
  std::fclose(file);
  return error;
}

}  // namespace

struct UsbLink::Header {
  std::uint32_t command, sequence, direction, endpoint;
  std::uint32_t length;    ///< of a submitted transfer
  std::uint32_t unlinked;  ///< sequence number of the transfer that is taken back
  Setup setup;
};

UsbLink::UsbLink(int port, ControlHandler handler) : handler_(std::move(handler)) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return;
  socket_ = ends[0];
  // A port whose device was just pulled out is busy for a moment.
  int error = attach(port, ends[1]);
  for (int i = 0; error == EBUSY && i < 100; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    error = attach(port, ends[1]);
  }
  close(ends[1]);
  if (error != 0) {
    std::fprintf(stderr, "webcam: cannot plug in at port %d: %s\n", port, std::strerror(error));
    return;
  }
  plugged_ = true;
  thread_ = std::thread([this] { serve(); });
}

UsbLink::~UsbLink() {
  if (socket_ >= 0) shutdown(socket_, SHUT_RDWR);
  if (thread_.joinable()) thread_.join();
  if (socket_ >= 0) close(socket_);
}

bool UsbLink::plugged() const {
  const std::lock_guard lock(mutex_);
  return plugged_;
}

bool UsbLink::read_fully(void* data, std::size_t size) const {
  return size == 0 || recv(socket_, data, size, MSG_WAITALL) == static_cast<ssize_t>(size);
}

void UsbLink::serve() {
  Words words;
  while (read_fully(words.data(), sizeof words)) {
    const auto word = [&](std::size_t i) { return ntohl(words[i]); };
    Header header{word(0), word(1), word(3), word(4), word(6), word(5), {}};
    std::array<std::uint8_t, 8> setup;
    std::memcpy(setup.data(), &words[10], setup.size());
    const auto pair = [&](std::size_t i) { return static_cast<std::uint16_t>(setup[i] | setup[i + 1] << 8); };
    header.setup = {setup[0], setup[1], pair(2), pair(4), pair(6)};
    if (header.command == cmd_submit) submitted(header);
    if (header.command == cmd_unlink) unlinked(header);
  }
  const std::lock_guard lock(mutex_);
  plugged_ = false;
  arrived_.notify_all();
}

void UsbLink::submitted(const Header& header) {
  const bool in = header.direction == direction_in;
  if (header.endpoint != 0) {
    const std::lock_guard lock(mutex_);
    reads_.push_back({header.sequence, header.length});
    arrived_.notify_all();
    return;
  }
  Bytes written(in ? 0 : header.length);
  if (!read_fully(written.data(), written.size())) return;
  std::optional<Bytes> answer = handler_(header.setup, written);
  const std::lock_guard lock(mutex_);
  if (!answer) {
    reply(header.sequence, -EPIPE, nullptr, 0, 0);
  } else if (in) {
    const std::size_t size = std::min<std::size_t>(answer->size(), header.length);
    reply(header.sequence, 0, answer->data(), size, size);
  } else {
    reply(header.sequence, 0, nullptr, 0, written.size());
  }
}

/// A transfer that is still here is given back by the answer to the unlink, and by nothing else: the driver drops the
/// device that answers both.
void UsbLink::unlinked(const Header& header) {
  const std::lock_guard lock(mutex_);
  const auto is_it = [&](const Read& read) { return read.sequence == header.unlinked; };
  const bool still_here = std::erase_if(reads_, is_it) > 0;
  Words words{htonl(ret_unlink), htonl(header.sequence)};
  words[5] = htonl(static_cast<std::uint32_t>(still_here ? -ECONNRESET : 0));
  ::send(socket_, words.data(), sizeof words, MSG_NOSIGNAL);
}

/// With the mutex held.
void UsbLink::reply(std::uint32_t sequence, int status, const std::uint8_t* data, std::size_t data_size,
                    std::size_t actual) {
  Words words{htonl(ret_submit), htonl(sequence)};
  words[5] = htonl(static_cast<std::uint32_t>(status));
  words[6] = htonl(static_cast<std::uint32_t>(actual));
  Bytes message(sizeof words + data_size);
  std::memcpy(message.data(), words.data(), sizeof words);
  if (data_size > 0) std::memcpy(message.data() + sizeof words, data, data_size);
  ::send(socket_, message.data(), message.size(), MSG_NOSIGNAL);
}

bool UsbLink::send(const std::uint8_t* data, std::size_t size, int patience_ms) {
  std::unique_lock lock(mutex_);
  arrived_.wait_for(lock, std::chrono::milliseconds(patience_ms), [this] { return !plugged_ || !reads_.empty(); });
  if (!plugged_ || reads_.empty()) return false;
  const Read read = reads_.front();
  reads_.pop_front();
  const std::size_t sent = std::min(size, read.length);
  reply(read.sequence, 0, data, sent, sent);
  return true;
}

}  // namespace webcam

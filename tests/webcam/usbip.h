#pragma once

// A USB device in a process: the kernel's virtual host controller talks USB/IP with it over a socket pair.

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace webcam {

using Bytes = std::vector<std::uint8_t>;

/// USB 2.0, table 9-2.
struct Setup {
  std::uint8_t type;
  std::uint8_t request;
  std::uint16_t value;
  std::uint16_t index;
  std::uint16_t length;
};

/// Answers a control transfer: the bytes for the host (none when it writes), or nothing to stall. `data` is what the
/// host wrote. Called on the link's own thread.
using ControlHandler = std::function<std::optional<Bytes>(const Setup& setup, const Bytes& data)>;

/// One plugged device with a bulk IN endpoint. The destructor pulls the plug.
class UsbLink {
 public:
  /// Plugs in. @param port  of the virtual host controller, 0 to 7: its high-speed ones
  UsbLink(int port, ControlHandler handler);
  ~UsbLink();
  UsbLink(const UsbLink&) = delete;
  UsbLink& operator=(const UsbLink&) = delete;

  /// False when the controller refused the device or has dropped it.
  bool plugged() const;
  /// Answers the host's next read with `size` bytes; waits for it up to `patience_ms`. Any thread.
  /// @return false when no read came, or the device is unplugged
  bool send(const std::uint8_t* data, std::size_t size, int patience_ms);

 private:
  struct Header;
  void serve();
  void submitted(const Header& header);
  void unlinked(const Header& header);
  void reply(std::uint32_t sequence, int status, const std::uint8_t* data, std::size_t data_size, std::size_t actual);
  bool read_fully(void* data, std::size_t size) const;

  struct Read {
    std::uint32_t sequence;
    std::size_t length;
  };

  int socket_ = -1;
  ControlHandler handler_;
  mutable std::mutex mutex_;
  std::condition_variable arrived_;
  std::deque<Read> reads_;  ///< guarded, as is everything written to the socket
  bool plugged_ = false;    ///< guarded
  std::thread thread_;
};

}  // namespace webcam

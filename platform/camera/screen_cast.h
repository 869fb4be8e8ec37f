#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace handset {

/// The desktop's screen as shared by its user: a session of the desktop's ScreenCast portal
/// (org.freedesktop.portal.ScreenCast) with one monitor's PipeWire stream. The session has its own thread and bus
/// connection, so losing the bus ends nothing else.
class ScreenCast {
 public:
  /// Asks for the screen; the desktop asks its user. Waits for the answer as wait_long() does, for at most two minutes.
  /// @return null, with `error` set: no portal, no screen, refused, no answer, or the program is about to end
  static std::shared_ptr<ScreenCast> open(std::string* error);
  /// Ends the sharing.
  ~ScreenCast();

  /// Descriptor of a PipeWire connection that can reach the stream; owned by this object.
  int remote() const;
  /// The stream's PipeWire node.
  std::uint32_t node() const;
  /// Whether the user or the desktop has ended the sharing. Any thread.
  bool ended() const;

 private:
  class Session;
  explicit ScreenCast(std::unique_ptr<Session> session);

  const std::unique_ptr<Session> session_;
};

}  // namespace handset

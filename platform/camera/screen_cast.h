#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace handset {

/// The desktop's screen as its user shares it with this program: a session of the desktop's ScreenCast portal
/// (org.freedesktop.portal.ScreenCast) with one monitor's PipeWire stream. The portal is talked to on a thread and a
/// bus connection of the session's own: losing the bus ends nothing but the session.
class ScreenCast {
 public:
  /// Asks for the screen; the desktop asks its user. Waits for the answer as wait_long() does, two minutes at the most.
  /// @return null with `error` filled: no portal, no screen, refused, no answer, or the program is about to end
  static std::shared_ptr<ScreenCast> open(std::string* error);
  /// Ends the sharing.
  ~ScreenCast();

  /// A connection to PipeWire on which the stream can be reached: descriptor, belongs to this object.
  int remote() const;
  /// The stream's PipeWire node.
  std::uint32_t node() const;
  /// The user or the desktop has ended the sharing. Any thread.
  bool ended() const;

 private:
  class Session;
  explicit ScreenCast(std::unique_ptr<Session> session);

  const std::unique_ptr<Session> session_;
};

}  // namespace handset

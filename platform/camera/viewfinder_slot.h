#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "platform/camera/frame.h"

namespace handset {

/// What to show besides the picture itself.
struct ViewfinderStatus {
  std::uint64_t posted = 0;   ///< frames so far
  std::uint64_t cleared = 0;  ///< producers that have closed so far
  bool picture = false;       ///< whether there is a frame
  int rotation = 0;           ///< of the viewfinder stream: degrees to turn the picture clockwise
  std::string notice;         ///< shown over the picture, or in its place; may be empty
  std::string hint;           ///< shown during the first seconds of the picture
  std::string trouble;        ///< why there is no picture from the camera, until there is one; the user may retry
  std::string status;         ///< a short line at the picture's edge
};

/// Where a camera posts its finished frames for the screen: keeps the newest. A slow screen skips frames and never
/// holds the camera up. Any thread.
class ViewfinderSlot : public std::enable_shared_from_this<ViewfinderSlot> {
 public:
  /// Replaces the newest frame and notifies the listener. Any thread; allocates nothing.
  void post(const Frame& frame);
  /// Drops the frame because the camera has closed. Notifies the listener.
  void clear();
  /// The newest frame, or an empty one. @param serial receives the number posted so far
  Frame latest(std::uint64_t* serial = nullptr) const;
  ViewfinderStatus status() const;

  /// These survive clear(). Frames are untouched: neither text nor rotation gets into a film.
  void set_rotation(int degrees);
  void set_notice(std::string text);
  void set_hint(std::string text);
  void set_trouble(std::string text);
  void set_status(std::string text);

  /// Called after each change, on the thread that makes it; must neither block nor call back into this slot. An empty
  /// function removes it; no call is in progress once this returns.
  void set_listener(std::function<void()> listener);

 private:
  void tell();

  /// Guards frame_ and status_; held for a pointer swap, or for copying short texts.
  mutable std::mutex mutex_;
  Frame frame_;
  ViewfinderStatus status_;
  /// Guards listener_, and is held while it runs.
  std::mutex listener_mutex_;
  std::function<void()> listener_;
};

/// Sets the trouble of every slot: a unit that cannot be opened does not yet know where it would be shown. Any thread.
void set_trouble_everywhere(const std::string& text);

/// The slot of a window group and id; camera and screen meet here, whichever comes first. Any thread.
std::shared_ptr<ViewfinderSlot> viewfinder_slot(const std::string& group, const std::string& id);

}  // namespace handset

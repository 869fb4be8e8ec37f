#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "platform/camera/frame.h"

namespace handset {

/// Where a camera posts its finished frames for the screen: keeps the newest one. A window that shows
/// a slow screen skips frames; it never holds the camera up.
class ViewfinderSlot {
 public:
  /// Replaces the newest frame and tells the listener. Any thread; allocates nothing.
  void post(const Frame& frame);
  /// Forgets the frame: the camera has closed. Tells the listener.
  void clear();
  /// The newest frame, or an empty one. @param serial receives how many were posted so far
  Frame latest(std::uint64_t* serial = nullptr) const;
  /// Called after each post and clear, on the posting thread; it must neither block nor call back
  /// into this slot. An empty function removes it; when this returns no call is under way.
  void set_listener(std::function<void()> listener);

 private:
  /// Guards frame_ and serial_; held for a pointer swap.
  mutable std::mutex mutex_;
  Frame frame_;
  std::uint64_t serial_ = 0;
  /// Guards listener_, and is held while it runs.
  std::mutex listener_mutex_;
  std::function<void()> listener_;
};

/// The slot of a window group and id; camera and screen meet here whichever comes first. Any thread.
std::shared_ptr<ViewfinderSlot> viewfinder_slot(const std::string& group, const std::string& id);

}  // namespace handset

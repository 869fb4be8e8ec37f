#pragma once

#include <memory>
#include <mutex>
#include <utility>

#include "platform/camera/viewfinder_slot.h"

namespace handset {

/// A running camera's path to the screen. A frame returned by its editor after the camera is gone does not bring the
/// picture back. Any thread.
class ViewfinderFeed {
 public:
  explicit ViewfinderFeed(std::shared_ptr<ViewfinderSlot> slot) : slot_(std::move(slot)) {}

  void post(const Frame& frame) {
    const std::lock_guard lock(mutex_);
    if (!ended_) slot_->post(frame);
  }
  /// Removes the picture from the screen, for good.
  void end() {
    const std::lock_guard lock(mutex_);
    if (!std::exchange(ended_, true)) slot_->clear();
  }
  ViewfinderSlot& slot() { return *slot_; }

 private:
  /// Guards ended_; held while the slot notifies its listener.
  std::mutex mutex_;
  bool ended_ = false;
  const std::shared_ptr<ViewfinderSlot> slot_;
};

}  // namespace handset

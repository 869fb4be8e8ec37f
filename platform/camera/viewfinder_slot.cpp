#include "platform/camera/viewfinder_slot.h"

#include <map>

namespace handset {

void ViewfinderSlot::post(const Frame& frame) {
  Frame old = frame.share();  // released after the lock: its pool may have to be told
  {
    const std::lock_guard lock(mutex_);
    std::swap(frame_, old);
    ++serial_;
  }
  const std::lock_guard lock(listener_mutex_);
  if (listener_) listener_();
}

void ViewfinderSlot::clear() {
  Frame old;
  {
    const std::lock_guard lock(mutex_);
    std::swap(frame_, old);
  }
  const std::lock_guard lock(listener_mutex_);
  if (listener_) listener_();
}

Frame ViewfinderSlot::latest(std::uint64_t* serial) const {
  const std::lock_guard lock(mutex_);
  if (serial != nullptr) *serial = serial_;
  return frame_.share();
}

void ViewfinderSlot::set_listener(std::function<void()> listener) {
  const std::lock_guard lock(listener_mutex_);
  listener_ = std::move(listener);
}

std::shared_ptr<ViewfinderSlot> viewfinder_slot(const std::string& group, const std::string& id) {
  static std::mutex mutex;
  static std::map<std::string, std::weak_ptr<ViewfinderSlot>> slots;
  const std::lock_guard lock(mutex);
  std::weak_ptr<ViewfinderSlot>& entry = slots[group + '\n' + id];
  std::shared_ptr<ViewfinderSlot> slot = entry.lock();
  if (!slot) entry = slot = std::make_shared<ViewfinderSlot>();
  return slot;
}

}  // namespace handset

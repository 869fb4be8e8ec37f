#include "platform/camera/viewfinder_slot.h"

#include <map>
#include <utility>

namespace handset {

void ViewfinderSlot::post(const Frame& frame) {
  Frame old = frame.share();  // released after the lock: its pool may have to be told
  {
    const std::lock_guard lock(mutex_);
    std::swap(frame_, old);
    ++status_.posted;
    status_.picture = true;
  }
  tell();
}

void ViewfinderSlot::clear() {
  Frame old;
  {
    const std::lock_guard lock(mutex_);
    std::swap(frame_, old);
    ++status_.cleared;
    status_.picture = false;
  }
  tell();
}

Frame ViewfinderSlot::latest(std::uint64_t* serial) const {
  const std::lock_guard lock(mutex_);
  if (serial != nullptr) *serial = status_.posted;
  return frame_.share();
}

ViewfinderStatus ViewfinderSlot::status() const {
  const std::lock_guard lock(mutex_);
  return status_;
}

void ViewfinderSlot::set_rotation(int degrees) {
  {
    const std::lock_guard lock(mutex_);
    if (std::exchange(status_.rotation, degrees) == degrees) return;
  }
  tell();
}

void ViewfinderSlot::set_notice(std::string text) {
  {
    const std::lock_guard lock(mutex_);
    std::swap(status_.notice, text);
  }
  tell();
}

void ViewfinderSlot::set_hint(std::string text) {
  {
    const std::lock_guard lock(mutex_);
    std::swap(status_.hint, text);
  }
  tell();
}

void ViewfinderSlot::set_status(std::string text) {
  {
    const std::lock_guard lock(mutex_);
    std::swap(status_.status, text);
  }
  tell();
}

void ViewfinderSlot::set_listener(std::function<void()> listener) {
  const std::lock_guard lock(listener_mutex_);
  listener_ = std::move(listener);
}

void ViewfinderSlot::tell() {
  const std::lock_guard lock(listener_mutex_);
  if (listener_) listener_();
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

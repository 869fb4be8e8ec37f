#include "platform/camera/viewfinder_slot.h"

#include <map>
#include <utility>
#include <vector>

namespace handset {

void ViewfinderSlot::post(const Frame& frame) {
  Frame old = frame.share();  // released after the lock: this may notify its pool
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

void ViewfinderSlot::set_trouble(std::string text) {
  {
    const std::lock_guard lock(mutex_);
    if (status_.trouble == text) return;
    std::swap(status_.trouble, text);
  }
  tell();
}

void ViewfinderSlot::set_status(std::string text) {
  {
    const std::lock_guard lock(mutex_);
    if (status_.status == text) return;
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

namespace {

/// All slots by group and id.
struct Slots {
  std::mutex mutex;
  std::map<std::string, std::weak_ptr<ViewfinderSlot>> by_name;
};

Slots& all_slots() {
  static Slots* const slots = new Slots;  // never destroyed: a camera's thread may outlive main()
  return *slots;
}

}  // namespace

void set_trouble_everywhere(const std::string& text) {
  std::vector<std::shared_ptr<ViewfinderSlot>> slots;
  {
    const std::lock_guard lock(all_slots().mutex);
    for (const auto& [name, slot] : all_slots().by_name) slots.push_back(slot.lock());
  }
  for (const auto& slot : slots) {
    if (slot) slot->set_trouble(text);
  }
}

std::shared_ptr<ViewfinderSlot> viewfinder_slot(const std::string& group, const std::string& id) {
  const std::lock_guard lock(all_slots().mutex);
  std::weak_ptr<ViewfinderSlot>& entry = all_slots().by_name[group + '\n' + id];
  std::shared_ptr<ViewfinderSlot> slot = entry.lock();
  if (!slot) entry = slot = std::make_shared<ViewfinderSlot>();
  return slot;
}

}  // namespace handset

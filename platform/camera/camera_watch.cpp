#include "platform/camera/camera_watch.h"

#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

namespace handset {

struct CameraWatch::Shared {
  std::mutex mutex;  ///< guards the rest
  std::condition_variable changed;
  bool scanned = false;
  std::vector<FoundCamera> cameras;
  std::map<int, std::function<void()>> listeners;
  int next_listener = 0;
};

CameraWatch& CameraWatch::instance() {
  static CameraWatch* const watch = new CameraWatch;  // never destroyed: its threads live as long as the process
  return *watch;
}

CameraWatch::CameraWatch() : shared_(std::make_shared<Shared>()) {
  rescan();
}

std::vector<FoundCamera> CameraWatch::cameras_now(std::chrono::milliseconds limit) {
  wait_first_scan(limit);
  const std::lock_guard lock(shared_->mutex);
  return shared_->cameras;
}

bool CameraWatch::wait_first_scan(std::chrono::milliseconds limit) {
  std::unique_lock lock(shared_->mutex);
  return shared_->changed.wait_for(lock, limit, [this] { return shared_->scanned; });
}

void CameraWatch::rescan() {
  std::thread([shared = shared_] {
    std::vector<FoundCamera> cameras = find_cameras();
    const std::lock_guard lock(shared->mutex);
    shared->cameras = std::move(cameras);
    shared->scanned = true;
    shared->changed.notify_all();
  }).detach();
}

int CameraWatch::on_cameras_changed(std::function<void()> listener) {
  const std::lock_guard lock(shared_->mutex);
  shared_->listeners.emplace(shared_->next_listener, std::move(listener));
  return shared_->next_listener++;
}

void CameraWatch::stop_listening(int number) {
  const std::lock_guard lock(shared_->mutex);
  shared_->listeners.erase(number);
}

}  // namespace handset

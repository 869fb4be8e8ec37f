#include "platform/camera/capture_start.h"

#include <set>
#include <thread>
#include <utility>

namespace handset {
namespace {

/// How long a start waits for the same device to be let go of.
constexpr std::chrono::seconds release_patience{5};

/// Devices that a capture of this process holds, by name.
struct HeldDevices {
  std::mutex mutex;
  std::condition_variable changed;
  std::multiset<std::string> names;
};

HeldDevices& held_devices() {
  static HeldDevices* const held = new HeldDevices;  // never destroyed: threads that were left behind use it at exit
  return *held;
}

/// Holds a device until the result goes. Waits a bounded time for whoever holds it.
std::shared_ptr<void> hold_device(const std::string& name) {
  if (name.empty()) return nullptr;
  HeldDevices& held = held_devices();
  std::unique_lock lock(held.mutex);
  held.changed.wait_for(lock, release_patience, [&] { return !held.names.contains(name); });
  const auto entry = held.names.insert(name);
  return {nullptr, [entry](void*) {
            HeldDevices& of_all = held_devices();
            const std::lock_guard release(of_all.mutex);
            of_all.names.erase(entry);
            of_all.changed.notify_all();
          }};
}

}  // namespace

CaptureStart::CaptureStart(Capture::Setup setup, Capture::Deliver deliver) {
  std::thread([state = state_, setup = std::move(setup), deliver = std::move(deliver)]() mutable {
    setup.hold = hold_device(setup.source->device_name());
    std::string error;
    std::shared_ptr<Capture> capture = Capture::start(std::move(setup), std::move(deliver), &error);
    const std::lock_guard lock(state->mutex);
    state->through = true;
    state->error = error;
    if (!state->abandoned) state->capture = std::move(capture);
    state->changed.notify_all();
  }).detach();
}

CaptureStart::~CaptureStart() {
  std::shared_ptr<Capture> unwanted;
  {
    const std::lock_guard lock(state_->mutex);
    state_->abandoned = true;
    unwanted = std::move(state_->capture);
  }
  if (unwanted) stop_capture(unwanted, std::chrono::milliseconds(0));
}

bool CaptureStart::wait(std::chrono::milliseconds limit) {
  std::unique_lock lock(state_->mutex);
  return state_->changed.wait_for(lock, limit, [this] { return state_->through; });
}

std::shared_ptr<Capture> CaptureStart::take(std::string* error) {
  const std::lock_guard lock(state_->mutex);
  *error = state_->error;
  return std::move(state_->capture);
}

void stop_capture(const std::shared_ptr<Capture>& capture, std::chrono::milliseconds patience) {
  struct Done {
    std::mutex mutex;
    std::condition_variable changed;
    bool done = false;
  };
  const auto done = std::make_shared<Done>();
  std::thread([capture, done] {
    capture->stop();
    const std::lock_guard lock(done->mutex);
    done->done = true;
    done->changed.notify_all();
  }).detach();
  std::unique_lock lock(done->mutex);
  done->changed.wait_for(lock, patience, [&] { return done->done; });
}

}  // namespace handset

#include "platform/camera/capture_start.h"

#include <algorithm>
#include <set>
#include <thread>
#include <utility>

namespace handset {
namespace {

/// How long a start waits for the same device to be released.
constexpr std::chrono::seconds release_patience{4};
constexpr std::chrono::milliseconds turn{20};

/// Devices held by a capture of this process, by name.
struct HeldDevices {
  std::mutex mutex;
  std::condition_variable changed;
  std::multiset<std::string> names;
};

HeldDevices& held_devices() {
  static HeldDevices* const held = new HeldDevices;  // never destroyed: abandoned threads use it at exit
  return *held;
}

/// Holds a device for its own lifetime.
class Hold {
 public:
  explicit Hold(std::multiset<std::string>::iterator entry) : entry_(entry) {}
  Hold(const Hold&) = delete;
  Hold& operator=(const Hold&) = delete;
  ~Hold() {
    HeldDevices& held = held_devices();
    const std::lock_guard lock(held.mutex);
    held.names.erase(entry_);
    held.changed.notify_all();
  }

 private:
  const std::multiset<std::string>::iterator entry_;
};

/// Waits a bounded time for the current holder of a device. @return null on timeout
std::shared_ptr<Hold> hold_device(const std::string& name) {
  HeldDevices& held = held_devices();
  std::unique_lock lock(held.mutex);
  if (!held.changed.wait_for(lock, release_patience, [&] { return !held.names.contains(name); })) return nullptr;
  const auto entry = held.names.insert(name);
  lock.unlock();
  return std::make_shared<Hold>(entry);
}

}  // namespace

CaptureStart::CaptureStart(Capture::Setup setup, Capture::Deliver deliver) {
  std::thread([state = state_, setup = std::move(setup), deliver = std::move(deliver)]() mutable {
    const std::string device = setup.source->device_name();
    std::string error;
    std::shared_ptr<Capture> capture;
    if (!device.empty()) setup.hold = hold_device(device);
    if (device.empty() || setup.hold) {
      capture = Capture::start(std::move(setup), std::move(deliver), &error);
    } else {
      error = "the device does not answer";  // another try would only hang beside the first
    }
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

void stop_capture(const std::shared_ptr<Capture>& capture, std::chrono::milliseconds patience,
                  const std::atomic<bool>* hurry) {
  struct Done {
    std::mutex mutex;
    std::condition_variable changed;
    bool done = false;
  };
  const auto done = std::make_shared<Done>();
  std::thread([capture = capture, done]() mutable {
    capture->stop();
    capture.reset();  // close whatever the source has open before anybody continues
    const std::lock_guard lock(done->mutex);
    done->done = true;
    done->changed.notify_all();
  }).detach();
  const auto end = std::chrono::steady_clock::now() + patience;
  std::unique_lock lock(done->mutex);
  while (!done->done && std::chrono::steady_clock::now() < end && (hurry == nullptr || !*hurry)) {
    done->changed.wait_for(lock, std::min(turn, patience), [&] { return done->done; });
  }
}

}  // namespace handset

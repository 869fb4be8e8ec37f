#include "platform/camera/saving.h"

#include <cerrno>
#include <system_error>
#include <thread>

namespace handset {
namespace {

/// All work under way.
struct Pending {
  std::mutex mutex;
  std::condition_variable changed;
  int count = 0;
};

Pending& pending() {
  static Pending* const instance = new Pending;  // never destroyed: work may outlive main()
  return *instance;
}

void count(int change) {
  const std::lock_guard lock(pending().mutex);
  pending().count += change;
  pending().changed.notify_all();
}

}  // namespace

std::shared_ptr<Saving> Saving::begin(std::function<int()> work, std::function<void(int error)> late) {
  const auto saving = std::make_shared<Saving>();
  const auto job = std::make_shared<std::function<int()>>(std::move(work));
  count(1);
  try {
    std::thread([saving, job, late] { saving->run(*job, late); }).detach();
  } catch (const std::system_error&) {
    saving->run(*job, late);
  }
  return saving;
}

void Saving::run(std::function<int()>& work, const std::function<void(int error)>& late) {
  const int error = work();
  work = nullptr;  // whoever has waited finds what it owned free
  bool tell = false;
  {
    const std::lock_guard lock(mutex_);
    done_ = true;
    error_ = error;
    tell = given_up_;
    changed_.notify_all();
  }
  if (tell && late) late(error);
  count(-1);
}

int Saving::wait(std::chrono::milliseconds limit) {
  std::unique_lock lock(mutex_);
  if (changed_.wait_for(lock, limit, [this] { return done_; })) return error_;
  given_up_ = true;
  return EINPROGRESS;
}

int Saving::wait() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return done_; });
  return error_;
}

bool wait_for_saving(std::chrono::milliseconds limit) {
  std::unique_lock lock(pending().mutex);
  return pending().changed.wait_for(lock, limit, [] { return pending().count == 0; });
}

}  // namespace handset

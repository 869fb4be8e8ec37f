#include "platform/camera/reopen.h"

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "platform/camera/camera_config.h"
#include "platform/camera/camera_watch.h"
#include "platform/camera/source.h"

namespace handset {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds look_period{1};
constexpr std::chrono::seconds tell_period{2};
/// How often nodes that had nothing good to say are asked again.
constexpr std::chrono::seconds ask_period{5};
/// A camera with a loose plug gets this long to come back before another one takes its place.
constexpr std::chrono::seconds return_patience{3};

Outlook outlook_for(camera_unit_t unit) {
  CameraWatch& watch = CameraWatch::instance();
  const bool known = watch.wait_first_scan(std::chrono::milliseconds(0));
  return {camera_candidate(unit), known, known && watch.cameras_now().empty()};
}

/// Waits for cameras on behalf of the units.
class Reopener {
 public:
  static Reopener& instance() {
    static Reopener* const reopener = new Reopener;  // never destroyed: its thread runs to the end
    return *reopener;
  }

  void miss(camera_unit_t unit, MissedCamera missed) {
    const std::lock_guard lock(mutex_);
    missed_[unit] = {std::move(missed), {}};
    changed_.notify_all();
  }

  void forget(camera_unit_t unit) {
    const std::lock_guard lock(mutex_);
    missed_.erase(unit);
  }

  void set_listener(std::function<void(camera_unit_t)> listener) {
    {
      const std::lock_guard lock(listener_mutex_);
      listener_ = std::move(listener);
      if (!listener_) return;
    }
    const std::lock_guard lock(mutex_);
    if (std::exchange(started_, true)) return;
    CameraWatch::instance().on_cameras_changed([this] {
      const std::lock_guard changed(mutex_);
      changed_.notify_all();
    });
    std::thread([this] { run(); }).detach();
  }

 private:
  struct Entry {
    MissedCamera missed;
    Clock::time_point told;
  };

  [[noreturn]] void run() {
    for (;;) {
      std::map<camera_unit_t, Entry> waiting;
      {
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, look_period);
        if (missed_.empty()) changed_.wait(lock, [this] { return !missed_.empty(); });
        waiting = missed_;
      }
      for (const auto& [unit, entry] : waiting) look(unit, entry);
    }
  }

  void look(camera_unit_t unit, const Entry& entry) {
    const auto now = Clock::now();
    if (now - entry.told < tell_period) return;
    if (entry.missed.how == Missing::not_opened && now - asked_ > ask_period) {
      asked_ = now;
      CameraWatch::instance().rescan();
    }
    if (!worth_reopening(entry.missed, outlook_for(unit), now)) return;
    const std::lock_guard told(listener_mutex_);
    if (!listener_) return;
    {
      const std::lock_guard lock(mutex_);
      const auto still = missed_.find(unit);
      if (still == missed_.end()) return;
      still->second.told = now;
    }
    listener_(unit);
  }

  Clock::time_point asked_;  ///< the thread's own
  /// Guards the next three.
  std::mutex mutex_;
  std::condition_variable changed_;
  std::map<camera_unit_t, Entry> missed_;
  bool started_ = false;
  /// Guards listener_, and is held while it runs.
  std::mutex listener_mutex_;
  std::function<void(camera_unit_t)> listener_;
};

}  // namespace

bool worth_reopening(const MissedCamera& missed, const Outlook& outlook, Clock::time_point now) {
  if (missed.how == Missing::searching) return outlook.known;
  const std::string& candidate = outlook.candidate;
  if (candidate.empty()) return missed.how == Missing::not_opened && outlook.none;  // which a scene shows
  switch (missed.how) {
    case Missing::displaced:
      return candidate == missed.identity;
    case Missing::lost:
      return candidate == missed.identity || now - missed.since >= return_patience;
    case Missing::passed_over:
      return candidate != missed.identity;
    default:
      return true;
  }
}

void miss_camera(camera_unit_t unit, Missing how, const std::string& identity) {
  if (unit == CAMERA_UNIT_DESKTOP) return;
  Reopener::instance().miss(unit, {how, identity, Clock::now()});
}

void forget_missed(camera_unit_t unit) {
  Reopener::instance().forget(unit);
}

void set_reopen_listener(std::function<void(camera_unit_t)> listener) {
  Reopener::instance().set_listener(std::move(listener));
}

}  // namespace handset

#pragma once

// Work on a disk that may not answer: done on a thread of its own, which is left behind when it takes too long.

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

namespace handset {

/// How long a caller who must not stand still waits for a disk.
inline constexpr std::chrono::milliseconds disk_patience{2000};

/// One piece of work that is under way. Any thread.
class Saving {
 public:
  /// Starts the work. Where no thread can be made, it is done before this returns.
  /// @param work  returns 0 or an errno value; what it owns goes with it, on its thread
  /// @param late  told that value when a wait() has given up before; may be empty
  static std::shared_ptr<Saving> begin(std::function<int()> work, std::function<void(int error)> late);

  /// @return what the work returned, or EINPROGRESS at the end of the time
  int wait(std::chrono::milliseconds limit);
  /// Waits as long as it takes.
  int wait();

 private:
  void run(std::function<int()>& work, const std::function<void(int error)>& late);

  std::mutex mutex_;  ///< guards the rest
  std::condition_variable changed_;
  bool done_ = false;
  bool given_up_ = false;
  int error_ = 0;
};

/// Waits until no work is under way, so that the process may end. @return false at the end of the time
bool wait_for_saving(std::chrono::milliseconds limit);

}  // namespace handset

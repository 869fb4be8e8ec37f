#include "platform/camera/time_asleep.h"

#include <ctime>

namespace handset {

std::int64_t time_asleep() {
  const auto now = [](clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
  };
  // Both count from the start; only the first one goes on during sleep. Read in this order the result is never too long
  // by a pause in between.
  const std::int64_t with_sleep = now(CLOCK_BOOTTIME);
  return with_sleep - now(CLOCK_MONOTONIC);
}

}  // namespace handset

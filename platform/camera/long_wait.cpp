#include "platform/camera/long_wait.h"

#include <chrono>
#include <thread>

namespace handset {
namespace {

constexpr std::chrono::milliseconds turn{10};
thread_local LongWait thread_wait;

}  // namespace

void set_long_wait(LongWait wait) {
  thread_wait = std::move(wait);
}

void wait_long(const std::function<bool()>& done) {
  if (thread_wait) return thread_wait(done);
  while (!done()) std::this_thread::sleep_for(turn);
}

}  // namespace handset

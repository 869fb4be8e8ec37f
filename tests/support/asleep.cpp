// To be preloaded: a computer that has been asleep for a minute as soon as the file that ASLEEP_FILE names is there.

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
  static const auto real = reinterpret_cast<int (*)(clockid_t, timespec*)>(dlsym(RTLD_NEXT, "clock_gettime"));
  static const char* const file = std::getenv("ASLEEP_FILE");
  const int result = real(clock, time);
  if (result == 0 && clock == CLOCK_BOOTTIME && file != nullptr && access(file, F_OK) == 0) time->tv_sec += 60;
  return result;
}

#pragma once

#include <cstdint>

namespace handset {

/// How long this computer has been suspended since it was started; nanoseconds. Any thread.
std::int64_t time_asleep();

}  // namespace handset

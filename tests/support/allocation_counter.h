#pragma once

// A program that links allocation_counter.cpp has a malloc that counts the requests of chosen threads. Not for
// sanitizer builds, which have their own malloc.

#include <atomic>
#include <cstddef>

namespace allocation_counter {

/// Whether this thread's requests are counted.
extern thread_local bool counting;
extern std::atomic<int> allocations;
/// Bytes of the largest counted request.
extern std::atomic<std::size_t> largest;

}  // namespace allocation_counter

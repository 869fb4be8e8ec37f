#pragma once

// A program that links allocation_counter.cpp has a malloc that counts what chosen threads ask for. Not
// for sanitizer builds, which bring a malloc of their own.

#include <atomic>
#include <cstddef>

namespace allocation_counter {

/// Whether this thread's requests are counted.
extern thread_local bool counting;
extern std::atomic<int> allocations;
/// Bytes of the largest counted request.
extern std::atomic<std::size_t> largest;

}  // namespace allocation_counter

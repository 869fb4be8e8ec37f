#include "tests/support/allocation_counter.h"

#include <cerrno>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace allocation_counter {

thread_local bool counting = false;
std::atomic<int> allocations = 0;
std::atomic<std::size_t> largest = 0;

}  // namespace allocation_counter

namespace {

void count(std::size_t bytes) {
  if (!allocation_counter::counting) return;
  ++allocation_counter::allocations;
  if (bytes > allocation_counter::largest) allocation_counter::largest = bytes;
}

}  // namespace

extern "C" {
void* malloc(std::size_t size) {
  count(size);
  return __libc_malloc(size);
}
void* calloc(std::size_t number, std::size_t size) {
  count(number * size);
  return __libc_calloc(number, size);
}
void* realloc(void* memory, std::size_t size) {
  count(size);
  return __libc_realloc(memory, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
  count(size);
  return __libc_memalign(alignment, size);
}
int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
  count(size);
  *memory = __libc_memalign(alignment, size);
  return *memory == nullptr ? ENOMEM : 0;
}
}

// Proves that the filter thread allocates nothing per frame: this program's malloc counts what one thread asks for.

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>

#include "engine/color_filter.h"
#include "engine/filter_thread.h"
#include "engine/overlay.h"
#include "tests/engine/engine_state.h"
#include "tests/engine/fake_camera.h"
#include "tests/engine/overlay_planes.h"

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

thread_local bool counting = false;
std::atomic<int> allocations = 0;

void count() {
  if (counting) ++allocations;
}

}  // namespace

extern "C" {
void* malloc(std::size_t size) {
  count();
  return __libc_malloc(size);
}
void* calloc(std::size_t number, std::size_t size) {
  count();
  return __libc_calloc(number, size);
}
void* realloc(void* memory, std::size_t size) {
  count();
  return __libc_realloc(memory, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
  count();
  return __libc_memalign(alignment, size);
}
int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
  count();
  *memory = __libc_memalign(alignment, size);
  return *memory == nullptr ? ENOMEM : 0;
}
}

namespace {

TEST(Allocations, TheCounterCounts) {
  counting = true;
  int* volatile created = new int;  // volatile: or the compiler leaves the pair out
  void* volatile cleared = std::calloc(1, 1);
  counting = false;
  delete created;
  std::free(cleared);
  EXPECT_EQ(allocations.exchange(0), 2);
}

TEST(Allocations, FramesCostNone) {
  reset_engine();
  fake_camera::reset();
  test_frame frame(640, 480, 0, 1);
  fake_camera::set_frame(&frame);
  fake_camera::set_quiet(true);
  fake_camera::set_fetch_hook([] { counting = true; });  // from the first fetch to the thread's end
  const overlay_planes planes(64, 64, 1);
  logo_image = datetime_image = planes.record;
  ASSERT_EQ(start_filter_thread(7), 0);
  ASSERT_TRUE(fake_camera::wait_enabled());
  for (int i = 1; i <= 1300; ++i) {
    _cur_camera_filter = i % 13 - 1;
    _include_logo_original_color = i % 2 == 0;
    fake_camera::set_metadata_size(i % 100 == 0 ? broken_frame_metadata_size : 0);
    ASSERT_EQ(fake_camera::announce(), 0);
    ASSERT_TRUE(fake_camera::wait_returned(i));
  }
  kill_thread();
  EXPECT_EQ(allocations, 0);
  logo_image = datetime_image = {};
}

}  // namespace

#include <malloc.h>

#include "platform/camera/camera_config.h"

namespace handset {

void keep_heap_small() {
#if defined(__GLIBC__)
  constexpr int block = 512 * 1024;  // smaller than any picture worth speaking of
  constexpr int heaps = 2;
  mallopt(M_MMAP_THRESHOLD, block);
  mallopt(M_ARENA_MAX, heaps);
#endif
}

}  // namespace handset

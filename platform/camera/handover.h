#pragma once

// What ThreadSanitizer must be told about our objects that GStreamer's threads call back.
//
// GStreamer passes such an object from thread to thread under its own locks, which the sanitizer cannot see. Each
// callback declares this with a CalledBack; whoever starts or stops the pipeline does so with handed_over and
// taken_back. In other builds these compile to nothing.

#if defined(__SANITIZE_THREAD__)
#include <sanitizer/tsan_interface.h>
#endif

namespace handset {

/// Makes everything done to `object` so far visible to callbacks that start from now on.
inline void handed_over([[maybe_unused]] const void* object) {
#if defined(__SANITIZE_THREAD__)
  __tsan_release(const_cast<void*>(object));
#endif
}

/// Makes everything that finished callbacks did to `object` visible from now on.
inline void taken_back([[maybe_unused]] const void* object) {
#if defined(__SANITIZE_THREAD__)
  __tsan_acquire(const_cast<void*>(object));
#endif
}

/// Put at the top of a function that GStreamer calls on `object`.
class CalledBack {
 public:
  explicit CalledBack(const void* object) : object_(object) { taken_back(object_); }
  CalledBack(const CalledBack&) = delete;
  CalledBack& operator=(const CalledBack&) = delete;
  ~CalledBack() { handed_over(object_); }

 private:
  const void* object_;
};

}  // namespace handset

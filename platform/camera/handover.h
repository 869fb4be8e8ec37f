#pragma once

// What ThreadSanitizer must be told about objects of ours that GStreamer's threads call back.
//
// GStreamer hands such an object from thread to thread under locks of its own, which the sanitizer
// cannot see. Each callback says so with a CalledBack; whoever starts or stops the pipeline says so with
// handed_over and taken_back. In other builds all of this is nothing.

#if defined(__SANITIZE_THREAD__)
#include <sanitizer/tsan_interface.h>
#endif

namespace handset {

/// Everything done to `object` so far is seen by the callbacks that start from now on.
inline void handed_over([[maybe_unused]] const void* object) {
#if defined(__SANITIZE_THREAD__)
  __tsan_release(const_cast<void*>(object));
#endif
}

/// Everything that ended callbacks did to `object` is seen from now on.
inline void taken_back([[maybe_unused]] const void* object) {
#if defined(__SANITIZE_THREAD__)
  __tsan_acquire(const_cast<void*>(object));
#endif
}

/// Stands at the top of a function that GStreamer calls on `object`.
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

#pragma once

#include <gst/video/video.h>

#include <cstdint>
#include <memory>

#include "platform/camera/gst_ptr.h"

namespace handset {

/// One picture on its way through the service: NV12, full-range BT.601. Copying a Frame adds a
/// reference to the pixels; nobody but the holder of a fetched frame pair writes them.
struct Frame {
  BufferPtr buffer;
  std::shared_ptr<const GstVideoInfo> info;
  std::int64_t timestamp = 0;  ///< nanoseconds of CLOCK_MONOTONIC

  Frame share() const { return {buffer.share(), info, timestamp}; }
  explicit operator bool() const { return static_cast<bool>(buffer); }
};

}  // namespace handset

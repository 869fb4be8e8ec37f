#pragma once

#include <gst/video/video.h>

#include <cstdint>
#include <memory>

#include "platform/camera/gst_ptr.h"

namespace handset {

/// One picture on its way through the service: NV12, full-range BT.601. Copying a Frame adds a reference to the pixels;
/// only the holder of a fetched frame pair writes them.
struct Frame {
  BufferPtr buffer;
  std::shared_ptr<const GstVideoInfo> info;  ///< of the picture; map_frame knows its place in the buffer
  std::int64_t timestamp = 0;                ///< nanoseconds of CLOCK_MONOTONIC
  /// Describes the whole buffer if the picture is only a part of it, else null.
  std::shared_ptr<const GstVideoInfo> canvas = nullptr;
  int left = 0;  ///< position of the picture in the canvas; even
  int top = 0;

  Frame share() const { return {buffer.share(), info, timestamp, canvas, left, top}; }
  explicit operator bool() const { return static_cast<bool>(buffer); }
};

/// Describes an NV12 picture of another size that is otherwise like a whole one.
std::shared_ptr<const GstVideoInfo> part_of(const GstVideoInfo& whole, unsigned width, unsigned height);

/// Maps a frame's picture; `mapped` has its size, pointers to its first samples, and the buffer's strides.
/// gst_video_frame_unmap ends it. Any thread; allocates nothing.
/// @return false if the memory cannot be mapped that way
bool map_frame(const Frame& frame, GstMapFlags flags, GstVideoFrame* mapped);

/// A read-only buffer around a frame's picture, for elements that know the picture's caps and GstVideoMeta. The frame's
/// own buffer returns to its pool after it, whoever releases it last. Any thread.
/// @return empty if the memory cannot be read
BufferPtr wrap_picture(const Frame& frame);

}  // namespace handset

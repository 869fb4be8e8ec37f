#pragma once

// Addresses inside an NV12 frame. The engine takes the low 32 bits of the chroma plane's offset and stride.

#include <cstddef>
#include <cstdint>

#include "platform/camera/camera.h"

inline std::ptrdiff_t luma_stride(const camera_buffer_t& frame) {
  return static_cast<std::ptrdiff_t>(frame.nv12.stride);
}

inline std::ptrdiff_t chroma_offset(const camera_buffer_t& frame) {
  return static_cast<std::int32_t>(frame.nv12.uv_offset);
}

inline std::ptrdiff_t chroma_stride(const camera_buffer_t& frame) {
  return static_cast<std::int32_t>(frame.nv12.uv_stride);
}

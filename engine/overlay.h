#pragma once

// Overlays: an image in the frame's own layout with its alpha, blended into every frame.

#include <cstdint>

#include "platform/camera/camera.h"

/// One overlay. Zeroed is empty. The planes are owned by the record and allocated with new[];
/// whoever clears the record frees them.
struct logo_image_s {
  std::int32_t x;              ///< left column in the frame, pixels
  std::int32_t y;              ///< top row in the frame
  std::int32_t width;          ///< pixels, a multiple of 4
  std::int32_t height;         ///< pixels, a multiple of 4
  std::uint8_t* luma;          ///< width * height
  std::uint8_t* chroma;        ///< width * height / 2: rows of interleaved U,V pairs, one per 2x2 block
  std::uint8_t* alpha;         ///< width * height, 255 is opaque
  std::uint8_t* chroma_alpha;  ///< (width / 2) * (height / 2), one per 2x2 block
  bool enabled;                ///< the planes are valid and may be blended
};

/// Texture or picture, and date/time stamp. Guarded by engine_lock().
extern logo_image_s logo_image;
extern logo_image_s datetime_image;

/// Blends one record into a frame pair: luma under it is read from the output, chroma from the input,
/// offsets come from the input descriptor. The rectangle is clipped to the frame; an odd position is taken
/// as the even one before it. Filter thread, engine lock held.
void logo_filter(logo_image_s record, const camera_buffer_t* input, const camera_buffer_t* output);

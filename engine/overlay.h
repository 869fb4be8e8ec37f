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

/// A record at (0, 0), not enabled, with planes of its own that hold nothing yet.
/// @param width, height  pixels, multiples of 4, not negative
logo_image_s allocate_overlay(std::int32_t width, std::int32_t height);

/// Frees the planes that are there and zeroes the record, which no other thread may see. Any thread.
void free_overlay(logo_image_s& record);

/// Puts `built`, whole, in the place of logo_image or datetime_image. Takes the engine lock just for that, so
/// that a frame is blended with the old record or with the new one.
/// @return the old record: no blend reads its planes any more, and the caller frees them
[[nodiscard]] logo_image_s exchange_overlay(logo_image_s& shared, const logo_image_s& built);

/// Clears logo_image and frees its planes. UI thread.
void free_logo_image();

/// Stops the blending of logo_image from the next frame on; the planes stay. UI thread.
/// @return whether it was enabled, for restore_logo_image
bool suspend_logo_image();

/// Sets the enabled flag to what suspending returned; an empty record stays disabled. UI thread.
void restore_logo_image(bool enabled);

/// Blends one record into a frame pair: luma under it is read from the output, chroma from the input,
/// offsets come from the input descriptor. The rectangle is clipped to the frame; an odd position is taken
/// as the even one before it. Filter thread, engine lock held.
void logo_filter(logo_image_s record, const camera_buffer_t* input, const camera_buffer_t* output);

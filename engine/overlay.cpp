#include "engine/overlay.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "engine/filter_thread.h"
#include "engine/frame_planes.h"
#include "engine/kernels/overlay_kernels.h"

logo_image_s logo_image = {};
logo_image_s datetime_image = {};

namespace {

/// A vector that straddles two cache lines costs two loads.
constexpr std::align_val_t plane_alignment{64};

/// Part of an overlay that lies in the frame, along one axis, in whole 2x2 blocks.
struct clipped_span {
  std::ptrdiff_t in_overlay;  ///< first sample, even
  std::ptrdiff_t in_frame;    ///< the same one in the frame, even
  std::ptrdiff_t size;        ///< even; not positive when nothing is left
};

/// An odd position is taken as the even one before it: blocks have to line up with the frame's chroma pairs.
clipped_span clip(std::int32_t position, std::int32_t size, std::uint32_t frame_size) {
  const std::ptrdiff_t start = std::ptrdiff_t{position} & ~std::ptrdiff_t{1};
  const std::ptrdiff_t end = start + (std::ptrdiff_t{size} & ~std::ptrdiff_t{1});
  const std::ptrdiff_t frame_end = static_cast<std::ptrdiff_t>(frame_size) & ~std::ptrdiff_t{1};
  const std::ptrdiff_t first = std::max<std::ptrdiff_t>(start, 0);
  return {first - start, first, std::min(end, frame_end) - first};
}

}  // namespace

logo_image_s allocate_overlay(std::int32_t width, std::int32_t height) {
  const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  return {.x = 0,
          .y = 0,
          .width = width,
          .height = height,
          .luma = new (plane_alignment) std::uint8_t[pixels],
          .chroma = new (plane_alignment) std::uint8_t[pixels / 2],
          .alpha = new (plane_alignment) std::uint8_t[pixels],
          .chroma_alpha = new (plane_alignment) std::uint8_t[pixels / 4],
          .enabled = false};
}

void free_overlay(logo_image_s& record) {
  for (std::uint8_t* plane : {record.luma, record.chroma, record.alpha, record.chroma_alpha})
    ::operator delete[](plane, plane_alignment);
  record = {};
}

logo_image_s exchange_overlay(logo_image_s& shared, const logo_image_s& built) {
  const std::lock_guard lock(engine_lock());
  return std::exchange(shared, built);
}

void free_logo_image() {
  logo_image_s old = exchange_overlay(logo_image, {});
  free_overlay(old);
}

bool suspend_logo_image() {
  const std::lock_guard lock(engine_lock());
  return std::exchange(logo_image.enabled, false);
}

void restore_logo_image(bool enabled) {
  const std::lock_guard lock(engine_lock());
  logo_image.enabled = enabled && logo_image.luma != nullptr;
}

void logo_filter(logo_image_s record, const camera_buffer_t* input, const camera_buffer_t* output) {
  const clipped_span x = clip(record.x, record.width, input->nv12.width);
  const clipped_span y = clip(record.y, record.height, input->nv12.height);
  if (x.size <= 0 || y.size <= 0) return;

  const std::ptrdiff_t source = y.in_overlay * record.width + x.in_overlay;
  const std::ptrdiff_t source_block = y.in_overlay / 2 * record.width;
  const std::ptrdiff_t luma = y.in_frame * luma_stride(*input) + x.in_frame;
  const std::ptrdiff_t chroma = chroma_offset(*input) + y.in_frame / 2 * chroma_stride(*input) + x.in_frame;
  const kernels::blend_planes planes = {
      .luma = record.luma + source,
      .chroma = record.chroma + source_block + x.in_overlay,
      .alpha = record.alpha + source,
      .chroma_alpha = record.chroma_alpha + source_block / 2 + x.in_overlay / 2,
      .stride = record.width,
      .background_chroma = input->data + chroma,
      .frame_luma = output->data + luma,
      .frame_chroma = output->data + chroma,
      .frame_stride = luma_stride(*input),
      .frame_chroma_stride = chroma_stride(*input),
  };
  kernels::blend(planes, static_cast<std::size_t>(x.size), static_cast<std::size_t>(y.size));
}

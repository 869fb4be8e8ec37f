#include "engine/overlay.h"

#include <algorithm>

#include "engine/frame_planes.h"
#include "engine/kernels/reference.h"

logo_image_s logo_image = {};
logo_image_s datetime_image = {};

namespace {

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

void logo_filter(logo_image_s record, const camera_buffer_t* input, const camera_buffer_t* output) {
  const clipped_span x = clip(record.x, record.width, input->nv12.width);
  const clipped_span y = clip(record.y, record.height, input->nv12.height);
  if (x.size <= 0 || y.size <= 0) return;

  const std::ptrdiff_t source = y.in_overlay * record.width + x.in_overlay;
  const std::ptrdiff_t source_block = y.in_overlay / 2 * record.width;
  const std::ptrdiff_t luma = y.in_frame * luma_stride(*input) + x.in_frame;
  const std::ptrdiff_t chroma = chroma_offset(*input) + y.in_frame / 2 * chroma_stride(*input) + x.in_frame;
  const kernels::reference::blend_planes planes = {
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
  kernels::reference::blend(planes, static_cast<std::size_t>(x.size), static_cast<std::size_t>(y.size));
}

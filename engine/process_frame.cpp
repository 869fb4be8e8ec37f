// The per-frame steps, in strips of rows: all of them go over one strip while it is in the cache, then over the next.

#include <algorithm>
#include <cstdio>
#include <limits>

#include "engine/color_filter.h"
#include "engine/filter_thread.h"
#include "engine/frame_planes.h"
#include "engine/overlay.h"

namespace {

/// Luma of a strip. With its chroma and what is blended over it, three times as much goes through the cache, and
/// has to fit its second level beside what else lives there.
constexpr std::size_t strip_bytes = 32768;

/// What happens to a frame, read once: a change in the middle would blend an overlay into a frame twice.
struct frame_steps {
  bool with_logo, own_color, with_stamp;
  color_edit color;
};

/// Engine lock held.
frame_steps current_steps() {
  return {logo_image.enabled && _include_logo, _include_logo_original_color, datetime_image.enabled,
          color_edit_of(_cur_camera_filter)};
}

/// Rows of luma from `first` on, which is even, and their chroma.
camera_buffer_t strip(const camera_buffer_t& frame, std::uint32_t first, std::uint32_t rows) {
  camera_buffer_t part = frame;
  const std::ptrdiff_t moved = std::ptrdiff_t{first} * luma_stride(frame);
  part.data += moved;
  part.nv12.uv_offset = chroma_offset(frame) + std::ptrdiff_t{first / 2} * chroma_stride(frame) - moved;
  part.nv12.height = rows;
  return part;
}

void blend_strip(logo_image_s record, std::uint32_t first, const camera_buffer_t& input,
                 const camera_buffer_t& output) {
  const std::int64_t y = std::int64_t{record.y} - first;
  record.y = static_cast<std::int32_t>(std::max<std::int64_t>(y, std::numeric_limits<std::int32_t>::min()));
  logo_filter(record, &input, &output);
}

/// Both descriptors are of the strip that begins at row `first`.
void process_strip(const frame_steps& steps, std::uint32_t first, const camera_buffer_t& input,
                   const camera_buffer_t& output) {
  if (steps.with_logo && !steps.own_color) blend_strip(logo_image, first, input, output);
  if (steps.with_stamp) blend_strip(datetime_image, first, input, output);
  apply_color_edit(steps.color, input, output);
  if (steps.with_logo && steps.own_color) blend_strip(logo_image, first, input, output);
}

/// An even number of rows; all of them where blends and fills would disagree about where a strip is.
std::uint32_t strip_rows(const camera_buffer_t& input, const camera_buffer_t& output) {
  const bool same_layout = luma_stride(input) == luma_stride(output) && chroma_offset(input) == chroma_offset(output) &&
                           chroma_stride(input) == chroma_stride(output);
  if (!same_layout || input.nv12.width == 0) return input.nv12.height;
  return std::max<std::uint32_t>(2, strip_bytes / input.nv12.width & ~1u);
}

}  // namespace

void process_frame(const camera_buffer_t& input, const camera_buffer_t& output) {
  if (_screen_recording) return;
  if (input.metadata_size == broken_frame_metadata_size) {
    std::fputs("framesize error\n", stderr);
    return;
  }
  const std::lock_guard lock(engine_lock());
  const frame_steps steps = current_steps();
  const std::uint32_t height = input.nv12.height, rows = strip_rows(input, output);
  for (std::uint32_t first = 0; first < height; first += std::min(rows, height - first)) {
    const std::uint32_t count = std::min(rows, height - first);
    process_strip(steps, first, strip(input, first, count), strip(output, first, count));
  }
}

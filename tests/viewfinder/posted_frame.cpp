#include "tests/viewfinder/posted_frame.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

std::uint8_t level(double value) {
  return static_cast<std::uint8_t>(std::clamp(std::lround(value), 0L, 255L));
}

struct Yuv {
  std::uint8_t y, u, v;
};

/// JFIF's formulas.
Yuv yuv_of(const QColor& c) {
  const double r = c.red();
  const double g = c.green();
  const double b = c.blue();
  return {level(0.299 * r + 0.587 * g + 0.114 * b), level(128 - 0.168736 * r - 0.331264 * g + 0.5 * b),
          level(128 + 0.5 * r - 0.418688 * g - 0.081312 * b)};
}

}  // namespace

handset::Frame quadrants(int width, int height, const QColor (&colours)[4]) {
  auto info = std::make_shared<GstVideoInfo>();
  gst_video_info_set_format(info.get(), GST_VIDEO_FORMAT_NV12, width, height);
  const int stride = width + 32;
  info->stride[0] = info->stride[1] = stride;
  info->offset[1] = static_cast<gsize>(stride) * height;
  info->size = info->offset[1] + static_cast<gsize>(stride) * ((height + 1) / 2);

  std::vector<std::uint8_t> bytes(info->size, 99);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const int quadrant = y < height / 2 ? (x < width / 2 ? 0 : 1) : (x < width / 2 ? 3 : 2);
      const Yuv yuv = yuv_of(colours[quadrant]);
      bytes[static_cast<std::size_t>(y) * stride + x] = yuv.y;
      std::uint8_t* pair = bytes.data() + info->offset[1] + static_cast<std::size_t>(y / 2) * stride + x / 2 * 2;
      pair[0] = yuv.u;
      pair[1] = yuv.v;
    }
  }
  gst_init(nullptr, nullptr);
  GstBuffer* buffer = gst_buffer_new_allocate(nullptr, bytes.size(), nullptr);
  gst_buffer_fill(buffer, 0, bytes.data(), bytes.size());
  return {handset::BufferPtr::adopt(buffer), std::move(info), 0};
}

#include "assets/render/effect_picture.h"

#include <cstdint>
#include <vector>

#include "engine/color_filter.h"

namespace assets {
namespace {

/// A picture's planes, as the camera delivers them.
struct Frame {
  explicit Frame(const QImage& picture) : bytes(picture.width() * picture.height() * 3 / 2) {
    const auto width = static_cast<std::uint32_t>(picture.width());
    const auto height = static_cast<std::uint32_t>(picture.height());
    descriptor.data = bytes.data();
    descriptor.data_size = bytes.size();
    descriptor.frametype = CAMERA_FRAMETYPE_NV12;
    descriptor.nv12 = {
        .height = height, .width = width, .stride = width, .uv_offset = width * height, .uv_stride = width};
    for (int y = 0; y < picture.height(); ++y) {
      for (int x = 0; x < picture.width(); ++x) put(x, y, picture.pixel(x, y));
    }
  }

  std::uint8_t& luma(int x, int y) { return bytes[y * descriptor.nv12.stride + x]; }
  std::uint8_t* chroma(int x, int y) {
    return &bytes[descriptor.nv12.uv_offset + y / 2 * descriptor.nv12.uv_stride + x / 2 * 2];
  }

  /// The colour of a block is that of its last pixel.
  void put(int x, int y, QRgb color) {
    std::uint8_t* pair = chroma(x, y);
    logo_get_yuv_for_rgb(static_cast<std::uint8_t>(qRed(color)), static_cast<std::uint8_t>(qGreen(color)),
                         static_cast<std::uint8_t>(qBlue(color)), &luma(x, y), &pair[0], &pair[1]);
  }

  QRgb at(int x, int y, int alpha) {
    double red = 0, green = 0, blue = 0;
    const std::uint8_t* pair = chroma(x, y);
    get_rgb_for_yuv(luma(x, y), pair[0], pair[1], &red, &green, &blue);
    return qRgba(qRound(red * 255), qRound(green * 255), qRound(blue * 255), alpha);
  }

  std::vector<std::uint8_t> bytes;
  camera_buffer_t descriptor{};
};

}  // namespace

QImage throughFilter(const QImage& picture, int effect) {
  QImage result = picture.convertToFormat(QImage::Format_ARGB32);
  if (effect < 0) return result;
  Frame frame(result);
  FilterColorMatch which{};
  if (color_match_for_effect(effect, &which)) filter_init(_color_filter_value, which);
  apply_color_edit(color_edit_of(effect), frame.descriptor, frame.descriptor);
  for (int y = 0; y < result.height(); ++y) {
    for (int x = 0; x < result.width(); ++x) result.setPixel(x, y, frame.at(x, y, qAlpha(result.pixel(x, y))));
  }
  return result;
}

}  // namespace assets

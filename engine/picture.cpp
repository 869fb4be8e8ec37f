#include "engine/picture.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

/// `from` source pixels become `to`.
struct ratio {
  std::int64_t from, to;

  /// The source pixel under the middle of a target pixel.
  int source(std::int64_t target, int size) const {
    return static_cast<int>(std::min<std::int64_t>((2 * target + 1) * from / (2 * to), size - 1));
  }
};

QImage sampled(const QImage& image, QSize size, ratio across, ratio down) {
  if (size.isEmpty()) return {};
  std::vector<int> columns(static_cast<std::size_t>(size.width()));
  for (int x = 0; x < size.width(); ++x) columns[static_cast<std::size_t>(x)] = across.source(x, image.width());
  QImage target(size, QImage::Format_ARGB32);
  for (int y = 0; y < target.height(); ++y) {
    const auto* from = reinterpret_cast<const QRgb*>(image.constScanLine(down.source(y, image.height())));
    auto* to = reinterpret_cast<QRgb*>(target.scanLine(y));
    for (const int column : columns) *to++ = from[column];
  }
  return target;
}

}  // namespace

QImage scaled_to(const QImage& image, int width, int height) {
  if (image.width() == width && image.height() == height) return image;
  return sampled(image, {width, height}, {image.width(), width}, {image.height(), height});
}

QImage scaled_to_width(const QImage& image, int width, int max_rows) {
  const ratio both = {image.width(), width};
  const std::int64_t rows = (std::int64_t{2} * image.height() * width / image.width() + 1) / 2;  // rounded
  return sampled(image, {width, static_cast<int>(std::min<std::int64_t>(rows, max_rows))}, both, both);
}

#include "assets/render/icons.h"

#include <QPainter>
#include <QSvgRenderer>
#include <algorithm>
#include <string_view>
#include <vector>

#include "assets/render/effect_picture.h"

namespace assets {
namespace {

/// The drawings of one icon.
class Brush {
 public:
  explicit Brush(const QDir& drawings) : mDrawings(drawings) {}

  /// Draws into a rectangle of `target`.
  void draw(QPainter& target, const char* name, const QRectF& where) {
    const QString file = mDrawings.filePath(QString::fromLatin1(name) + ".svg");
    QSvgRenderer drawing;
    if (drawing.load(file)) {
      drawing.render(&target, where);
    } else {
      missing = file;
    }
  }

  QImage drawn(const char* name, int size) {
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    draw(painter, name, image.rect());
    return image;
  }

  QString missing;

 private:
  QDir mDrawings;
};

QImage glyph(const Icon& icon, int size, Brush& brush) {
  if (icon.effect) {
    // Chroma is half as fine as luma: filtered at twice the size, the colours end where the shapes do.
    QImage image = throughFilter(brush.drawn(icon.glyph, 2 * size), *icon.effect)
                       .scaled(size, size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    QPainter painter(&image);
    brush.draw(painter, "effect_frame", image.rect());
    return image;
  }
  QImage image = brush.drawn(icon.glyph, size);
  if (icon.crossed) {
    QPainter painter(&image);
    painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
    painter.drawImage(0, 0, brush.drawn("slash_gap", size));
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    brush.draw(painter, "slash", image.rect());
  }
  return image;
}

/// One row or column of opacities, averaged over `radius` neighbours on both sides.
void smooth(const std::vector<int>& from, std::vector<int>& to, int radius) {
  const int count = static_cast<int>(from.size());
  for (int i = 0; i < count; ++i) {
    int sum = 0;
    for (int k = std::max(i - radius, 0); k <= std::min(i + radius, count - 1); ++k) sum += from[k];
    to[i] = sum / (2 * radius + 1);
  }
}

/// The shape of an image, blurred, in black.
QImage shadowOf(const QImage& image) {
  const int size = image.width();
  std::vector<int> cells(size * size), line(size), smoothed(size);
  for (int i = 0; i < size * size; ++i) cells[i] = qAlpha(image.pixel(i % size, i / size));
  const auto pass = [&](int along, int across) {
    for (int i = 0; i < size; ++i) {
      for (int k = 0; k < size; ++k) line[k] = cells[i * across + k * along];
      smooth(line, smoothed, std::max(size / 48, 1));
      for (int k = 0; k < size; ++k) cells[i * across + k * along] = smoothed[k];
    }
  };
  for (int i = 0; i < 2; ++i) {
    pass(1, size);
    pass(size, 1);
  }
  QImage shadow(size, size, QImage::Format_ARGB32_Premultiplied);
  for (int i = 0; i < size * size; ++i)
    shadow.setPixel(i % size, i / size, qRgba(0, 0, 0, std::min(cells[i] * 3 / 2, 170)));
  return shadow;
}

}  // namespace

QImage drawIcon(const Icon& icon, const QDir& drawings, QString* missing) {
  constexpr double glyphOnGround = 0.64;
  constexpr double glyphPressed = 0.58;
  Brush brush(drawings);
  QImage top(icon.size, icon.size, QImage::Format_ARGB32_Premultiplied);
  top.fill(Qt::transparent);
  QPainter painter(&top);
  if (icon.ground) {
    brush.draw(painter, icon.ground, top.rect());
    const bool pressed = std::string_view(icon.ground).ends_with("_pressed");
    const int side = qRound(icon.size * (pressed ? glyphPressed : glyphOnGround) / 2) * 2;
    const int margin = (icon.size - side) / 2;
    painter.drawImage(margin, margin, glyph(icon, side, brush));
  } else {
    painter.drawImage(0, 0, glyph(icon, icon.size, brush));
  }
  painter.end();
  QImage image = shadowOf(top);
  QPainter(&image).drawImage(0, 0, top);
  *missing = brush.missing;
  return brush.missing.isEmpty() ? image.convertToFormat(QImage::Format_ARGB32) : QImage();
}

}  // namespace assets

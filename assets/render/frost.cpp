#include <QPainter>
#include <numbers>

#include "assets/render/noise.h"
#include "assets/render/picture.h"
#include "assets/render/textures.h"

namespace assets {
namespace {

/// One feather of ice: a curved stem with barbs on both sides, which carry finer barbs.
struct Feather {
  QPointF root;
  double angle, length, width, bend;  ///< radians, pixels, pixels, radians per step
  std::uint32_t seed;
};

void grow(QPainter& painter, const Feather& feather, int generations) {
  constexpr double step = 6;
  const int steps = std::max(1, static_cast<int>(feather.length / step));
  QPointF place = feather.root;
  double angle = feather.angle;
  for (int i = 0; i < steps; ++i) {
    const double left = 1 - static_cast<double>(i) / steps;
    const QPointF next = place + step * QPointF(std::cos(angle), std::sin(angle));
    QColor ink(Qt::white);
    ink.setAlphaF(static_cast<float>((generations == 0 ? 0.42 : 0.62) * (0.35 + 0.65 * left)));
    painter.setPen(QPen(ink, feather.width * (0.4 + 0.6 * left), Qt::SolidLine, Qt::FlatCap));
    painter.drawLine(place, next);
    for (const int side : {-1, 1}) {
      if (generations == 0) break;
      const std::uint32_t seed = hash(feather.seed, i * 2 + (side + 1) / 2, 511);
      const double chance = unit(seed, 0, 521);
      if (chance < 0.16) continue;
      // Barbs swell behind the root and shorten towards the tip: the outline of a fern.
      const double outline = std::pow(left, 0.85) * smoothstep(1.04, 0.80, left);
      const double length = feather.length * 0.42 * outline * (0.55 + 0.45 * chance);
      const double spread = std::numbers::pi * (0.27 + 0.05 * unit(seed, 1, 521));
      grow(painter, {place, angle + side * spread, length, feather.width * 0.62, -side * 0.012, seed}, generations - 1);
    }
    angle += feather.bend;
    place = next;
  }
}

/// A place on the border, counted clockwise, and the direction into the picture.
struct Root {
  QPointF place;
  double inward;
};
Root rootAt(double s) {
  if (s < fullWidth) return {{s, -4}, std::numbers::pi / 2};
  s -= fullWidth;
  if (s < fullHeight) return {{fullWidth + 4.0, s}, std::numbers::pi};
  s -= fullHeight;
  if (s < fullWidth) return {{fullWidth - s, fullHeight + 4.0}, -std::numbers::pi / 2};
  return {{-4, fullHeight - (s - fullWidth)}, 0};
}

/// Feathers rooted all along the border, much longer in the corners.
void growFromBorder(QPainter& painter, int count, double longest, double width, std::uint32_t seed) {
  constexpr double around = 2.0 * (fullWidth + fullHeight);
  for (int i = 0; i < count; ++i) {
    const auto random = [&](unsigned what) { return unit(i, what, seed); };
    const Root root = rootAt((i + random(0)) * around / count);
    const double corner = smoothstep(0.98, 1.40, fromMiddle(root.place.x(), root.place.y()));
    const double length = longest * (0.12 + 0.88 * square(random(1))) * (0.62 + 0.62 * corner);
    const double bend = 0.026 * (random(3) - 0.5);
    grow(painter, {root.place, root.inward + 1.9 * (random(2) - 0.5), length, width, bend, hash(i, 7, seed)}, 2);
  }
}

}  // namespace

/// A frozen pane: feathers of ice, near and far, over a granular rime that thins out towards the middle.
QImage frostWindow(QSize size) {
  const Field front = Field::drawn(size, [](QPainter& p) { growFromBorder(p, 92, 500, 3.4, 531); });
  const Field back = Field::drawn(size / 2, [](QPainter& p) { growFromBorder(p, 130, 420, 3.4, 541); }).blurred(2);
  const Field body = front.blurred(3);
  const Field mass = front.blurred(12);
  const Field cloud = Field::of(size / 4, [](double x, double y) {
    return fbm(x / fullWidth, y / fullHeight, {6, 4, 5, 581, 0.55});
  });
  const Field grains = Field::of(size / 2, [](double x, double y) {
    return square(ridged(x / fullWidth, y / fullHeight, {70, 40, 3, 571, 0.7}));
  });
  return paint(size, [&](double x, double y) {
    const double r = fromMiddle(x, y, 2.6) + 0.18 * cloud.at(x, y);
    const double cover = smoothstep(0.66, 1.10, r);
    const double grain = grains.at(x, y);
    Pixel pixel{hex(0xbcd6ec), 0.05 * smoothstep(0.2, 0.7, r) + cover * (0.20 + 0.62 * grain)};
    pixel = over(pixel, hex(0xa9c9e4), 0.50 * saturate(2.0 * mass.at(x, y)));
    pixel = over(pixel, hex(0xcfe3f3), 0.70 * back.at(x, y) * smoothstep(0.40, 0.85, r));
    pixel = over(pixel, hex(0xe2eff9), 0.60 * saturate(1.2 * body.at(x, y)));
    pixel = over(pixel, hex(0xffffff), 0.90 * front.at(x, y));
    const double light = body.at(x - 2, y - 2) - body.at(x + 3, y + 3);
    pixel.colour = pixel.colour * (0.94 - 0.5 * light);
    return pixel;
  });
}

}  // namespace assets

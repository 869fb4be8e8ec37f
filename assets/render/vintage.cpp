#include <QPainter>
#include <QPainterPath>

#include "assets/render/noise.h"
#include "assets/render/picture.h"
#include "assets/render/textures.h"

namespace assets {
namespace {

/// Long vertical scratches that wander a little and come and go, as from a dirty film gate.
void drawScratches(QPainter& painter) {
  for (int i = 0; i < 26; ++i) {
    const auto random = [&](unsigned what) { return unit(i, what, 401); };
    const double x = fullWidth * random(0);
    const double top = -200 + 900 * random(1);
    const double bottom = i % 4 == 0 ? fullHeight + 50 : top + 120 + 700 * random(2);
    QPainterPath path(QPointF(x, top));
    for (double y = top; y < bottom; y += 24) {
      path.lineTo(x + 7 * fbm(random(3), y / fullHeight, {3, 4, 3, 411}) + 10 * (random(4) - 0.5) * y / fullHeight, y);
    }
    QColor ink(Qt::white);
    ink.setAlphaF(static_cast<float>(0.18 + 0.5 * square(random(5))));
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(ink, 1.6 + 1.8 * square(random(6)), Qt::DashLine, Qt::RoundCap));
    QPen pen = painter.pen();
    pen.setDashPattern({60 + 200 * random(7), 3 + 50 * random(8), 20 + 90 * random(9), 4 + 30 * random(10)});
    painter.setPen(pen);
    painter.drawPath(path);
  }
}

/// Hairs: short curls. Specks: ragged crumbs.
void drawDirt(QPainter& painter) {
  for (int i = 0; i < 11; ++i) {
    const auto random = [&](unsigned what) { return unit(i, what, 421) - 0.5; };
    const QPointF start(fullWidth * (random(0) + 0.5), fullHeight * (random(1) + 0.5));
    QPainterPath path(start);
    path.cubicTo(start + QPointF(120 * random(2), 120 * random(3)), start + QPointF(160 * random(4), 160 * random(5)),
                 start + QPointF(130 * random(6), 130 * random(7)));
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(255, 255, 255, 190), 2.0 + random(8), Qt::SolidLine, Qt::RoundCap));
    painter.drawPath(path);
  }
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor(255, 255, 255, 200));
  for (int i = 0; i < 130; ++i) {
    const auto random = [&](unsigned what) { return unit(i, what, 431); };
    const QPointF middle(fullWidth * random(0), fullHeight * random(1));
    const double radius = 1.5 + 6 * std::pow(random(2), 4);
    QPolygonF crumb;
    for (unsigned k = 0; k < 7; ++k) {
      const double angle = k * 0.8976;
      crumb << middle + radius * (0.5 + random(3 + k)) * QPointF(std::cos(angle), std::sin(angle));
    }
    painter.drawPolygon(crumb);
  }
}

/// Brightness of the two light leaks: one along the left edge, one slanting in from the upper right.
struct Leaks {
  double left, right;
};
Leaks leaksAt(double x, double y) {
  const double u = x / fullWidth;
  const double v = y / fullHeight;
  const double wave = fbm(0.3, v, {1, 2, 3, 441});
  const double reach = 0.17 + 0.13 * wave + 0.05 * fbm(u, v, {2, 2, 3, 451});
  const double left = std::exp(-square(u / std::max(0.04, reach))) * (0.55 + 0.5 * smoothstep(0.95, 0.25, v));
  const double across = (u - 0.90) + 0.42 * (v - 0.10) + 0.06 * fbm(u, v, {2, 2, 3, 461});
  const double right = std::exp(-square(across / 0.105)) * smoothstep(0.95, 0.0, v);
  return {saturate(left), saturate(right)};
}

/// Film grain, -1 to 1, in blocks of two by two pixels: the blender has one colour for each block, and
/// an encoder keeps grain of this size.
double grainAt(double x, double y) {
  const auto column = static_cast<std::uint32_t>(x / 2);
  const auto row = static_cast<std::uint32_t>(y / 2);
  return unit(column, row, 491) + unit(column, row, 492) - 1;
}

/// Distance to the border of the film gate: a rectangle with round corners and an uneven edge.
double gateDistance(double x, double y) {
  constexpr double inset = 26;
  constexpr double corner = 62;
  const double dx = std::abs(x - fullWidth / 2.0) - (fullWidth / 2.0 - inset - corner);
  const double dy = std::abs(y - fullHeight / 2.0) - (fullHeight / 2.0 - inset - corner);
  const double outside = std::hypot(std::max(dx, 0.0), std::max(dy, 0.0)) + std::min(std::max(dx, dy), 0.0);
  return outside - corner + 9 * fbm(x / fullWidth, y / fullHeight, {16, 9, 5, 471, 0.6});
}

}  // namespace

/// Old cine film: a faded warm wash, a vignette, light leaks, grain, scratches and dirt.
QImage vintage(QSize size) {
  const Field scratches = Field::drawn(size, drawScratches);
  const Field dirt = Field::drawn(size, drawDirt);
  const Field leftLeak = Field::of(size / 4, [](double x, double y) { return leaksAt(x, y).left; });
  const Field rightLeak = Field::of(size / 4, [](double x, double y) { return leaksAt(x, y).right; });
  const Field mottling = Field::of(size / 4, [](double x, double y) {
    return fbm(x / fullWidth, y / fullHeight, {6, 4, 4, 481});
  });
  const Field gate = Field::of(size / 2, [](double x, double y) { return smoothstep(-12, 7, gateDistance(x, y)); });
  return paint(size, [&](double x, double y) {
    const double mottle = mottling.at(x, y);
    Pixel pixel{hex(0xd79a4c), 0.15 + 0.05 * mottle};
    const double r = fromMiddle(x, y, 2.2);
    pixel = over(pixel, hex(0x1c0d04), 0.80 * smoothstep(0.50, 1.32, r + 0.05 * mottle));
    const double left = leftLeak.at(x, y);
    const double right = rightLeak.at(x, y);
    pixel = over(pixel, ramp({hex(0xa81c06), hex(0xe8531a), hex(0xffa34a), hex(0xffe0a0)}, left), 0.78 * left);
    pixel = over(pixel, ramp({hex(0xb02a2a), hex(0xf07a30), hex(0xffd27a)}, right), 0.58 * right);
    const double grain = grainAt(x, y);
    pixel = over(pixel, grain > 0 ? hex(0xfff0d8) : hex(0x140a04), 0.13 * std::abs(grain));
    pixel = over(pixel, hex(0xfff4de), 0.75 * scratches.at(x, y));
    pixel = over(pixel, hex(0x180c05), 0.80 * dirt.at(x, y));
    return over(pixel, hex(0x0a0603), 0.97 * gate.at(x, y));
  });
}

}  // namespace assets

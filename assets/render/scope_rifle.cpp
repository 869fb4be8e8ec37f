#include <QPainter>

#include "assets/render/font.h"
#include "assets/render/picture.h"
#include "assets/render/textures.h"

namespace assets {
namespace {

constexpr double middleX = fullWidth / 2.0;
constexpr double middleY = fullHeight / 2.0;
constexpr double lens = 508;  // radius of the view
constexpr double mil = 44;    // spacing of the marks

QPen line(double width) {
  return {Qt::white, width, Qt::SolidLine, Qt::FlatCap};
}

void drawText(QPainter& painter, const QString& text, double x, double y, double size) {
  painter.fillPath(textOutline(text, size).translated(x, y), Qt::white);
}

/// Heavy posts from the rim, thin lines from their tips to the gap in the middle, in three directions.
void drawPosts(QPainter& painter) {
  for (const double angle : {0.0, 90.0, 180.0}) {
    painter.save();
    painter.rotate(angle);
    painter.setPen(Qt::NoPen);
    painter.drawPolygon(QPolygonF{{300, -1.5}, {316, -6}, {lens + 8, -6}, {lens + 8, 6}, {316, 6}, {300, 1.5}});
    painter.setPen(line(3));
    painter.drawLine(QPointF(24, 0), QPointF(304, 0));
    painter.restore();
  }
  painter.setPen(line(3));
  painter.drawLine(QPointF(0, -24), QPointF(0, -lens - 8));
}

/// Marks every half mil on the lines, and the hold-over rows below, wider the farther down.
void drawMarks(QPainter& painter) {
  painter.setPen(line(3));
  for (int i = 2; i <= 13; ++i) {
    const double at = i * mil / 2;
    const double reach = i % 2 == 0 ? 11 : 6;
    painter.drawLine(QPointF(at, -reach), QPointF(at, reach));
    painter.drawLine(QPointF(-at, -reach), QPointF(-at, reach));
    painter.drawLine(QPointF(-reach, -at), QPointF(reach, -at));
  }
  for (int row = 1; row <= 6; ++row) {
    const double y = row * mil;
    painter.setPen(line(3));
    painter.drawLine(QPointF(-12, y), QPointF(12, y));
    painter.setPen(Qt::NoPen);
    for (int dot = 1; dot <= row; ++dot) {
      for (const double side : {-1.0, 1.0}) painter.drawEllipse(QPointF(side * dot * mil * 0.6, y), 3.2, 3.2);
    }
    if (row % 2 == 0) drawText(painter, QString::number(row), row * mil * 0.6 + 16, y + 8, 22);
  }
}

/// Range finder: a target as tall as the gap between curve and base line is this many hundred metres away.
void drawRangeFinder(QPainter& painter) {
  painter.save();
  painter.translate(-372, 262);
  painter.setPen(line(3));
  painter.drawLine(QPointF(0, 0), QPointF(190, 0));
  QPolygonF curve;
  for (int i = 0; i <= 40; ++i) curve << QPointF(190.0 * i / 40, -150 / (2 + 8.0 * i / 40));
  painter.drawPolyline(curve);
  for (int range = 2; range <= 10; range += 2) {
    const double x = 190.0 * (range - 2) / 8;
    painter.drawLine(QPointF(x, -150.0 / range), QPointF(x, -150.0 / range - 10));
    drawText(painter, QString::number(range), x - (range == 10 ? 12 : 6), -150.0 / range - 16, 20);
  }
  painter.restore();
}

void drawReticle(QPainter& painter) {
  painter.translate(middleX, middleY);
  painter.setBrush(Qt::white);
  drawPosts(painter);
  drawMarks(painter);
  drawRangeFinder(painter);
}

/// The lit aiming point: a chevron and a dot under its tip.
void drawAimingPoint(QPainter& painter) {
  painter.translate(middleX, middleY);
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(Qt::white, 4, Qt::SolidLine, Qt::RoundCap, Qt::MiterJoin));
  painter.drawPolyline(QPolygonF{{-15, 19}, {0, 0}, {15, 19}});
}

/// The dark tube around the lens: turned rings that catch a little light from above left.
Colour tube(double r, double angle) {
  const double rings = 0.5 + 0.5 * std::cos((r - lens) * 0.105);
  const double away = smoothstep(0, 40, r - lens) * std::exp(-(r - lens) / 170);
  const double glint = std::pow(0.5 + 0.5 * std::cos(angle + 2.3), 6);
  return mix(hex(0x050608), hex(0x6e7680), away * glint * (0.36 + 0.16 * rings));
}

}  // namespace

/// A rifle scope: round view in a dark tube, mil reticle with hold-over rows, range finder, lit chevron.
QImage scopeRifle(QSize size) {
  const Field reticle = Field::drawn(size, drawReticle);
  const Field halo = reticle.blurred(3);
  const Field point = Field::drawn(size, drawAimingPoint);
  const Field glow = point.blurred(7);
  return paint(size, [&](double x, double y) {
    const double r = std::hypot(x - middleX, y - middleY);
    const double angle = std::atan2(y - middleY, x - middleX);
    const double inside = smoothstep(lens + 3, lens - 6, r);
    Pixel pixel{hex(0x05080a), 0.03 + 0.62 * std::pow(saturate(r / lens), 9) + 0.10 * square(saturate(r / lens))};
    pixel = over(pixel, hex(0xdfe8ee), 0.34 * saturate(1.5 * halo.at(x, y)) * inside);
    pixel = over(pixel, hex(0x060708), 0.94 * reticle.at(x, y));
    pixel = over(pixel, hex(0xff2a18), saturate(2.2 * glow.at(x, y)) * 0.55);
    pixel = over(pixel, mix(hex(0xff3a22), hex(0xffc0a8), smoothstep(0.7, 1.6, point.at(x, y) + 2 * glow.at(x, y))),
                 point.at(x, y));
    const double coating = std::exp(-square((r - lens + 16) / 7));
    const double blue = coating * std::pow(0.5 + 0.5 * std::cos(angle + 2.2), 3);
    const double amber = coating * std::pow(0.5 + 0.5 * std::cos(angle - 0.95), 4);
    pixel = over(pixel, hex(0x4a78d8), 0.50 * blue);
    pixel = over(pixel, hex(0xd88a3a), 0.34 * amber);
    return over(pixel, tube(r, angle), 1 - inside);
  });
}

}  // namespace assets

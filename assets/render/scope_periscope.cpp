#include <QPainter>
#include <QPainterPath>

#include "assets/render/font.h"
#include "assets/render/noise.h"
#include "assets/render/picture.h"
#include "assets/render/textures.h"

namespace assets {
namespace {

constexpr double middleX = fullWidth / 2.0;
constexpr double middleY = fullHeight / 2.0;
constexpr double halfWidth = 905;
constexpr double halfHeight = 492;

QPen line(double width) {
  return {Qt::white, width, Qt::SolidLine, Qt::FlatCap};
}

void drawText(QPainter& painter, const QString& text, double x, double y, double size) {
  const QPainterPath outline = textOutline(text, size);
  painter.fillPath(outline.translated(x - outline.boundingRect().center().x(), y), Qt::white);
}

/// Bearing tape along the top, three degrees a tick, with a marker on the middle.
void drawBearings(QPainter& painter) {
  constexpr double perDegree = 13;
  painter.drawLine(QPointF(-600, -392), QPointF(600, -392));
  for (int degree = -45; degree <= 45; degree += 3) {
    const double x = degree * perDegree;
    const bool major = degree % 15 == 0;
    painter.drawLine(QPointF(x, -392), QPointF(x, major ? -370 : -381));
    if (major) drawText(painter, QString("%1").arg((degree + 360) % 360, 3, 10, QChar('0')), x, -404, 26);
  }
  painter.drawPolygon(QPolygonF{{0, -362}, {-11, -342}, {11, -342}});
}

/// Elevation on the left, range on the right.
void drawLadders(QPainter& painter) {
  for (const double side : {-1.0, 1.0}) {
    const double x = side * 700;
    painter.drawLine(QPointF(x, -240), QPointF(x, 240));
    for (int i = -12; i <= 12; ++i) {
      const bool major = i % 4 == 0;
      painter.drawLine(QPointF(x, i * 20), QPointF(x - side * (major ? 26 : 13), i * 20));
      if (!major) continue;
      const QString text = side < 0 ? QString::number(std::abs(i) / 4 * 10) : QString::number((12 - i) / 4 * 5 + 5);
      drawText(painter, text, x + side * 28, i * 20 + 9, 24);
    }
  }
  painter.drawPolygon(QPolygonF{{-668, 0}, {-648, -10}, {-648, 10}});
  painter.drawPolygon(QPolygonF{{668, 60}, {648, 50}, {648, 70}});
}

/// Open cross with ticks, and the corners of a square around it.
void drawCross(QPainter& painter) {
  for (const double angle : {0.0, 90.0, 180.0, 270.0}) {
    painter.save();
    painter.rotate(angle);
    painter.drawLine(QPointF(34, 0), QPointF(250, 0));
    for (int i = 1; i <= 5; ++i) painter.drawLine(QPointF(40.0 * i + 40, -8), QPointF(40.0 * i + 40, 8));
    painter.drawPolyline(QPolygonF{{118, 150}, {150, 150}, {150, 118}});
    painter.restore();
  }
  painter.drawEllipse(QPointF(0, 0), 4, 4);
}

/// Range rings and bearing lines of the sounding display, fainter than the rest.
void drawRings(QPainter& painter) {
  QColor faint(Qt::white);
  faint.setAlphaF(0.42F);
  QPen pen(faint, 3, Qt::CustomDashLine, Qt::FlatCap);
  pen.setDashPattern({6, 7});
  painter.setPen(pen);
  painter.setBrush(Qt::NoBrush);
  for (const double r : {300.0, 420.0}) {
    for (const int start : {-30, 150}) {
      painter.drawArc(QRectF(-r, -r, 2 * r, 2 * r), start * 16, 60 * 16);
    }
  }
}

void drawGraticule(QPainter& painter) {
  painter.translate(middleX, middleY);
  drawRings(painter);
  painter.setBrush(Qt::white);
  painter.setPen(line(3));
  drawBearings(painter);
  drawLadders(painter);
  drawCross(painter);
  drawText(painter, "BRG 000", -560, 372, 28);
  drawText(painter, "ELV +00", -560, 408, 28);
  drawText(painter, "RNG 1350", 560, 372, 28);
  drawText(painter, QString::fromUtf8("\u00d76.0"), 560, 408, 28);
}

/// Signed distance along the ray from the middle, pixels, from the border of the window: a very round rectangle.
double windowDistance(double x, double y) {
  const double dx = std::abs(x - middleX) / halfWidth;
  const double dy = std::abs(y - middleY) / halfHeight;
  const double k = std::pow(std::pow(dx, 5) + std::pow(dy, 5), 0.2);
  return (k - 1) / std::max(k, 0.1) * std::hypot(x - middleX, y - middleY);
}

}  // namespace

/// A periscope's window at night: green graticule with bearings, elevation and range in a dark housing.
QImage scopePeriscope(QSize size) {
  const Field lines = Field::drawn(size, drawGraticule);
  const Field glow = lines.blurred(5);
  return paint(size, [&](double x, double y) {
    const double d = windowDistance(x, y);
    const double noise = fbm(x / fullWidth, y / fullHeight, {480, 270, 2, 901});
    Pixel pixel{hex(0x0a2a16), 0.16 + 0.05 * noise};
    pixel = over(pixel, hex(0x020805), 0.85 * std::pow(smoothstep(-420, 20, d), 2.2));
    pixel = over(pixel, hex(0x001206), 0.30 * saturate(2 * glow.at(x, y)));
    pixel = over(pixel, hex(0x38ff7c), 0.42 * saturate(1.6 * glow.at(x, y)));
    pixel = over(pixel, hex(0x9dffbe), 0.92 * lines.at(x, y));
    const double rim = std::exp(-square((d + 5) / 2.2));
    const double spill = std::exp(-square((d + 5) / 14));
    const double housing = smoothstep(-3, 3, d);
    const double bevel = smoothstep(4, 26, d) * smoothstep(64, 26, d);
    const double above = 0.5 - 0.5 * (y - middleY) / middleY;
    pixel = over(pixel, mix(hex(0x030504), hex(0x27302b), bevel * (0.25 + 0.75 * above)), housing);
    pixel = over(pixel, hex(0x2fe06c), 0.26 * spill);
    return over(pixel, hex(0x86f5ac), 0.70 * rim);
  });
}

}  // namespace assets

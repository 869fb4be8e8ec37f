#include <QColor>
#include <QPainter>
#include <QRadialGradient>

#include "assets/render/noise.h"
#include "assets/render/picture.h"
#include "assets/render/textures.h"

namespace assets {
namespace {

/// Grains of one size class. Sizes and softness in pixels of the full picture.
struct Grains {
  int count;
  double smallest, largest;
  double brightness;
  double keepClear;  ///< how strongly they avoid the middle, 0 to 1
  std::uint32_t seed;
};

/// Calls draw(x, y, radius, brightness) for every grain, and again across the border for those that touch it.
template <class Draw>
void scatter(const Grains& grains, const Draw& draw) {
  for (int i = 0; i < grains.count; ++i) {
    const auto random = [&](unsigned what) { return unit(i, what, grains.seed); };
    const double x = fullWidth * random(0);
    const double y = fullHeight * random(1);
    const double radius = blend(grains.smallest, grains.largest, std::pow(random(2), 3.5));
    const double swarm = smoothstep(-0.35, 0.45, fbm(x / fullWidth, y / fullHeight, {4, 3, 3, 361}));
    const double thin = (1 - grains.keepClear * (1 - smoothstep(0.35, 1.0, fromMiddle(x, y)))) * (0.15 + 0.85 * swarm);
    if (random(3) > thin) continue;
    const double brightness = grains.brightness * blend(0.35, 1.0, random(4));
    for (const double dx : {-1.0 * fullWidth, 0.0, 1.0 * fullWidth}) {
      for (const double dy : {-1.0 * fullHeight, 0.0, 1.0 * fullHeight}) {
        if (x + dx < -radius || x + dx > fullWidth + radius) continue;
        if (y + dy < -radius || y + dy > fullHeight + radius) continue;
        draw(x + dx, y + dy, radius, brightness);
      }
    }
  }
}

void soft(QPainter& painter, double x, double y, double radius, double brightness, double core) {
  QRadialGradient gradient(x, y, radius);
  QColor colour(Qt::white);
  colour.setAlphaF(static_cast<float>(brightness));
  gradient.setColorAt(0, colour);
  gradient.setColorAt(core, colour);
  colour.setAlphaF(0);
  gradient.setColorAt(1, colour);
  painter.setPen(Qt::NoPen);
  painter.setBrush(gradient);
  painter.drawEllipse(QPointF(x, y), radius, radius);
}

/// Out of focus: an even disc, brighter towards its rim, as a lens draws it.
void bokeh(QPainter& painter, double x, double y, double radius, double brightness) {
  QRadialGradient gradient(x, y, radius);
  QColor colour(Qt::white);
  const std::pair<double, double> stops[] = {{0, 0.80}, {0.66, 0.86}, {0.84, 1.0}, {1.0, 0.0}};
  for (const auto& [place, weight] : stops) {
    colour.setAlphaF(static_cast<float>(brightness * weight));
    gradient.setColorAt(place, colour);
  }
  painter.setPen(Qt::NoPen);
  painter.setBrush(gradient);
  painter.drawEllipse(QPointF(x, y), radius, radius);
}

}  // namespace

/// Dust in low sun: warm haze, motes in focus, grains nearer and farther, a few large discs.
QImage orangeDust(QSize size) {
  const Field motes = Field::drawn(size, [](QPainter& painter) {
    scatter({4200, 1.3, 5.0, 1.0, 0.72, 301},
            [&](double x, double y, double r, double b) { soft(painter, x, y, r, b, 0.35); });
    scatter({700, 4, 14, 0.62, 0.80, 311},
            [&](double x, double y, double r, double b) { soft(painter, x, y, r, b, 0.15); });
  });
  const Field discs = Field::drawn(size, [](QPainter& painter) {
                        scatter({190, 9, 60, 0.30, 0.95, 321},
                                [&](double x, double y, double r, double b) { bokeh(painter, x, y, r, b); });
                      }).blurred(1);
  const Field haze = Field::of(size / 2, [](double x, double y) {
    const double u = x / fullWidth;
    const double v = y / fullHeight;
    const double wu = u + 0.12 * fbm(u, v, {2, 2, 3, 331});
    const double wv = v + 0.22 * fbm(u, v, {2, 2, 3, 341});
    return 0.5 + 0.75 * fbm(wu, wv, {3, 3, 6, 351, 0.58});
  });
  return paint(size, [&](double x, double y) {
    const double h = haze.at(x, y);
    const double rim = smoothstep(0.30, 1.20, fromMiddle(x, y, 2.2) + 0.5 * (h - 0.5));
    const Colour air = ramp({hex(0x5a2406), hex(0xa8500f), hex(0xe08a2a), hex(0xffc46a)}, 0.15 + 0.75 * h);
    const Pixel back{air, saturate(0.04 + 0.62 * rim * smoothstep(0.1, 0.9, h))};
    const double disc = discs.at(x, y);
    const Pixel middle = over(back, mix(hex(0xff9a2e), hex(0xffd690), disc), disc);
    const double mote = motes.at(x, y);
    return over(middle, mix(hex(0xffae4a), hex(0xfff2d0), mote), mote);
  });
}

}  // namespace assets

#include <numbers>

#include "assets/render/noise.h"
#include "assets/render/picture.h"
#include "assets/render/textures.h"

namespace assets {
namespace {

constexpr double breadth = 128;  // of the moulding, pixels of the full picture

/// A place on the frame: distance from the outer edge, and along the side counted from its middle.
struct Place {
  double across, along, sideLength;
};

Place placeAt(double x, double y) {
  const double dx = std::min(x, fullWidth - x);
  const double dy = std::min(y, fullHeight - y);
  if (dy < dx) return {dy, x - fullWidth / 2.0, fullWidth};
  return {dx, y - fullHeight / 2.0, fullHeight};
}

/// Half a circle's height over from..to, 0 elsewhere.
double bulge(double d, double from, double to) {
  const double t = (2 * d - from - to) / (to - from);
  return std::abs(t) < 1 ? std::sqrt(1 - t * t) : 0;
}

/// Position within a unit repeated along the side, -1 to 1. A whole number of units fits the side.
double repeated(const Place& place, double wanted) {
  const double count = 2 * floorOf(place.sideLength / wanted / 2) + 1;
  const double t = place.along / place.sideLength * count + 0.5;
  return 2 * (t - floorOf(t)) - 1;
}

/// Acanthus: a cupped leaf with a midrib and five lobes a side. across is 0 at the tip, 1 at the root.
double leaf(double across, double along) {
  const double outline = std::pow(std::sin(std::numbers::pi * (0.06 + 0.80 * across)), 0.8);
  const double lobe = across * 5 + 0.9 * std::abs(along);
  const double lobes = 0.86 + 0.14 * std::abs(std::cos(std::numbers::pi * lobe));
  const double inside = outline * lobes - std::abs(along);
  const double cup = std::sqrt(saturate(inside / 0.30)) * (0.62 + 0.38 * std::abs(along));
  const double veins = 0.20 * std::abs(std::cos(std::numbers::pi * lobe)) * saturate(inside * 6);
  const double rib = 0.34 * std::exp(-square(along / 0.09)) * saturate(inside * 6);
  return cup * 0.85 + veins + rib;
}

/// Leaves side by side, and behind them, showing between their tips, the tips of a second row.
double foliage(const Place& place, double from, double to) {
  const double across = (place.across - from) / (to - from);
  if (across <= 0 || across >= 1) return 0;
  const double along = repeated(place, 54);
  const double between = along > 0 ? along - 1 : along + 1;
  return std::max(leaf(across, along), 0.62 * leaf(std::min(1.0, across * 1.25), between * 1.5));
}

/// A square block over the mitre's outer half, with a rosette of eight petals. 0 beside it.
double cornerBlock(double x, double y) {
  const double dx = std::min(x, fullWidth - x) - 36;
  const double dy = std::min(y, fullHeight - y) - 36;
  const double inside = 31 - std::max(std::abs(dx), std::abs(dy));
  if (inside <= 0) return 0;
  const double r = std::hypot(dx, dy);
  const double angle = std::atan2(dy, dx);
  const double petal = std::abs(std::cos(4 * angle));
  const double petals = std::sqrt(saturate((16 + 9 * std::sqrt(petal) - r) / 12)) * (0.55 + 0.45 * petal);
  return 2.1 * smoothstep(0, 4, inside) - 0.55 * smoothstep(5, 9, inside) + 1.25 * petals - 0.5 * bulge(r, 5, 10) +
         0.9 * bulge(r, -7, 7);
}

/// Height of the moulding, in units of ten pixels.
double relief(double x, double y) {
  const Place place = placeAt(x, y);
  const double d = place.across;
  double h = 0.30 * smoothstep(0, 5, d) + 0.9 * smoothstep(5, 12, d);
  h += 1.05 * bulge(d, 6, 63) + 1.15 * foliage(place, 9, 61);
  h -= 0.7 * smoothstep(60, 63, d);
  h += 0.75 * bulge(std::hypot((d - 71.5), repeated(place, 15) * 7.5), -7, 7);
  h -= 0.35 * smoothstep(79, 81, d);
  h -= 1.1 * bulge(d, 81, 106) * 0.8 + 0.25 * smoothstep(81, 106, d);
  const double twist = std::cos(std::numbers::pi * (repeated(place, 22) + (d - 113) / 9));
  h += bulge(d, 105, 121) * (0.75 + 0.22 * twist);
  h -= 0.9 * smoothstep(120, breadth, d);
  const double block = cornerBlock(x, y);
  return block > 0 ? 0.6 + block : h;
}

Colour gold(double light) {
  return ramp({hex(0x160902), hex(0x3a2006), hex(0x6b420d), hex(0x9c6a18), hex(0xc8952f), hex(0xe6bc55), hex(0xf8e093),
               hex(0xfff8d8)},
              light);
}

}  // namespace

/// A gilded frame with a carved band, a row of beads, a hollow and a twisted rope; its shadow falls on
/// the picture.
QImage frameGold(QSize size) {
  const Field height = Field::of(size, relief);
  const Field around = height.blurred(5);
  return paint(size, [&](double x, double y) {
    const double u = x / fullWidth;
    const double v = y / fullHeight;
    const double d = placeAt(x, y).across;
    if (d > breadth + 1) {
      const double fromTopLeft = std::min(x, y) - breadth;
      const double fromOther = d - breadth;
      const double shadow = 0.72 * std::exp(-fromTopLeft / 26) + 0.45 * std::exp(-fromOther / 9);
      return Pixel{hex(0x0a0502), saturate(shadow) * smoothstep(160, 60, fromOther)};
    }
    const Slope slope = slopeAt(height, x, y, 0.75);
    const double wear = fbm(u, v, {60, 34, 4, 601, 0.6});
    const double light = lit({slope.x + 0.004 * wear, slope.y + 0.004 * wear}, 9);
    const double hollow = saturate(0.9 * (around.at(x, y) - height.at(x, y)));
    const double sheen = 0.07 * std::sin(11 * u + 7 * v) + 0.05 * fbm(u, v, {5, 3, 3, 611});
    const double glint = smoothstep(0.93, 1.0, light);
    Colour colour = gold(0.02 + 0.86 * light + sheen + 0.05 * wear - 0.55 * hollow + 0.20 * glint);
    const double mitre = std::abs(std::min(x, fullWidth - x) - std::min(y, fullHeight - y));
    const double seam = 0.65 * smoothstep(2.6, 0.6, mitre) * (cornerBlock(x, y) > 0 ? 0 : 1);
    colour = mix(colour, hex(0x1a0c03), seam);
    const double edge = smoothstep(0, 3, d);
    return Pixel{mix(hex(0x1a0c03), colour, 0.35 + 0.65 * edge), smoothstep(breadth + 1, breadth - 0.5, d)};
  });
}

}  // namespace assets

#pragma once

// What the textures are painted with: straight-alpha pixels, fields of numbers, and a loop over the
// pixels of a picture. Coordinates are those of a 1920x1080 picture whatever size is painted, so a
// smaller one shows the same thing. Pure functions; any thread.

#include <QImage>
#include <QSize>
#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "assets/render/noise.h"

class QPainter;

namespace assets {

inline constexpr int fullWidth = 1920;
inline constexpr int fullHeight = 1080;

struct Colour {
  double r, g, b;
};
constexpr Colour hex(unsigned rgb) {
  return {(rgb >> 16 & 255) / 255.0, (rgb >> 8 & 255) / 255.0, (rgb & 255) / 255.0};
}
inline Colour mix(Colour a, Colour b, double t) {
  return {blend(a.r, b.r, t), blend(a.g, b.g, t), blend(a.b, b.b, t)};
}
inline Colour operator*(Colour c, double k) {
  return {c.r * k, c.g * k, c.b * k};
}

inline double saturate(double x) {
  return std::clamp(x, 0.0, 1.0);
}
inline double smoothstep(double from, double to, double x) {
  const double t = saturate((x - from) / (to - from));
  return t * t * (3 - 2 * t);
}
inline double square(double x) {
  return x * x;
}

/// Colours at equal steps from 0 to 1, joined by straight lines.
Colour ramp(const std::vector<Colour>& colours, double t);

/// A pixel whose colour is not multiplied by its alpha. The colour counts where alpha is 0 too: the
/// blender averages the colours of 2x2 blocks without weighing them.
struct Pixel {
  Colour colour;
  double alpha;
};

/// `colour` with opacity `alpha` laid over a pixel.
Pixel over(const Pixel& below, Colour colour, double alpha);

/// A field of numbers over the picture, read with bilinear interpolation. Opposite edges meet.
class Field {
 public:
  explicit Field(QSize size);

  template <class Function>
  static Field of(QSize size, const Function& value) {
    Field field(size);
    for (int row = 0; row < size.height(); ++row) {
      for (int column = 0; column < size.width(); ++column) {
        field.cell(column, row) = static_cast<float>(
            value((column + 0.5) * fullWidth / size.width(), (row + 0.5) * fullHeight / size.height()));
      }
    }
    return field;
  }

  /// White on black, anti-aliased, 0 to 1. The painter works in 1920x1080 coordinates.
  static Field drawn(QSize size, const std::function<void(QPainter&)>& draw);

  /// x and y in 1920x1080 coordinates, any value.
  double at(double x, double y) const;

  /// Nearly gaussian; radius in 1920x1080 pixels.
  Field blurred(double radius) const;

  QSize size() const { return mSize; }
  float& cell(int column, int row) { return mCells[static_cast<std::size_t>(row) * mSize.width() + column]; }

 private:
  QSize mSize;
  std::vector<float> mCells;
};

/// How steeply a height field rises to the right and downwards, per pixel of the full picture.
struct Slope {
  double x, y;
};
Slope slopeAt(const Field& height, double x, double y, double reach = 1);

/// Brightness of a slope lit from above left: 0 faces away, 1 faces the light; flat is about 0.6.
double lit(Slope slope, double steepness);

/// A threshold in [0, 1) for rounding a value to 8 bits without bands (interleaved gradient noise;
/// Jimenez, "Next Generation Post Processing in Call of Duty", 2014).
double ditherThreshold(int column, int row);

QRgb toRgb(const Pixel& pixel, double threshold);

/// A 32-bit ARGB picture, one call of shade(x, y) -> Pixel per pixel.
template <class Shader>
QImage paint(QSize size, const Shader& shade) {
  QImage image(size, QImage::Format_ARGB32);
  for (int row = 0; row < size.height(); ++row) {
    QRgb* line = reinterpret_cast<QRgb*>(image.scanLine(row));
    for (int column = 0; column < size.width(); ++column) {
      const Pixel pixel = shade((column + 0.5) * fullWidth / size.width(), (row + 0.5) * fullHeight / size.height());
      line[column] = toRgb(pixel, ditherThreshold(column, row));
    }
  }
  return image;
}

/// 0 at the middle of the picture, 1 at the middle of its edges, more in the corners. `power` 2 gives
/// ellipses; larger is squarer.
double fromMiddle(double x, double y, double power = 2);

}  // namespace assets

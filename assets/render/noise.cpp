#include "assets/render/noise.h"

#include <algorithm>
#include <cmath>

namespace assets {
namespace {

double fade(double t) {
  return t * t * t * (t * (t * 6 - 15) + 10);
}

double slope(std::uint32_t h, double x, double y) {
  static constexpr double gradients[16][2] = {{1, 0},  {0.924, 0.383},   {0.707, 0.707},   {0.383, 0.924},
                                              {0, 1},  {-0.383, 0.924},  {-0.707, 0.707},  {-0.924, 0.383},
                                              {-1, 0}, {-0.924, -0.383}, {-0.707, -0.707}, {-0.383, -0.924},
                                              {0, -1}, {0.383, -0.924},  {0.707, -0.707},  {0.924, -0.383}};
  const double* g = gradients[h >> 28];
  return g[0] * x + g[1] * y;
}

/// One octave, -1 to 1. x and y in cells.
double gradientNoise(double x, double y, int columns, int rows, std::uint32_t seed) {
  const int left = floorOf(x);
  const int above = floorOf(y);
  const double dx = x - left;
  const double dy = y - above;
  const int x0 = wrapped(left, columns);
  const int y0 = wrapped(above, rows);
  const int x1 = x0 + 1 == columns ? 0 : x0 + 1;
  const int y1 = y0 + 1 == rows ? 0 : y0 + 1;
  const double s = fade(dx);
  const double top = blend(slope(hash(x0, y0, seed), dx, dy), slope(hash(x1, y0, seed), dx - 1, dy), s);
  const double bottom = blend(slope(hash(x0, y1, seed), dx, dy - 1), slope(hash(x1, y1, seed), dx - 1, dy - 1), s);
  return 1.5 * blend(top, bottom, fade(dy));
}

template <class Shape>
double sum(double u, double v, const Octaves& octaves, const Shape& shape) {
  double total = 0;
  double weights = 0;
  double weight = 1;
  int columns = octaves.columns;
  int rows = octaves.rows;
  for (int i = 0; i < octaves.count; ++i, columns *= 2, rows *= 2, weight *= octaves.gain) {
    total += weight * shape(gradientNoise(u * columns, v * rows, columns, rows, octaves.seed + i));
    weights += weight;
  }
  return total / weights;
}

}  // namespace

std::uint32_t hash(std::uint32_t x, std::uint32_t y, std::uint32_t seed) {
  std::uint32_t h = x * 0x9e3779b1u ^ (y * 0x85ebca77u + seed * 0xc2b2ae3du);
  h = (h ^ (h >> 16)) * 0x7feb352du;
  h = (h ^ (h >> 15)) * 0x846ca68bu;
  return h ^ (h >> 16);
}

double unit(std::uint32_t x, std::uint32_t y, std::uint32_t seed) {
  return hash(x, y, seed) / 4294967296.0;
}

double fbm(double u, double v, const Octaves& octaves) {
  return sum(u, v, octaves, [](double n) { return n; });
}

double ridged(double u, double v, const Octaves& octaves) {
  return sum(u, v, octaves, [](double n) { return 1 - std::min(1.0, std::abs(n)); });
}

double billow(double u, double v, const Octaves& octaves) {
  return sum(u, v, octaves, [](double n) { return std::sqrt(n * n + 0.012); });
}

Cell worley(double u, double v, int columns, int rows, std::uint32_t seed) {
  const double x = u * columns;
  const double y = v * rows;
  const int cx = floorOf(x);
  const int cy = floorOf(y);
  Cell cell{9, 9, 0};
  for (int j = cy - 1; j <= cy + 1; ++j) {
    for (int i = cx - 1; i <= cx + 1; ++i) {
      const std::uint32_t h = hash(wrapped(i, columns), wrapped(j, rows), seed);
      const double px = i + (h & 0xffff) / 65536.0;
      const double py = j + (h >> 16) / 65536.0;
      const double distance = std::hypot(px - x, py - y);
      if (distance < cell.nearest) {
        cell = {distance, cell.nearest, (h * 0x9e3779b1u) / 4294967296.0};
      } else {
        cell.second = std::min(cell.second, distance);
      }
    }
  }
  return cell;
}

}  // namespace assets

#pragma once

// Noise that repeats: every function here takes coordinates in units of the picture (0 to 1 across,
// 0 to 1 down) and has the same value on opposite edges, so pictures made of it tile without a cut.
// Pure functions of their arguments; any thread.

#include <cstdint>

namespace assets {

/// The whole number at or below x. Several times faster than std::floor without SSE4.1.
inline int floorOf(double x) {
  const int whole = static_cast<int>(x);
  return whole - (x < whole ? 1 : 0);
}

/// value modulo period, never negative.
inline int wrapped(int value, int period) {
  if (static_cast<unsigned>(value) < static_cast<unsigned>(period)) return value;
  const int rest = value % period;
  return rest < 0 ? rest + period : rest;
}

/// From a to b. std::lerp's care for its ends costs more than the noise around it.
inline double blend(double a, double b, double t) {
  return a + t * (b - a);
}

/// A well mixed 32-bit value of a lattice point.
std::uint32_t hash(std::uint32_t x, std::uint32_t y, std::uint32_t seed);

/// The same as a number in [0, 1).
double unit(std::uint32_t x, std::uint32_t y, std::uint32_t seed);

/// Octaves of noise. The first has `columns` by `rows` cells in the picture, each further one twice
/// as many and `gain` times the weight.
struct Octaves {
  int columns, rows, count;
  std::uint32_t seed;
  double gain = 0.5;
};

/// Sum of gradient noise, about -1 to 1 (Perlin, "Improving Noise", 2002).
double fbm(double u, double v, const Octaves& octaves);

/// Sum of 1 - |noise|, 0 to 1: sharp crests, for filaments and cracks.
double ridged(double u, double v, const Octaves& octaves);

/// Sum of |noise|, 0 to about 1: round puffs with narrow valleys.
double billow(double u, double v, const Octaves& octaves);

/// Distances to the nearest and second nearest feature point of a jittered lattice, in cells, and a
/// number in [0, 1) that names the nearest (Worley, "A Cellular Texture Basis Function", 1996).
struct Cell {
  double nearest, second, name;
};
Cell worley(double u, double v, int columns, int rows, std::uint32_t seed);

}  // namespace assets

// Four fogs and a smoke. Each has a density of its own; light and shade come from how the density
// changes towards the light.

#include "assets/render/noise.h"
#include "assets/render/picture.h"
#include "assets/render/textures.h"

namespace assets {
namespace {

struct Uv {
  double u, v;
};
Uv uv(double x, double y) {
  return {x / fullWidth, y / fullHeight};
}

/// Moves a place by noise; amount in picture heights.
Uv warp(Uv p, double amount, const Octaves& octaves) {
  Octaves other = octaves;
  other.seed += 1000;
  return {p.u + amount * fbm(p.u, p.v, octaves) * fullHeight / fullWidth, p.v + amount * fbm(p.u, p.v, other)};
}

/// How far the density falls from here towards the light; positive where the light reaches.
double towardsLight(const Field& density, double x, double y, double dx, double dy) {
  return density.at(x, y) - 0.6 * density.at(x + dx, y + dy) - 0.4 * density.at(x + 2.5 * dx, y + 2.5 * dy);
}

/// 0 where the middle of the picture is kept free, 1 at its border, with a ragged line between.
double border(double x, double y, double from, double to, double ragged) {
  return smoothstep(from, to, fromMiddle(x, y, 2.4) + ragged);
}

}  // namespace

/// Cumulus: heaps of round puffs, sunlit from above.
QImage fogWhite(QSize size) {
  const Field relief = Field::of(size / 2, [](double x, double y) {
    const Uv p = warp(uv(x, y), 0.09, {4, 2, 3, 11});
    return 0.55 * fbm(p.u, p.v, {4, 2, 3, 21}) + 0.60 * billow(p.u, p.v, {6, 4, 4, 31, 0.44});
  });
  const Field density = Field::of(size / 2, [&](double x, double y) {
    const double heap = relief.at(x, y);
    const double rim = border(x, y, 0.26, 1.08, 0.9 * (heap - 0.2));
    return rim * smoothstep(-0.25, 0.62, heap + 0.30 * rim);
  });
  return paint(size, [&](double x, double y) {
    const double light = towardsLight(relief, x, y, -9, -22);
    const Colour colour = ramp({hex(0xa9b8c8), hex(0xd0d9e3), hex(0xeef2f6), hex(0xffffff)}, 0.62 + 1.7 * light);
    return Pixel{colour, 0.05 + 0.88 * density.at(x, y)};
  });
}

/// Dawn: thin streaming sheets, glowing from below.
QImage fogOrange(QSize size) {
  const Field density = Field::of(size / 2, [](double x, double y) {
    const Uv p = warp(uv(x, y), 0.16, {2, 3, 3, 41, 0.42});
    const double sheets = 0.5 + 0.75 * fbm(p.u, p.v, {2, 5, 5, 61, 0.48});
    const double streaks = ridged(p.u, p.v, {3, 9, 3, 71, 0.4});
    const double rim = border(x, y, 0.22, 1.10, 0.7 * (sheets - 0.5));
    return rim * smoothstep(0.10, 1.05, 0.82 * sheets + 0.16 * square(streaks) + 0.18 * rim);
  });
  return paint(size, [&](double x, double y) {
    const double light = towardsLight(density, x, y, 3, 18);
    const double glow = smoothstep(0.0, 1.1, y / fullHeight);
    const Colour colour = ramp({hex(0xa6582c), hex(0xd67a3a), hex(0xeea05c), hex(0xf9c790), hex(0xffe6c6)},
                               0.32 + 0.40 * glow + 0.62 * light);
    return Pixel{colour, 0.07 + 0.86 * density.at(x, y)};
  });
}

/// Smog: slow eddies of two gases that do not mix.
QImage fogGreyYellow(QSize size) {
  const auto eddies = [](double x, double y) {
    return warp(warp(uv(x, y), 0.34, {2, 1, 3, 81, 0.42}), 0.12, {4, 3, 3, 91, 0.42});
  };
  const Field density = Field::of(size / 2, [&](double x, double y) {
    const Uv p = eddies(x, y);
    const double mass = 0.5 + 0.75 * fbm(p.u, p.v, {3, 2, 5, 101, 0.48});
    const double rim = border(x, y, 0.24, 1.12, 0.6 * (mass - 0.5));
    return rim * smoothstep(0.05, 0.92, mass + 0.28 * rim);
  });
  const Field gas = Field::of(size / 4, [&](double x, double y) {
    const Uv p = eddies(x, y);
    return smoothstep(-0.34, 0.34, fbm(p.u, p.v, {3, 2, 3, 111}));
  });
  return paint(size, [&](double x, double y) {
    const double light = towardsLight(density, x, y, 12, -16);
    const Colour grey = ramp({hex(0x5c5d55), hex(0x91928a), hex(0xbfc0b6)}, 0.47 + 1.2 * light);
    const Colour yellow = ramp({hex(0x857434), hex(0xb9a752), hex(0xe0d394)}, 0.48 + 1.2 * light);
    return Pixel{mix(grey, yellow, gas.at(x, y)), 0.07 + 0.84 * density.at(x, y)};
  });
}

/// Valley mist: flat banks one behind the other, each with a clear upper edge that thins out downwards.
QImage fogGrey(QSize size) {
  struct Bank {
    double level, swell, opacity;
    Colour colour;
    std::uint32_t seed;
  };
  static const Bank banks[] = {
      {-0.10, 0.12, 0.74, hex(0x767e86), 121}, {0.10, 0.10, 0.52, hex(0x8d959c), 131},
      {0.56, 0.12, 0.50, hex(0xa2aab1), 141},  {0.70, 0.13, 0.72, hex(0x88919a), 151},
      {0.83, 0.10, 0.80, hex(0xb4bbc1), 161},  {0.93, 0.08, 0.85, hex(0xd5dade), 171},
  };
  std::vector<Field> wisps;
  for (const Bank& bank : banks) {
    wisps.push_back(Field::of(size / 4, [&](double x, double y) {
      const Uv p = warp(uv(x, y), 0.06, {5, 7, 3, bank.seed});
      return fbm(p.u, p.v, {3, 8, 5, bank.seed + 1, 0.52});
    }));
  }
  const Field free = Field::of(size / 4, [&](double x, double y) {
    return smoothstep(0.20, 0.95, fromMiddle(x, y, 2.6) + 0.25 * wisps[2].at(x, y));
  });
  return paint(size, [&](double x, double y) {
    const double v = y / fullHeight;
    Pixel pixel{hex(0x9aa1a7), 0.07};
    for (std::size_t i = 0; i < std::size(banks); ++i) {
      const Bank& bank = banks[i];
      const double wisp = wisps[i].at(x, y);
      const double crest = bank.level + bank.swell * wisps[i].at(2 * x, fullHeight * 0.13 * double(i));
      const double into = v - crest + 0.07 * wisp;
      const double edge = smoothstep(0, 0.10, into);
      const double body = edge * (1 - 0.72 * smoothstep(0.06, 0.34, into)) * saturate(0.9 + 0.8 * wisp);
      const Colour colour = bank.colour * (0.98 + 0.22 * wisp + 0.12 * (1 - smoothstep(0, 0.14, into)));
      pixel = over(pixel, colour, bank.opacity * body * free.at(x, y));
    }
    return pixel;
  });
}

/// Black smoke that rolls in from the border, paler where it turns to the light. The folds come from
/// noise whose place is moved by noise whose place is moved by noise.
QImage smokeDark(QSize size) {
  const auto noise = [](double x, double y, std::uint32_t seed) {
    return fbm(x / fullWidth, y / fullHeight, {3, 2, 3, seed, 0.45});
  };
  const Field qx = Field::of(size / 4, [&](double x, double y) { return noise(x, y, 201); });
  const Field qy = Field::of(size / 4, [&](double x, double y) { return noise(x, y, 211); });
  const auto fold = [&](double x, double y, std::uint32_t seed) {
    return noise(x + 560 * qx.at(x, y), y + 560 * qy.at(x, y), seed);
  };
  const Field rx = Field::of(size / 4, [&](double x, double y) { return fold(x, y, 221); });
  const Field ry = Field::of(size / 4, [&](double x, double y) { return fold(x, y, 231); });
  const Field body = Field::of(size / 2, [&](double x, double y) {
    const double u = (x + 380 * rx.at(x, y)) / fullWidth;
    const double v = (y + 380 * ry.at(x, y)) / fullHeight;
    return 0.5 + 0.66 * fbm(u, v, {4, 3, 4, 241, 0.5}) + 0.30 * (billow(u, v, {7, 5, 4, 251, 0.5}) - 0.3);
  });
  return paint(size, [&](double x, double y) {
    const double d = body.at(x, y);
    const double light = towardsLight(body, x, y, -10, -18);
    const double rim = border(x, y, 0.22, 1.06, 0.75 * (d - 0.5) + 0.22 * rx.at(x, y));
    const Colour colour = ramp({hex(0x050607), hex(0x15171a), hex(0x2b2e33), hex(0x53575c), hex(0x84888c)},
                               0.22 + 0.16 * d + 2.0 * light);
    return Pixel{colour, saturate(0.05 + rim * (0.42 + 0.62 * d))};
  });
}

}  // namespace assets

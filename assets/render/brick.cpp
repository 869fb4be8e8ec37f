#include "assets/render/noise.h"
#include "assets/render/picture.h"
#include "assets/render/textures.h"

namespace assets {
namespace {

constexpr int columns = 12;
constexpr int rows = 20;  // even, so that the running bond meets itself
constexpr double pitchX = double(fullWidth) / columns;
constexpr double pitchY = double(fullHeight) / rows;
constexpr double joint = 8;
constexpr double middleX = fullWidth / 2.0;
constexpr double middleY = fullHeight / 2.0;

/// The brick under a place: its number, its middle, and how deep inside it the place is (negative in the joint).
struct Brick {
  std::uint32_t column, row;
  double x, y, inside;

  double random(std::uint32_t what) const { return unit(column, row, 700 + what); }
};

/// Below 1 inside the opening: an uneven, rather square oval.
double opening(double x, double y) {
  const double dx = std::abs(x - middleX) / 720;
  const double dy = std::abs(y - middleY) / 415;
  const double round = std::pow(std::pow(dx, 2.5) + std::pow(dy, 2.5), 0.4);
  return round + 0.12 * fbm(x / fullWidth, y / fullHeight, {4, 3, 3, 741});
}

/// The whole wall, before the hole is knocked through it.
class Wall {
 public:
  explicit Wall(QSize size)
      : mShiftX(noise(size / 2, {16, 9, 4, 721, 0.6})),
        mShiftY(noise(size / 2, {16, 9, 4, 731, 0.6})),
        mRagged(noise(size / 2, {70, 40, 3, 761, 0.6})),
        mStain(noise(size / 4, {5, 4, 5, 801, 0.55})),
        mSpeckle(noise(size / 2, {160, 90, 2, 811, 0.7})),
        mJag(noise(size / 2, {40, 24, 4, 751, 0.6})),
        mOpening(Field::of(size / 4, opening)),
        mGrime(Field::of(size / 4, [](double x, double y) { return smoothstep(0.75, 1.35, fromMiddle(x, y, 2.4)); })),
        mRelief(Field::of(size / 2, [this](double x, double y) { return relief(x, y); })) {}

  Brick brickAt(double x, double y) const;

  /// Whether wall is left at a place once the hole is there. Most bricks on its line have fallen out or
  /// stayed whole; some are broken across.
  bool standing(double x, double y) const;

  /// Colour of the surface; light 0 to 1.
  Colour surface(double x, double y, double light) const;

  /// Light on the surface from above left.
  double light(double x, double y) const { return lit(slopeAt(mRelief, x, y, 1.4), 0.95); }

  /// Fine mottling, about -1 to 1.
  double speckle(double x, double y) const { return mSpeckle.at(x, y); }

 private:
  static Field noise(QSize size, const Octaves& octaves) {
    return Field::of(size, [&](double x, double y) { return fbm(x / fullWidth, y / fullHeight, octaves); });
  }
  double relief(double x, double y) const;

  Field mShiftX, mShiftY, mRagged, mStain, mSpeckle, mJag, mOpening, mGrime, mRelief;
};

Brick Wall::brickAt(double x, double y) const {
  const double px = x + 3.5 * mShiftX.at(x, y);
  const double py = y + 3.0 * mShiftY.at(x, y);
  const double row = floorOf(py / pitchY);
  const double offset = static_cast<int>(row) % 2 == 0 ? 0 : 0.5;
  const double column = floorOf(px / pitchX - offset);
  const double brickX = (column + offset + 0.5) * pitchX;
  const double brickY = (row + 0.5) * pitchY;
  const double dx = std::abs(px - brickX) - (pitchX - joint) / 2 + 5;
  const double dy = std::abs(py - brickY) - (pitchY - joint) / 2 + 5;
  const double outside = std::hypot(std::max(dx, 0.0), std::max(dy, 0.0)) + std::min(std::max(dx, dy), 0.0) - 5;
  const auto number = [](double value, int period) {
    return static_cast<std::uint32_t>(wrapped(static_cast<int>(value), period));
  };
  return {number(column, columns), number(row, rows), brickX, brickY, -outside};
}

bool Wall::standing(double x, double y) const {
  const Brick brick = brickAt(x, y);
  const double here = mOpening.at(brick.x, brick.y) + 0.10 * (brick.random(1) - 0.5);
  const bool broken = brick.random(6) < 0.38 && std::abs(here - 1) < 0.13;
  if (!broken) return here > 1;
  return mOpening.at(x, y) + 0.06 * mJag.at(x, y) > 0.99;
}

double Wall::relief(double x, double y) const {
  const Brick brick = brickAt(x, y);
  const double u = x / fullWidth;
  const double v = y / fullHeight;
  const double face = smoothstep(-1.5, 5, brick.inside + 2.2 * mRagged.at(x, y));
  const double rough = fbm(u, v, {90, 50, 3, 771, 0.6});
  const double pits = smoothstep(0.28, 0.60, fbm(u, v, {52, 30, 2, 781}));
  const double lean =
      0.4 * ((brick.random(2) - 0.5) * (x - brick.x) / pitchX + (brick.random(3) - 0.5) * (y - brick.y) / pitchY);
  return face * (3.4 + 1.2 * lean - 1.5 * pits) + (0.75 + 0.5 * (1 - face)) * rough;
}

Colour baked(const Brick& brick) {
  static const Colour clays[] = {hex(0x94513d), hex(0x9d5b45), hex(0x854934), hex(0xa86c52),
                                 hex(0x744034), hex(0x8d5647), hex(0x985038), hex(0x59352f)};
  return clays[static_cast<int>(brick.random(4) * 8)] * (0.84 + 0.30 * brick.random(5));
}

Colour Wall::surface(double x, double y, double light) const {
  const Brick brick = brickAt(x, y);
  const double stain = mStain.at(x, y);
  const double speckle = mSpeckle.at(x, y);
  const double face = smoothstep(-1.0, 2.5, brick.inside + 2.0 * mRagged.at(x, y));
  const Colour mortar = hex(0xa89b88) * (0.84 + 0.24 * speckle + 0.14 * stain);
  Colour colour = mix(mortar, baked(brick) * (1 + 0.26 * speckle), face);
  colour = mix(colour, hex(0xd6ccbd), 0.55 * smoothstep(0.14, 0.62, stain + 0.40 * speckle));
  colour = mix(colour, hex(0x2a211d), 0.62 * smoothstep(0.10, 0.72, -stain + 0.25 * speckle));
  return mix(colour, hex(0x2b1f18), 0.42 * mGrime.at(x, y)) * (0.30 + 1.10 * light);
}

/// The wall is seen from straight ahead, so its thickness shows inside the opening: what stands at
/// depth t, 0 to 1, is seen nearer to the middle by this factor.
constexpr double nearness = 0.075;

struct Point {
  double x, y;
};
Point atDepth(double x, double y, double t) {
  const double k = 1 + nearness * t;
  return {middleX + (x - middleX) * k, middleY + (y - middleY) * k};
}

/// The sides of the opening, from the front backwards until nothing shows through.
Pixel reveal(const Wall& wall, const Field& solid, double x, double y) {
  constexpr int depths = 22;
  const double facing = y > middleY ? 0.52 : 0.22;  // light comes from above
  const double rough = 1 + 0.55 * wall.speckle(x, y);
  Pixel pixel{hex(0x0b0705), 0};
  for (int i = 1; i <= depths && pixel.alpha < 0.995; ++i) {
    const double t = double(i) / depths;
    const Point p = atDepth(x, y, t);
    const double covered = solid.at(p.x, p.y);
    if (covered <= 0) continue;
    pixel = over({wall.surface(p.x, p.y, facing * (1 - 0.75 * t) * rough), covered}, pixel.colour, pixel.alpha);
  }
  return pixel;
}

}  // namespace

/// A weathered wall with a hole knocked through it.
QImage brick(QSize size) {
  const Wall wall(size);
  const Field solid = Field::of(size, [&](double x, double y) { return wall.standing(x, y) ? 1.0 : 0.0; }).blurred(1);
  const auto clear = [](double x, double y) { return fromMiddle(x, y) < 0.4; };  // far from any brick
  const Field back = Field::of(size / 2, [&](double x, double y) {
    const Point p = atDepth(x, y, 1);
    return clear(x, y) ? 0.0 : solid.at(p.x, p.y);
  });
  const Field shadow = back.blurred(16);
  return paint(size, [&](double x, double y) {
    const Pixel behind{hex(0x0b0705), saturate(0.95 * smoothstep(0.0, 0.9, shadow.at(x + 4, y + 8)))};
    if (clear(x, y)) return behind;
    const double front = solid.at(x, y);
    const Pixel side = front < 1 ? reveal(wall, solid, x, y) : Pixel{hex(0x0b0705), 0};
    const Pixel deep = over(behind, side.colour, side.alpha);
    return front > 0 ? over(deep, wall.surface(x, y, wall.light(x, y)), front) : deep;
  });
}

}  // namespace assets

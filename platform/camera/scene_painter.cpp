#include "platform/camera/scene_painter.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace handset {
namespace {

struct Rgb {
  double r, g, b;  ///< 0..255
};

struct Yuv {
  std::uint8_t y, u, v;
};

std::uint8_t to_byte(double value) {
  return static_cast<std::uint8_t>(std::clamp(value, 0.0, 255.0) + 0.5);
}

// ITU-T T.871 (JFIF): BT.601 matrix, full range.
Yuv to_yuv(const Rgb& c) {
  return {to_byte(0.299 * c.r + 0.587 * c.g + 0.114 * c.b), to_byte(128 - 0.168736 * c.r - 0.331264 * c.g + 0.5 * c.b),
          to_byte(128 + 0.5 * c.r - 0.418688 * c.g - 0.081312 * c.b)};
}

Rgb mix(const Rgb& a, const Rgb& b, double t) {
  return {a.r + (b.r - a.r) * t, a.g + (b.g - a.g) * t, a.b + (b.b - a.b) * t};
}

double smooth(double low, double high, double x) {
  const double t = std::clamp((x - low) / (high - low), 0.0, 1.0);
  return t * t * (3 - 2 * t);
}

/// Signed distance from a rounded box; negative inside.
double box_distance(double x, double y, double cx, double cy, double half_w, double half_h, double radius) {
  const double dx = std::fabs(x - cx) - half_w + radius;
  const double dy = std::fabs(y - cy) - half_h + radius;
  return std::hypot(std::max(dx, 0.0), std::max(dy, 0.0)) + std::min(std::max(dx, dy), 0.0) - radius;
}

/// A head and shoulders in a skin tone, in units of the picture's height, centred at cx.
Rgb portrait(Rgb under, double x, double y, double cx, const Rgb& skin, const Rgb& shirt, const Rgb& hair, double px) {
  if (std::fabs(x - cx) > 0.09 + px || y < 0.53 - px || y > 0.90 + px) return under;
  const auto cover = [px](double distance) { return smooth(px, -px, distance); };
  const double shoulders = box_distance(x, y, cx, 0.80, 0.085, 0.10, 0.06);
  under = mix(under, shirt, cover(shoulders));
  under = mix(under, mix(skin, {40, 20, 20}, 0.18), cover(box_distance(x, y, cx, 0.70, 0.022, 0.05, 0.01)));
  const double hair_distance = std::hypot((x - cx) / 0.86, y - 0.600) - 0.070;
  under = mix(under, hair, cover(hair_distance));
  const double face = std::hypot((x - cx) / 0.80, y - 0.622) - 0.060;
  const Rgb lit = mix(skin, {255, 250, 240}, 0.20 * smooth(0.05, -0.05, x - cx));
  return mix(under, lit, cover(face));
}

/// Where the hills end against the sky.
double hills_at(double x) {
  return 0.54 + 0.035 * std::sin(x * 3.1 + 0.6) + 0.018 * std::sin(x * 7.3);
}

/// The gray ramp in nine steps along the bottom, and the colour card above it at the left.
Rgb cards(Rgb colour, double x, double y, double aspect, double px) {
  if (std::fabs(y - 0.93) < 0.030 + px) {
    const double ramp = box_distance(x, y, aspect * 0.5, 0.93, aspect * 0.46, 0.030, 0.012);
    const double step = std::clamp(std::floor((x - aspect * 0.04) / (aspect * 0.92) * 9), 0.0, 8.0);
    colour = mix(colour, {step * 255 / 8, step * 255 / 8, step * 255 / 8}, smooth(px, -px, ramp));
  }
  if (std::fabs(y - 0.845) >= 0.024 + px || x > 0.5 + px) return colour;
  const Rgb card[4] = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {255, 255, 0}};
  for (int i = 0; i < 4; ++i) {
    const double chip = box_distance(x, y, aspect * 0.06 + i * 0.055, 0.845, 0.024, 0.024, 0.006);
    colour = mix(colour, card[i], smooth(px, -px, chip));
  }
  return colour;
}

/// The still part of the scene at (x, y) in units of the picture's height; `aspect` is its width, `hills` of hills_at.
Rgb backdrop(double x, double y, double hills, double aspect, double px) {
  const Rgb sky = mix({86, 132, 190}, {206, 222, 236}, smooth(0.0, 0.62, y));
  const Rgb ground = mix({150, 146, 138}, {88, 84, 80}, smooth(0.62, 1.0, y));
  Rgb colour = mix(sky, {96, 128, 104}, smooth(hills - px, hills + px, y));
  colour = mix(colour, ground, smooth(0.62 - px, 0.62 + px, y));

  const double from_sun[2] = {x - aspect * 0.84, y - 0.17};
  const double sun = std::sqrt(from_sun[0] * from_sun[0] + from_sun[1] * from_sun[1]);
  colour = mix(colour, {255, 255, 255}, 0.5 * std::exp(-sun * 9));
  colour = mix(colour, {255, 255, 255}, smooth(0.062 + px, 0.062 - px, sun));

  const Rgb skins[3] = {{241, 205, 180}, {198, 145, 108}, {112, 74, 54}};
  const Rgb shirts[3] = {{70, 88, 122}, {222, 222, 218}, {128, 60, 70}};
  const Rgb hairs[3] = {{120, 84, 44}, {52, 38, 32}, {26, 22, 22}};
  for (int i = 0; i < 3; ++i) {
    colour = portrait(colour, x, y, aspect * 0.5 + (i - 1) * 0.24, skins[i], shirts[i], hairs[i], px);
  }

  return cards(colour, x, y, aspect, px);
}

}  // namespace

SceneStrip scene_strip(int width, int height) {
  const int cell = std::max(2, std::min(width / (2 * scene_strip_cells), height / 45) & ~1);
  return {std::max(0, (width - cell * scene_strip_cells - cell) & ~1), std::max(0, (height * 82 / 100) & ~1), cell};
}

ScenePainter::ScenePainter(int width, int height) : width_(width), height_(height) {
  paint_backdrop();
  const int size = std::max(4, std::min(width, height) / 5 & ~1);
  balls_ = {make_ball(size, 255, 0, 0), make_ball(size, 0, 255, 0), make_ball(size, 0, 0, 255),
            make_ball(size, 255, 255, 0)};
}

void ScenePainter::paint_backdrop() {
  const std::size_t w = static_cast<std::size_t>(width_);
  backdrop_luma_.resize(w * static_cast<std::size_t>(height_));
  backdrop_chroma_.resize(backdrop_luma_.size() / 2);
  const double scale = 1.0 / height_;
  const double aspect = width_ * scale;
  const double px = 0.7 * scale;
  std::vector<double> hills;
  for (int x = 0; x < width_; ++x) hills.push_back(hills_at((x + 0.5) * scale));
  for (int row = 0; row < height_; row += 2) {
    for (int column = 0; column < width_; column += 2) {
      int u = 0;
      int v = 0;
      for (int i = 0; i < 4; ++i) {
        const int x = column + (i & 1);
        const int y = row + (i >> 1);
        const Yuv c =
            to_yuv(backdrop((x + 0.5) * scale, (y + 0.5) * scale, hills[static_cast<std::size_t>(x)], aspect, px));
        backdrop_luma_[static_cast<std::size_t>(y) * w + static_cast<std::size_t>(x)] = c.y;
        u += c.u;
        v += c.v;
      }
      std::uint8_t* pair = &backdrop_chroma_[static_cast<std::size_t>(row / 2) * w + static_cast<std::size_t>(column)];
      pair[0] = static_cast<std::uint8_t>((u + 2) / 4);
      pair[1] = static_cast<std::uint8_t>((v + 2) / 4);
    }
  }
}

ScenePainter::Sprite ScenePainter::make_ball(int size, std::uint8_t red, std::uint8_t green, std::uint8_t blue) const {
  const Yuv base = to_yuv({static_cast<double>(red), static_cast<double>(green), static_cast<double>(blue)});
  Sprite sprite{size, {}, {}, base.u, base.v};
  const std::size_t n = static_cast<std::size_t>(size) * static_cast<std::size_t>(size);
  sprite.luma.resize(n);
  sprite.alpha.resize(n);
  const double radius = size / 2.0 - 1;
  for (int row = 0; row < size; ++row) {
    for (int column = 0; column < size; ++column) {
      const double dx = (column + 0.5 - size / 2.0) / radius;
      const double dy = (row + 0.5 - size / 2.0) / radius;
      const double rim = smooth(0.72, 1.0, std::hypot(dx, dy));
      const double glint = std::exp(-20 * ((dx + 0.38) * (dx + 0.38) + (dy + 0.40) * (dy + 0.40)));
      const std::size_t i =
          static_cast<std::size_t>(row) * static_cast<std::size_t>(size) + static_cast<std::size_t>(column);
      // The chroma of a ball is uniform, so shading moves its luma only a little: it stays saturated.
      sprite.luma[i] = to_byte(base.y * (1 - 0.22 * rim) + 26 * glint);
      sprite.alpha[i] = to_byte(255 * smooth(radius + 0.8, radius - 0.8, std::hypot(dx, dy) * radius));
    }
  }
  return sprite;
}

void ScenePainter::blend(const ScenePicture& picture, const Sprite& sprite, int left, int top) const {
  const auto over = [](int under, int colour, int alpha) {
    return static_cast<std::uint8_t>((under * (255 - alpha) + colour * alpha + 127) / 255);
  };
  for (int row = 0; row < sprite.size; ++row) {
    std::uint8_t* luma = picture.luma + static_cast<std::ptrdiff_t>(top + row) * picture.luma_stride + left;
    const std::size_t line = static_cast<std::size_t>(row) * static_cast<std::size_t>(sprite.size);
    for (int column = 0; column < sprite.size; ++column) {
      const std::size_t i = line + static_cast<std::size_t>(column);
      luma[column] = over(luma[column], sprite.luma[i], sprite.alpha[i]);
    }
    if (row % 2 != 0) continue;
    std::uint8_t* chroma = picture.chroma + static_cast<std::ptrdiff_t>((top + row) / 2) * picture.chroma_stride + left;
    const std::uint8_t* alpha = &sprite.alpha[line];
    for (int column = 0; column < sprite.size; column += 2) {
      const int a =
          (alpha[column] + alpha[column + 1] + alpha[column + sprite.size] + alpha[column + sprite.size + 1]) / 4;
      chroma[column] = over(chroma[column], sprite.u, a);
      chroma[column + 1] = over(chroma[column + 1], sprite.v, a);
    }
  }
}

void ScenePainter::paint_strip(const ScenePicture& picture, std::uint64_t frame) const {
  const SceneStrip strip = scene_strip(width_, height_);
  if (strip.x + strip.cell * scene_strip_cells > width_ || strip.y + strip.cell > height_) return;
  for (int row = 0; row < strip.cell; ++row) {
    std::uint8_t* luma = picture.luma + static_cast<std::ptrdiff_t>(strip.y + row) * picture.luma_stride + strip.x;
    for (int bit = 0; bit < scene_strip_cells; ++bit) {
      const bool on = (frame >> (scene_strip_cells - 1 - bit)) & 1U;
      std::memset(luma + bit * strip.cell, on ? 255 : 0, static_cast<std::size_t>(strip.cell));
    }
    if (row % 2 == 0) {
      std::memset(picture.chroma + static_cast<std::ptrdiff_t>((strip.y + row) / 2) * picture.chroma_stride + strip.x,
                  128, static_cast<std::size_t>(strip.cell * scene_strip_cells));
    }
  }
}

void ScenePainter::paint(const ScenePicture& picture, std::uint64_t frame, double seconds) const {
  const std::size_t w = static_cast<std::size_t>(width_);
  for (int row = 0; row < height_; ++row) {
    const std::size_t line = static_cast<std::size_t>(row);
    std::memcpy(picture.luma + static_cast<std::ptrdiff_t>(row) * picture.luma_stride, &backdrop_luma_[line * w], w);
    if (row % 2 == 0) {
      std::memcpy(picture.chroma + static_cast<std::ptrdiff_t>(row / 2) * picture.chroma_stride,
                  &backdrop_chroma_[line / 2 * w], w);
    }
  }
  for (std::size_t i = 0; i < balls_.size(); ++i) {
    const Sprite& ball = balls_[i];
    // Each ball sways in its own quarter of the width and bounces at its own pace.
    const double phase = seconds * (0.55 + 0.11 * static_cast<double>(i)) + 0.9 * static_cast<double>(i);
    const double lane = (static_cast<double>(i) + 0.5 + 0.30 * std::sin(phase * 1.7)) / 4;
    const double bounce = std::fabs(std::sin(phase * 2.1));
    const int left = static_cast<int>(lane * (width_ - ball.size)) & ~1;
    const int top = static_cast<int>((0.52 - 0.46 * bounce) * (height_ - ball.size)) & ~1;
    blend(picture, ball, std::clamp(left, 0, width_ - ball.size), std::clamp(top, 0, height_ - ball.size));
  }
  paint_strip(picture, frame);
}

}  // namespace handset

#include "tests/camera/textured_scene.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace {

std::uint8_t byte(double value) {
  return static_cast<std::uint8_t>(std::clamp(std::lround(value), 0L, 255L));
}

/// Adds random values at the nodes of a grid, blended linearly between them.
void add_octave(std::vector<float>* sum, int width, int height, int cell, float strength, std::mt19937* random) {
  std::uniform_real_distribution<float> value(-strength, strength);
  const int columns = width / cell + 2;
  std::vector<float> nodes(static_cast<std::size_t>(columns * (height / cell + 2)));
  for (float& node : nodes) node = value(*random);
  for (int y = 0; y < height; ++y) {
    const float* above = nodes.data() + y / cell * columns;
    const float down = static_cast<float>(y % cell) / static_cast<float>(cell);
    for (int x = 0; x < width; ++x) {
      const float* at = above + x / cell;
      const float right = static_cast<float>(x % cell) / static_cast<float>(cell);
      const float upper = at[0] + right * (at[1] - at[0]);
      const float lower = at[columns] + right * (at[columns + 1] - at[columns]);
      (*sum)[static_cast<std::size_t>(y * width + x)] += upper + down * (lower - upper);
    }
  }
}

}  // namespace

TexturedScene::TexturedScene(int width, int height, int reach, unsigned seed)
    : width_(width), height_(height), reach_(reach + 1), scene_width_(width + 2 * reach_ + 1) {
  std::mt19937 random(seed);
  const int scene_height = height + 2 * reach_ + 1;
  std::vector<float> sum(static_cast<std::size_t>(scene_width_ * scene_height), 128.0F);
  for (int cell = std::max(4, width / 240); cell < width; cell *= 3) {
    add_octave(&sum, scene_width_, scene_height, cell, 45.0F, &random);
  }
  for (const float value : sum) scene_.push_back(byte(value));
  std::normal_distribution<double> normal(0, 16);
  for (int i = 0; i < 1 << 18; ++i) {
    noise_.push_back(static_cast<std::int8_t>(std::clamp(normal(random), -127.0, 127.0)));
  }
  picture_.resize(static_cast<std::size_t>(width * height));
}

void TexturedScene::paint(double x, double y, double contrast, double noise) {
  // Content at (column, row) was at (column - x, row - y).
  const double from_x = reach_ - x, from_y = reach_ - y;
  const int left = static_cast<int>(std::floor(from_x)), top = static_cast<int>(std::floor(from_y));
  const int right = static_cast<int>((from_x - left) * 256), down = static_cast<int>((from_y - top) * 256);
  const int strength = static_cast<int>(std::lround(contrast * 256));
  const int grain = static_cast<int>(std::lround(noise * 16));
  std::minstd_rand random(++frame_);
  for (int row = 0; row < height_; ++row) {
    const std::uint8_t* above = scene_.data() + (top + row) * scene_width_ + left;
    const std::uint8_t* below = above + scene_width_;
    const std::int8_t* grains = noise_.data() + random() % (noise_.size() - static_cast<std::size_t>(width_));
    std::uint8_t* to = picture_.data() + row * width_;
    for (int i = 0; i < width_; ++i) {
      const int upper = above[i] * (256 - right) + above[i + 1] * right;
      const int lower = below[i] * (256 - right) + below[i + 1] * right;
      const int value = (upper * (256 - down) + lower * down + 32768) >> 16;
      to[i] = static_cast<std::uint8_t>(
          std::clamp(128 + (((value - 128) * strength + grains[i] * grain + 128) >> 8), 0, 255));
    }
  }
}

void TexturedScene::paint_object(int left, int top, int size) {
  for (int y = std::max(0, top); y < std::min(height_, top + size); ++y) {
    for (int x = std::max(0, left); x < std::min(width_, left + size); ++x) {
      const bool dark = ((x - left) / 8 + (y - top) / 8 * 3) % 4 == 0;
      picture_[static_cast<std::size_t>(y * width_ + x)] = dark ? 20 : 235;
    }
  }
}

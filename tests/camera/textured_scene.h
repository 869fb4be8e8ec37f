#pragma once

#include <cstdint>
#include <vector>

/// A luma picture of a scene seen by a camera from places that the test chooses: soft spots of many sizes and grays
/// plus sensor noise, so that the content's position is known, not measured.
class TexturedScene {
 public:
  /// @param reach  pixels that the content may be displaced by, either way
  TexturedScene(int width, int height, int reach, unsigned seed = 1);

  /// The content displaced by (x, y) pixels, to the right and down; between pixels it is interpolated.
  /// @param contrast  of the content about mid gray; 0 is flat
  /// @param noise  standard deviation in gray levels
  void paint(double x, double y, double contrast = 1, double noise = 0);
  /// Adds a light square with a dark pattern in it.
  void paint_object(int left, int top, int size);

  std::uint8_t* luma() { return picture_.data(); }
  int width() const { return width_; }
  int height() const { return height_; }

 private:
  int width_, height_, reach_;
  int scene_width_;
  std::vector<std::uint8_t> scene_;
  std::vector<std::int8_t> noise_;  ///< standard deviation 16
  std::vector<std::uint8_t> picture_;
  unsigned frame_ = 0;
};

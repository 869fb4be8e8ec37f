#pragma once

// The built-in scene: what the camera sees on a computer without one. A still backdrop (sky, wall,
// grey ramp, colour card, three skin tones) with shaded balls in saturated red, green, blue and
// yellow that move over it, and a strip that spells the frame number in black and white cells.

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace handset {

/// An NV12 picture to paint into. Full-range BT.601; both strides in bytes; sizes even.
struct ScenePicture {
  std::uint8_t* luma;
  std::uint8_t* chroma;
  int width;
  int height;
  int luma_stride;
  int chroma_stride;
};

inline constexpr int scene_strip_cells = 16;

/// Cell i of the strip, most significant bit first: a square of `cell` pixels, white for 1, black for 0.
struct SceneStrip {
  int x, y, cell;
};
SceneStrip scene_strip(int width, int height);

/// Paints frames of one size. Building it renders the backdrop and the balls (some 50 ms at 1080p);
/// paint() then allocates nothing. One thread at a time.
class ScenePainter {
 public:
  ScenePainter(int width, int height);

  /// Paints the frame that belongs to `frame` (its low 16 bits show in the strip).
  /// @param seconds  time in the scene, which places the balls
  void paint(const ScenePicture& picture, std::uint64_t frame, double seconds) const;

  int width() const { return width_; }
  int height() const { return height_; }

 private:
  struct Sprite {
    int size;                         ///< pixels on a side, even
    std::vector<std::uint8_t> luma;   ///< size * size
    std::vector<std::uint8_t> alpha;  ///< size * size
    std::uint8_t u, v;
  };

  void paint_backdrop();
  Sprite make_ball(int size, std::uint8_t red, std::uint8_t green, std::uint8_t blue) const;
  void blend(const ScenePicture& picture, const Sprite& sprite, int left, int top) const;
  void paint_strip(const ScenePicture& picture, std::uint64_t frame) const;

  int width_;
  int height_;
  std::vector<std::uint8_t> backdrop_luma_;
  std::vector<std::uint8_t> backdrop_chroma_;
  std::array<Sprite, 4> balls_;
};

}  // namespace handset

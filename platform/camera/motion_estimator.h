#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/camera/motion_kernels.h"

namespace handset {

/// How a picture's content has moved since the previous picture.
struct Motion {
  enum class Kind {
    followed,  ///< most of the picture has moved by (x, y)
    unclear,   ///< too little texture, or parts moving in different directions
    cut,       ///< an entirely different picture
  };
  Kind kind = Kind::unclear;
  double x = 0;  ///< pixels to the right; 0 unless followed
  double y = 0;  ///< pixels down
};

/// Finds the movement that most of the picture shares, on a copy of the luma at most 640 pixels wide and successively
/// halved copies of it. On the smallest it searches all displacements, with one vote per textured tile; then, level by
/// level and block by block, it finds the displacement that explains the step between the pictures by their slopes
/// (Lucas and Kanade, "An Iterative Image Registration Technique", 1981). The result is the blocks' median, refined by
/// the blocks that agree with it, so an object moving by itself is outvoted and flat or noisy blocks do not count.
///
/// Construction allocates; next() does not. One thread at a time.
class MotionEstimator {
 public:
  /// For pictures of width x height pixels.
  MotionEstimator(int width, int height);

  /// @param luma  of the next picture; only read during the call
  Motion next(const std::uint8_t* luma, std::ptrdiff_t stride);

 private:
  struct Plane {
    Plane(int w, int h) : width(w), height(h), pixels(static_cast<std::size_t>(w) * static_cast<std::size_t>(h)) {}
    const std::uint8_t* at(int x, int y) const { return pixels.data() + static_cast<std::ptrdiff_t>(y) * width + x; }

    int width, height;
    std::vector<std::uint8_t> pixels;
  };
  using Levels = std::vector<Plane>;  ///< largest first
  struct Offset {
    int x, y;
  };

  void shrink(const std::uint8_t* luma, std::ptrdiff_t stride, Levels* levels);
  static Offset search(const Plane& now, const Plane& last);
  static Motion refine(const Plane& now, const Plane& last, Offset from);

  const int width_;
  const int height_;
  double scale_ = 1;            ///< picture pixels per pixel of the largest level
  std::vector<Plane> passing_;  ///< each half the previous one, down to the size of the largest level
  std::array<Levels, 2> levels_;
  std::size_t now_ = 0;  ///< index in levels_ of the newer one
  bool has_last_ = false;
};

}  // namespace handset

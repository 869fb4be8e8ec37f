#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/camera/motion_kernels.h"

namespace handset {

/// How a picture's content has moved since the picture before it.
struct Motion {
  enum class Kind {
    followed,  ///< most of the picture has moved by (x, y)
    unclear,   ///< too little texture, or parts that move apart
    cut,       ///< another picture altogether
  };
  Kind kind = Kind::unclear;
  double x = 0;  ///< pixels to the right; 0 unless followed
  double y = 0;  ///< pixels down
};

/// Finds the movement that most of the picture shares. On a copy of the luma that is at most 640 pixels wide, and on
/// smaller ones of that: a search over all displacements on the smallest, in which every textured tile has one vote,
/// and then from level to level the displacement that explains the step between the pictures by their slopes (Lucas and
/// Kanade, "An Iterative Image Registration Technique", 1981), block by block. What counts is the blocks' median and
/// the blocks that agree with it, so that an object that moves by itself is outvoted, and flat or noisy blocks have no
/// say.
///
/// Building it allocates; next() does not. One thread at a time.
class MotionEstimator {
 public:
  /// Pictures of width x height pixels.
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
  using Levels = std::vector<Plane>;  ///< the largest first
  struct Offset {
    int x, y;
  };

  void shrink(const std::uint8_t* luma, std::ptrdiff_t stride, Levels* levels);
  static Offset search(const Plane& now, const Plane& last);
  static Motion refine(const Plane& now, const Plane& last, Offset from);

  const int width_;
  const int height_;
  double scale_ = 1;            ///< pixels of the picture for one of the largest level
  std::vector<Plane> passing_;  ///< each half the one before, down to the size of the largest level
  std::array<Levels, 2> levels_;
  std::size_t now_ = 0;  ///< which of levels_ is the newer
  bool has_last_ = false;
};

}  // namespace handset

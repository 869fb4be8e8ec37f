#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/camera/camera.h"
#include "platform/camera/motion_estimator.h"
#include "platform/camera/path_smoother.h"

namespace handset {

/// Removes the shake from a camera's pictures: each is captured slightly larger than shown, and the visible part moves
/// within it against the shake. Adds no delay: each answer uses only that picture and earlier ones.
///
/// Construction allocates; next() does not. One thread at a time.
class Stabilizer {
 public:
  /// The visible part of a canvas: its upper left corner; both even, because of chroma subsampling.
  struct View {
    int left, top;
  };

  /// The size of the canvas in which pictures of a size can move: at most 8 % more on each axis. The same size if the
  /// picture is too small to be stabilized.
  static camera_res_t canvas_of(camera_res_t picture);

  /// @param picture  with a canvas larger than itself
  explicit Stabilizer(camera_res_t picture);

  /// Takes the next canvas. @param luma  its samples; @param timestamp nanoseconds
  /// @return the part to show. A picture's rows can be read from there in full strides: they end inside the canvas.
  View next(const std::uint8_t* luma, std::ptrdiff_t stride, std::int64_t timestamp);

 private:
  /// One axis: the shake and its compensation.
  struct Axis {
    explicit Axis(int most) : limit(most), path(most) {}
    void move(double motion, double seconds);
    void reset();

    int limit;
    PathSmoother path;
    int shift = 0;  ///< from the center; even
  };

  MotionEstimator estimator_;
  Axis x_;
  Axis y_;
  std::int64_t last_timestamp_ = 0;
};

}  // namespace handset

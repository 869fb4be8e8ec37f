#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/camera/camera.h"
#include "platform/camera/motion_estimator.h"
#include "platform/camera/path_smoother.h"

namespace handset {

/// Takes the shake out of a camera's pictures: every picture is taken somewhat larger than it is shown, and the part
/// that is shown moves in it against the shake. It adds no delay: each answer comes from that picture and earlier ones.
///
/// Building it allocates; next() does not. One thread at a time.
class Stabilizer {
 public:
  /// What part of a canvas is shown: its upper left corner; both even, since chroma has half as many samples.
  struct View {
    int left, top;
  };

  /// The size of the canvas in which pictures of a size can move: at most 8 % more on each axis. The same size when
  /// the picture is too small to be stabilized.
  static camera_res_t canvas_of(camera_res_t picture);

  /// @param picture  with a canvas larger than itself
  explicit Stabilizer(camera_res_t picture);

  /// Takes the next canvas. @param luma  its samples; @param timestamp nanoseconds
  /// @return the part of it to show. From its first row a picture's rows can be read in full strides: they end inside
  /// the canvas.
  View next(const std::uint8_t* luma, std::ptrdiff_t stride, std::int64_t timestamp);

 private:
  /// One axis: the shake and what is done about it.
  struct Axis {
    explicit Axis(int most) : limit(most), path(most) {}
    void move(double motion, double seconds);
    void reset();

    int limit;
    PathSmoother path;
    int shift = 0;  ///< from the middle; even
  };

  MotionEstimator estimator_;
  Axis x_;
  Axis y_;
  std::int64_t last_timestamp_ = 0;
};

}  // namespace handset

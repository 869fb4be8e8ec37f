#pragma once

// From a camera's frame to an image of the size in which it is shown. Plain functions and one converter, without a
// window.

#include <QImage>
#include <QRectF>
#include <array>
#include <cstdint>
#include <deque>
#include <vector>

#include "platform/cascades/plane_scaler.h"

namespace handset {

/// A picture in NV12, full-range BT.601. Strides are bytes.
struct Nv12 {
  const std::uint8_t* luma;
  int luma_stride;
  const std::uint8_t* chroma;  ///< U, V pairs
  int chroma_stride;
  int width, height;
};

/// How a picture stands on the display: mirrored left to right first, turned clockwise then.
struct Stance {
  int angle;  ///< 0, 90, 180 or 270
  bool mirror;

  bool lies() const { return angle % 180 != 0; }
  bool operator==(const Stance&) const = default;
};

/// The stance of a picture that the stream turns by `stream_rotation`, then the window mirrors and turns by
/// `window_rotation`, on a display that shows it to somebody who holds the handset turned by `direction`. Frames are
/// upright as they come: no camera here turns with the handset. All in degrees, clockwise.
Stance stance_of(int window_rotation, bool mirror, int stream_rotation, int direction);

/// Where a picture of a size stands in an item: whole and in its proportions, in the middle; or all over the item,
/// where the two shapes differ so little that stretching disturbs less than bars do.
QRectF place_of(QSizeF picture, QSizeF item);

/// Makes images of frames. The images are the converter's own memory, used again as soon as nobody else holds them:
/// as long as at most two of a size are held, converting allocates nothing. One thread at a time.
class PictureConverter {
 public:
  /// @param size  of the image, after turning
  /// @return Format_RGB32
  QImage convert(const Nv12& frame, QSize size, Stance stance);

 private:
  /// Memory that grows when it must.
  struct Scratch {
    std::vector<std::uint8_t> bytes;
    std::uint8_t* of(std::size_t size);
  };
  struct Step {
    Nv12 scale(const Nv12& from, QSize size);
    PlaneScaler luma{1};
    PlaneScaler chroma{2};
    Scratch planes;
  };
  QImage& image_to_fill(QSize size);
  Nv12 sized(const Nv12& frame, QSize size);

  std::array<QImage, 3> images_;
  std::deque<Step> steps_;
  Scratch converted_;
  Scratch mirrored_;
};

/// The glow behind a picture that does not fill its item: the frame, blurred beyond recognition and dark. Follows the
/// picture with some inertia, so that cuts and flicker do not flash. One thread at a time.
class Backdrop {
 public:
  /// @param size  of the image; its shape is filled, what is too much is cut off
  QImage follow(const Nv12& frame, QSize size, Stance stance);
  /// The next picture has nothing to do with the last one.
  void forget() { light_ = {}; }

 private:
  void see(const Nv12& frame);
  QImage blurred(Stance stance) const;

  int width_ = 0;
  int height_ = 0;
  std::vector<float> light_;  ///< width_ * height_ of B, G, R
};

}  // namespace handset

#pragma once

// Turns a camera's frame into an image of the size in which it is shown. Plain functions and one converter, without a
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

/// A picture's stance on the display: first mirrored left to right, then turned clockwise.
struct Stance {
  int angle;  ///< 0, 90, 180 or 270
  bool mirror;

  bool lies() const { return angle % 180 != 0; }
  bool operator==(const Stance&) const = default;
};

/// The stance of a picture that the stream turns by `stream_rotation`, then the window mirrors and turns by
/// `window_rotation`, on a display seen by somebody who holds the handset turned by `direction`. Frames arrive upright:
/// no camera here turns with the handset. All in degrees, clockwise.
Stance stance_of(int window_rotation, bool mirror, int stream_rotation, int direction);

/// Where a picture goes in an item: whole, centered and in proportion; or filling the item if the shapes differ so
/// little that stretching is less noticeable than bars.
QRectF place_of(QSizeF picture, QSizeF item);

/// Converts frames to images. The images use the converter's own memory, recycled once nobody else holds them: with at
/// most two of a size held, converting allocates nothing. One thread at a time.
class PictureConverter {
 public:
  /// @param size  of the image, after turning
  /// @return Format_RGB32
  QImage convert(const Nv12& frame, QSize size, Stance stance);

 private:
  /// Memory that grows as needed.
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
  /// @param size of the image; its shape is filled and the excess cropped
  QImage follow(const Nv12& frame, QSize size, Stance stance);
  /// Resets the inertia: the next picture is unrelated to the last.
  void forget() { light_ = {}; }

 private:
  void see(const Nv12& frame);
  QImage blurred(Stance stance) const;

  int width_ = 0;
  int height_ = 0;
  std::vector<float> light_;  ///< width_ * height_ triples of B, G, R
};

}  // namespace handset

#include "platform/cascades/viewfinder_picture.h"

#include <libyuv/convert_argb.h>
#include <libyuv/planar_functions.h>
#include <libyuv/rotate_argb.h>
#include <libyuv/scale.h>
#include <libyuv/scale_argb.h>

#include <algorithm>
#include <cmath>

namespace handset {
namespace {

constexpr int pixel_bytes = 4;
constexpr double stretch_limit = 1.35;
/// Width of the picture that the backdrop is made from, and how much of its light remains.
constexpr int backdrop_width = 32;
constexpr float backdrop_light = 0.42F;
/// Weight of the new picture in each refresh.
constexpr float backdrop_inertia = 0.35F;

std::size_t bytes_of(QSize size) {
  return static_cast<std::size_t>(size.width()) * size.height() * pixel_bytes;
}

struct Argb {
  std::uint8_t* pixels;
  int stride;
};

void to_argb(const Nv12& frame, std::uint8_t* argb, int stride) {
  libyuv::NV12ToARGBMatrix(frame.luma, frame.luma_stride, frame.chroma, frame.chroma_stride, argb, stride,
                           &libyuv::kYuvJPEGConstants, frame.width, frame.height);
}

/// @param room  (width + 1) / 2 * 2 * height bytes of luma, then as much of chroma
Nv12 scaled(const Nv12& frame, int width, int height, std::uint8_t* room) {
  const int stride = (width + 1) / 2 * 2;
  std::uint8_t* chroma = room + static_cast<std::ptrdiff_t>(stride) * height;
  libyuv::NV12Scale(frame.luma, frame.luma_stride, frame.chroma, frame.chroma_stride, frame.width, frame.height, room,
                    stride, chroma, stride, width, height, libyuv::kFilterBox);
  return {room, stride, chroma, stride, width, height};
}

}  // namespace

Stance stance_of(int window_rotation, bool mirror, int stream_rotation, int direction) {
  // Turning, then mirroring equals mirroring, then turning the other way.
  const int stream = mirror ? 360 - stream_rotation : stream_rotation;
  return {(window_rotation + direction + stream) % 360, mirror};
}

QRectF place_of(QSizeF picture, QSizeF item) {
  if (picture.isEmpty() || item.isEmpty()) return {};
  const double factor = (item.width() * picture.height()) / (item.height() * picture.width());
  if (std::max(factor, 1 / factor) <= stretch_limit) return {QPointF(0, 0), item};
  const QSizeF size = picture.scaled(item, Qt::KeepAspectRatio);
  return {QPointF((item.width() - size.width()) / 2, (item.height() - size.height()) / 2), size};
}

// --- converter --------------------------------------------------------------------------------

std::uint8_t* PictureConverter::Scratch::of(std::size_t size) {
  if (bytes.size() < size) bytes.resize(size);
  return bytes.data();
}

/// An idle image of this size, else one to recycle.
QImage& PictureConverter::image_to_fill(QSize size) {
  for (QImage& image : images_) {
    if (image.size() == size && image.isDetached()) return image;
  }
  const auto other = std::find_if(images_.begin(), images_.end(), [&](const QImage& i) { return i.size() != size; });
  QImage& image = other != images_.end() ? *other : images_.front();
  image = QImage(size, QImage::Format_RGB32);
  return image;
}

Nv12 PictureConverter::Step::scale(const Nv12& from, QSize size) {
  const int stride = (size.width() + 7) / 8 * 8;
  const int chroma_height = (size.height() + 1) / 2;
  std::uint8_t* to = planes.of(static_cast<std::size_t>(stride) * (size.height() + chroma_height));
  std::uint8_t* to_chroma = to + static_cast<std::ptrdiff_t>(stride) * size.height();
  luma.scale({from.luma, from.luma_stride, from.width, from.height}, to, stride, size.width(), size.height());
  chroma.scale({from.chroma, from.chroma_stride, (from.width + 1) / 2, (from.height + 1) / 2}, to_chroma, stride,
               (size.width() + 1) / 2, chroma_height);
  return {to, stride, to_chroma, stride, size.width(), size.height()};
}

/// Resizes the frame in steps of at most one half, so that every pixel counts.
Nv12 PictureConverter::sized(const Nv12& frame, QSize size) {
  Nv12 now = frame;
  for (std::size_t i = 0; now.width != size.width() || now.height != size.height(); ++i) {
    if (steps_.size() <= i) steps_.emplace_back();
    now = steps_[i].scale(now, size.expandedTo({(now.width + 1) / 2, (now.height + 1) / 2}));
  }
  return now;
}

QImage PictureConverter::convert(const Nv12& frame, QSize size, Stance stance) {
  const QSize upright = stance.lies() ? size.transposed() : size;
  const int row = upright.width() * pixel_bytes;
  const Nv12 source = sized(frame, upright);

  QImage& image = image_to_fill(size);
  const Argb target{image.bits(), static_cast<int>(image.bytesPerLine())};
  int to_come = stance.mirror + (stance.angle != 0);
  // The last step writes into the image, the others into separate memory.
  const auto room = [&](Scratch& scratch) {
    return to_come-- == 0 ? target : Argb{scratch.of(bytes_of(upright)), row};
  };
  Argb now = room(converted_);
  to_argb(source, now.pixels, now.stride);
  if (stance.mirror) {
    const Argb to = room(mirrored_);
    libyuv::ARGBMirror(now.pixels, now.stride, to.pixels, to.stride, upright.width(), upright.height());
    now = to;
  }
  if (stance.angle != 0) {
    libyuv::ARGBRotate(now.pixels, now.stride, target.pixels, target.stride, upright.width(), upright.height(),
                       static_cast<libyuv::RotationMode>(stance.angle));
  }
  return image;
}

// --- backdrop ---------------------------------------------------------------------------------

/// Blends the frame's light in.
void Backdrop::see(const Nv12& frame) {
  const int height = std::clamp(backdrop_width * frame.height / frame.width, 2, 4 * backdrop_width);
  std::array<std::uint8_t, std::size_t{backdrop_width} * (4 * backdrop_width + 1) * 2> planes;
  std::array<std::uint8_t, std::size_t{backdrop_width} * 4 * backdrop_width * pixel_bytes> argb;
  to_argb(scaled(frame, backdrop_width, height, planes.data()), argb.data(), backdrop_width * pixel_bytes);

  const std::size_t values = static_cast<std::size_t>(backdrop_width) * height * 3;
  const bool anew = light_.size() != values;
  light_.resize(values);
  width_ = backdrop_width;
  height_ = height;
  for (std::size_t i = 0; i < values; ++i) {
    const float seen = argb[i / 3 * pixel_bytes + i % 3];
    light_[i] = anew ? seen : light_[i] + (seen - light_[i]) * backdrop_inertia;
  }
}

/// The accumulated light, each pixel averaged with its neighborhood, darkened and turned.
QImage Backdrop::blurred(Stance stance) const {
  constexpr int reach = 2;
  QImage image(width_, height_, QImage::Format_RGB32);
  for (int y = 0; y < height_; ++y) {
    auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
    for (int x = 0; x < width_; ++x) {
      float sum[3] = {};
      int count = 0;
      for (int v = std::max(0, y - reach); v <= std::min(height_ - 1, y + reach); ++v) {
        for (int u = std::max(0, x - reach); u <= std::min(width_ - 1, x + reach); ++u, ++count) {
          for (int c = 0; c < 3; ++c) sum[c] += light_[(static_cast<std::size_t>(v) * width_ + u) * 3 + c];
        }
      }
      const auto value = [&](int c) { return static_cast<int>(sum[c] / static_cast<float>(count) * backdrop_light); };
      row[x] = qRgb(value(2), value(1), value(0));
    }
  }
  if (stance.mirror) image = image.mirrored(true, false);
  return stance.angle != 0 ? image.transformed(QTransform().rotate(stance.angle)) : image;
}

QImage Backdrop::follow(const Nv12& frame, QSize size, Stance stance) {
  see(frame);
  const QImage small = blurred(stance);
  const QSizeF cut = QSizeF(size).scaled(small.size(), Qt::KeepAspectRatio);
  const int width = std::max(2, static_cast<int>(cut.width()));
  const int height = std::max(2, static_cast<int>(cut.height()));
  const int left = (small.width() - width) / 2;
  const int top = (small.height() - height) / 2;
  QImage image(size, QImage::Format_RGB32);
  libyuv::ARGBScale(small.constScanLine(top) + left * pixel_bytes, static_cast<int>(small.bytesPerLine()), width,
                    height, image.bits(), static_cast<int>(image.bytesPerLine()), size.width(), size.height(),
                    libyuv::kFilterBilinear);
  return image;
}

}  // namespace handset

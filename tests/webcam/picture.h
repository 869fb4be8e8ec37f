#pragma once

// What the programmable webcam sends: the chart, in a webcam's formats.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/camera/gst_ptr.h"
#include "tests/webcam/chart.h"

namespace webcam {

using Bytes = std::vector<std::uint8_t>;

/// `depth`: distances, which nobody shows as a picture.
enum class Format { yuyv, nv12, grey, mjpeg, h264, depth };

/// @return false for a word that names no format: YUYV, NV12, GREY, MJPEG, H264 or Z16
bool parse_format(const std::string& word, Format* format);

/// Bytes of an unpacked frame; of a compressed one the most that it may have.
std::size_t frame_bytes(Format format, int width, int height);

/// Makes frames of one format and size. One thread.
class PictureMaker {
 public:
  PictureMaker(Format format, int width, int height);
  ~PictureMaker();
  PictureMaker(const PictureMaker&) = delete;
  PictureMaker& operator=(const PictureMaker&) = delete;

  /// The frame whose strip spells `number`; valid until the next call. Empty when the encoder fails.
  const Bytes& frame(int number);

 private:
  void fill(const Box& box, const Yuv& color);
  void spell(int number);
  void start_encoder();
  void encode();

  Format format_;
  int width_;
  int height_;
  Bytes raw_;  ///< YUYV, NV12 or grey; I420 before an encoder
  Bytes coded_;
  handset::ElementPtr pipeline_;
  handset::ElementPtr in_;
  handset::ElementPtr out_;
  std::uint64_t encoded_ = 0;
};

}  // namespace webcam

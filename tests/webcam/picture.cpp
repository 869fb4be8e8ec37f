#include "tests/webcam/picture.h"

#include <gst/app/gstappsink.h>
#include <gst/app/gstappsrc.h>
#include <gst/gst.h>

#include <cstdio>
#include <cstring>

#include "platform/camera/scene_painter.h"

namespace webcam {

namespace {

/// JPEG pictures and those without color use all values; the others are video.
bool is_full_range(Format format) {
  return format == Format::mjpeg || format == Format::grey;
}

}  // namespace

bool parse_format(const std::string& word, Format* format) {
  constexpr struct {
    const char* word;
    Format format;
  } known[] = {{"YUYV", Format::yuyv},   {"NV12", Format::nv12}, {"GREY", Format::grey},
               {"MJPEG", Format::mjpeg}, {"H264", Format::h264}, {"Z16", Format::depth}};
  for (const auto& entry : known) {
    if (word != entry.word) continue;
    *format = entry.format;
    return true;
  }
  return false;
}

std::size_t frame_bytes(Format format, int width, int height) {
  const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  switch (format) {
    case Format::grey:
      return pixels;
    case Format::nv12:
      return pixels * 3 / 2;
    default:
      return pixels * 2;
  }
}

PictureMaker::PictureMaker(Format format, int width, int height) : format_(format), width_(width), height_(height) {
  const bool coded = format == Format::mjpeg || format == Format::h264;
  raw_.resize(frame_bytes(coded ? Format::nv12 : format, width, height));
  const bool full_range = is_full_range(format);
  fill({0, 0, width, height}, to_yuv({128, 128, 128}, full_range));
  for (int i = 0; i < static_cast<int>(chart_colors.size()); ++i) {
    fill(chart_patch(i, width, height), to_yuv(chart_colors[static_cast<std::size_t>(i)], full_range));
  }
  if (coded) start_encoder();
}

PictureMaker::~PictureMaker() {
  if (pipeline_) gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
}

void PictureMaker::fill(const Box& box, const Yuv& color) {
  const std::size_t w = static_cast<std::size_t>(width_);
  const std::size_t luma_bytes = w * static_cast<std::size_t>(height_);
  for (int row = box.y; row < box.y + box.height; ++row) {
    const std::size_t line = static_cast<std::size_t>(row) * w;
    for (int column = box.x; column < box.x + box.width; ++column) {
      const std::size_t x = static_cast<std::size_t>(column);
      if (format_ == Format::yuyv) {
        raw_[2 * (line + x)] = color.y;
        raw_[2 * (line + x) + 1] = column % 2 == 0 ? color.u : color.v;
        continue;
      }
      raw_[line + x] = color.y;
      if (format_ == Format::grey || row % 2 != 0 || column % 2 != 0) continue;
      const std::size_t half_line = static_cast<std::size_t>(row / 2) * w;
      if (format_ == Format::nv12) {
        raw_[luma_bytes + half_line + x] = color.u;
        raw_[luma_bytes + half_line + x + 1] = color.v;
      } else {
        const std::size_t offset = luma_bytes + half_line / 2 + x / 2;
        raw_[offset] = color.u;
        raw_[offset + luma_bytes / 4] = color.v;
      }
    }
  }
}

void PictureMaker::spell(int number) {
  const handset::SceneStrip strip = handset::scene_strip(width_, height_);
  const bool full_range = is_full_range(format_);
  const Yuv black = to_yuv({0, 0, 0}, full_range);
  const Yuv white = to_yuv({255, 255, 255}, full_range);
  for (int bit = 0; bit < handset::scene_strip_cells; ++bit) {
    const bool on = number >> (handset::scene_strip_cells - 1 - bit) & 1;
    fill({strip.x + bit * strip.cell, strip.y, strip.cell, strip.cell}, on ? white : black);
  }
}

void PictureMaker::start_encoder() {
  gst_init(nullptr, nullptr);
  const std::string size = ",width=" + std::to_string(width_) + ",height=" + std::to_string(height_);
  const std::string description =
      "appsrc name=in format=time max-bytes=0 caps=video/x-raw,format=I420,framerate=30/1" + size +
      (format_ == Format::mjpeg
           ? ",colorimetry=jpeg ! jpegenc quality=92"
           : ",colorimetry=bt601 ! x264enc tune=zerolatency speed-preset=ultrafast qp-max=20 key-int-max=10"
             " ! video/x-h264,stream-format=byte-stream,alignment=au,profile=constrained-baseline") +
      " ! appsink name=out sync=false";
  pipeline_ = handset::ElementPtr::adopt(gst_parse_launch(description.c_str(), nullptr));
  if (!pipeline_) return;
  in_ = handset::ElementPtr::adopt(gst_bin_get_by_name(GST_BIN(pipeline_.get()), "in"));
  out_ = handset::ElementPtr::adopt(gst_bin_get_by_name(GST_BIN(pipeline_.get()), "out"));
  gst_element_set_state(pipeline_.get(), GST_STATE_PLAYING);
}

void PictureMaker::encode() {
  coded_.clear();
  if (!in_ || !out_) return;
  GstBuffer* buffer = gst_buffer_new_memdup(raw_.data(), raw_.size());
  GST_BUFFER_PTS(buffer) = encoded_ * GST_SECOND / 30;
  GST_BUFFER_DURATION(buffer) = GST_SECOND / 30;
  ++encoded_;
  gst_app_src_push_buffer(GST_APP_SRC(in_.get()), buffer);
  const auto sample =
      handset::SamplePtr::adopt(gst_app_sink_try_pull_sample(GST_APP_SINK(out_.get()), 10 * GST_SECOND));
  GstMapInfo map;
  if (!sample || !gst_buffer_map(gst_sample_get_buffer(sample.get()), &map, GST_MAP_READ)) {
    std::fprintf(stderr, "webcam: a frame was not encoded\n");
    return;
  }
  coded_.assign(map.data, map.data + map.size);
  gst_buffer_unmap(gst_sample_get_buffer(sample.get()), &map);
}

const Bytes& PictureMaker::frame(int number) {
  spell(number);
  if (format_ != Format::mjpeg && format_ != Format::h264) return raw_;
  encode();
  return coded_;
}

}  // namespace webcam

#include "tests/webcam/uvc.h"

#include <cmath>
#include <initializer_list>

namespace webcam {
namespace {

constexpr std::uint8_t descriptor_device = 1;
constexpr std::uint8_t descriptor_configuration = 2;
constexpr std::uint8_t descriptor_string = 3;
constexpr std::uint8_t descriptor_interface = 4;
constexpr std::uint8_t descriptor_endpoint = 5;
constexpr std::uint8_t descriptor_association = 0x0B;
constexpr std::uint8_t class_specific = 0x24;
constexpr std::uint8_t video_class = 0x0E;
constexpr std::uint8_t output_terminal = 3;

/// Bytes in USB's order: least significant first.
class Writer {
 public:
  Writer& u8(int value) {
    bytes_.push_back(static_cast<std::uint8_t>(value));
    return *this;
  }
  Writer& u16(int value) { return u8(value & 255).u8(value >> 8); }
  Writer& u24(int value) { return u16(value & 0xFFFF).u8(value >> 16); }
  Writer& u32(std::uint32_t value) { return u16(static_cast<int>(value & 0xFFFF)).u16(static_cast<int>(value >> 16)); }
  Writer& all(std::initializer_list<int> values) {
    for (const int value : values) u8(value);
    return *this;
  }
  Writer& bytes(const Bytes& more) {
    bytes_.insert(bytes_.end(), more.begin(), more.end());
    return *this;
  }
  /// A descriptor: its length is put before it.
  Writer& descriptor(const Writer& body) { return u8(static_cast<int>(body.bytes_.size()) + 1).bytes(body.bytes_); }
  int size() const { return static_cast<int>(bytes_.size()); }
  const Bytes& bytes() const { return bytes_; }

 private:
  Bytes bytes_;
};

int control_bits(const std::vector<Control>& controls, std::uint8_t entity) {
  int bits = 0;
  for (const Control& control : controls) {
    if (control.entity == entity) bits |= 1 << control.bit;
  }
  return bits;
}

/// A format's name as Windows spells it: four letters in front of a constant.
Writer guid(const char* letters) {
  Writer writer;
  for (int i = 0; i < 4; ++i) writer.u8(letters[i]);
  return writer.all({0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71});
}

Writer format_descriptor(const FormatGroup& group, int index) {
  const int frames = static_cast<int>(group.modes.size());
  Writer body;
  body.u8(class_specific);
  switch (group.format) {
    case Format::mjpeg:
      return body.all({0x06, index, frames, 1, 1, 0, 0, 0, 0});
    case Format::h264:
      return body.all({0x10, index, frames}).bytes(guid("H264").bytes()).all({16, 1, 0, 0, 0, 0, 1});
    case Format::yuyv:
      return body.all({0x04, index, frames}).bytes(guid("YUY2").bytes()).all({16, 1, 0, 0, 0, 0});
    case Format::nv12:
      return body.all({0x04, index, frames}).bytes(guid("NV12").bytes()).all({12, 1, 0, 0, 0, 0});
    case Format::depth:
      return body.all({0x04, index, frames}).bytes(guid("Z16 ").bytes()).all({16, 1, 0, 0, 0, 0});
    case Format::grey:
      return body.all({0x04, index, frames}).bytes(guid("Y800").bytes()).all({8, 1, 0, 0, 0, 0});
  }
  return body;
}

Writer frame_descriptor(const Mode& mode, int index) {
  const auto bytes = static_cast<std::uint32_t>(frame_bytes(mode.format, mode.width, mode.height));
  const bool frame_based = mode.format == Format::h264;
  const int subtype = frame_based ? 0x11 : mode.format == Format::mjpeg ? 0x07 : 0x05;
  Writer body;
  body.all({class_specific, subtype, index, 0}).u16(mode.width).u16(mode.height);
  body.u32(bytes * 8).u32(bytes * 240);
  if (!frame_based) body.u32(bytes);
  body.u32(frame_interval(mode.rates.front())).u8(static_cast<int>(mode.rates.size()));
  if (frame_based) body.u32(0);
  for (const double rate : mode.rates) body.u32(frame_interval(rate));
  return body;
}

/// The class-specific part of the streaming interface.
Writer streaming_descriptors(const std::vector<FormatGroup>& formats) {
  Writer listed;
  for (std::size_t i = 0; i < formats.size(); ++i) {
    listed.descriptor(format_descriptor(formats[i], static_cast<int>(i) + 1));
    for (std::size_t j = 0; j < formats[i].modes.size(); ++j) {
      listed.descriptor(frame_descriptor(formats[i].modes[j], static_cast<int>(j) + 1));
    }
    // sRGB primaries, BT.709 transfer, BT.601 matrix.
    listed.descriptor(Writer().all({class_specific, 0x0D, 1, 1, 4}));
  }
  const int count = static_cast<int>(formats.size());
  Writer header;
  header.all({class_specific, 0x01, count}).u16(13 + count + listed.size());
  header.all({bulk_endpoint, 0, output_terminal, 0, 0, 0, 1});
  for (int i = 0; i < count; ++i) header.u8(0);
  return Writer().descriptor(header).bytes(listed.bytes());
}

Writer control_descriptors(const std::vector<Control>& controls) {
  Writer units;
  units.descriptor(Writer()
                       .all({class_specific, 0x02, camera_terminal})
                       .u16(0x0201)
                       .all({0, 0, 0, 0, 0, 0, 0, 0, 3})
                       .u24(control_bits(controls, camera_terminal)));
  units.descriptor(Writer()
                       .all({class_specific, 0x05, processing_unit, camera_terminal, 0, 0, 2})
                       .u16(control_bits(controls, processing_unit))
                       .all({0, 0}));
  units.descriptor(Writer().all({class_specific, 0x03, output_terminal}).u16(0x0101).all({0, processing_unit, 0}));
  Writer header;
  header.all({class_specific, 0x01}).u16(0x0110).u16(13 + units.size()).u32(48000000).all({1, streaming_interface});
  return Writer().descriptor(header).bytes(units.bytes());
}

}  // namespace

const std::vector<Control>& known_controls() {
  static const std::vector<Control> controls = {
      {"exposure_mode", camera_terminal, 0x02, 1, 1, 0, 0, 0x0F, 8, 8},
      {"exposure_priority", camera_terminal, 0x03, 2, 1, 0, 1, 1, 1, 1},
      {"exposure", camera_terminal, 0x04, 3, 4, 3, 2047, 1, 250, 250},
      {"focus", camera_terminal, 0x06, 5, 2, 0, 250, 5, 0, 0},
      {"focus_auto", camera_terminal, 0x08, 17, 1, 0, 1, 1, 1, 1},
      {"zoom", camera_terminal, 0x0B, 9, 2, 100, 400, 1, 100, 100},
      {"backlight", processing_unit, 0x01, 8, 2, 0, 2, 1, 0, 0},
      {"brightness", processing_unit, 0x02, 0, 2, 0, 255, 1, 128, 128},
      {"contrast", processing_unit, 0x03, 1, 2, 0, 255, 1, 128, 128},
      {"gain", processing_unit, 0x04, 9, 2, 0, 255, 1, 0, 0},
      {"power_line", processing_unit, 0x05, 10, 1, 0, 2, 1, 1, 1},
      {"saturation", processing_unit, 0x07, 3, 2, 0, 255, 1, 128, 128},
      {"sharpness", processing_unit, 0x08, 4, 2, 0, 255, 1, 128, 128},
      {"white_balance", processing_unit, 0x0A, 6, 2, 2000, 6500, 1, 4000, 4000},
      {"white_balance_auto", processing_unit, 0x0B, 12, 1, 0, 1, 1, 1, 1},
  };
  return controls;
}

std::vector<FormatGroup> group_by_format(const std::vector<Mode>& modes) {
  std::vector<FormatGroup> groups;
  for (const Mode& mode : modes) {
    auto group = groups.begin();
    while (group != groups.end() && group->format != mode.format) ++group;
    if (group == groups.end()) group = groups.insert(groups.end(), FormatGroup{mode.format, {}});
    group->modes.push_back(mode);
  }
  return groups;
}

std::uint32_t frame_interval(double rate) {
  return static_cast<std::uint32_t>(std::lround(1e7 / rate));
}

Bytes device_descriptor(bool has_serial) {
  // Class EF, 2, 1: interface associations inside. The vendor's number is the one for prototypes.
  return Writer()
      .descriptor(Writer()
                      .u8(descriptor_device)
                      .u16(0x0200)
                      .all({0xEF, 2, 1, 64})
                      .u16(0x1209)
                      .u16(0x0001)
                      .u16(0x0100)
                      .all({1, 2, has_serial ? 3 : 0, 1}))
      .bytes();
}

Bytes configuration_descriptor(const std::vector<FormatGroup>& formats, const std::vector<Control>& controls) {
  Writer body;
  body.descriptor(Writer().all({descriptor_association, control_interface, 2, video_class, 3, 0, 0}));
  body.descriptor(Writer().all({descriptor_interface, control_interface, 0, 0, video_class, 1, 0, 0}));
  body.bytes(control_descriptors(controls).bytes());
  body.descriptor(Writer().all({descriptor_interface, streaming_interface, 0, 1, video_class, 2, 0, 0}));
  body.bytes(streaming_descriptors(formats).bytes());
  body.descriptor(Writer().all({descriptor_endpoint, bulk_endpoint, 2}).u16(512).u8(0));
  Writer whole;
  whole.descriptor(Writer().u8(descriptor_configuration).u16(9 + body.size()).all({2, 1, 0, 0x80, 250}));
  return whole.bytes(body.bytes()).bytes();
}

Bytes string_descriptor(int index, const Identity& identity) {
  Writer body;
  body.u8(descriptor_string);
  if (index == 0) {
    body.u16(0x0409);
  } else {
    const std::string text = index == 1 ? "Test Bench" : index == 2 ? identity.name : identity.serial;
    for (const char letter : text) body.u16(static_cast<unsigned char>(letter));
  }
  return Writer().descriptor(body).bytes();
}

}  // namespace webcam

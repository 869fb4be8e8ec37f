#include "platform/camera/v4l2_node.h"

#include <linux/videodev2.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "platform/camera/camera_node.h"

namespace handset {
namespace {

namespace fs = std::filesystem;
using Coding = CameraWay::Coding;

struct Format {
  std::uint32_t v4l2;
  Coding coding;
  const char* name;
};

constexpr std::array formats = {
    Format{V4L2_PIX_FMT_YUYV, Coding::raw, "YUY2"},        Format{V4L2_PIX_FMT_UYVY, Coding::raw, "UYVY"},
    Format{V4L2_PIX_FMT_YVYU, Coding::raw, "YVYU"},        Format{V4L2_PIX_FMT_NV12, Coding::raw, "NV12"},
    Format{V4L2_PIX_FMT_NV12M, Coding::raw, "NV12"},       Format{V4L2_PIX_FMT_NV21, Coding::raw, "NV21"},
    Format{V4L2_PIX_FMT_NV16, Coding::raw, "NV16"},        Format{V4L2_PIX_FMT_NV24, Coding::raw, "NV24"},
    Format{V4L2_PIX_FMT_YUV420, Coding::raw, "I420"},      Format{V4L2_PIX_FMT_YVU420, Coding::raw, "YV12"},
    Format{V4L2_PIX_FMT_YUV422P, Coding::raw, "Y42B"},     Format{V4L2_PIX_FMT_RGB24, Coding::raw, "RGB"},
    Format{V4L2_PIX_FMT_BGR24, Coding::raw, "BGR"},        Format{V4L2_PIX_FMT_XBGR32, Coding::raw, "BGRx"},
    Format{V4L2_PIX_FMT_XRGB32, Coding::raw, "xRGB"},      Format{V4L2_PIX_FMT_RGB565, Coding::raw, "RGB16"},
    Format{V4L2_PIX_FMT_GREY, Coding::raw, "GRAY8"},       Format{V4L2_PIX_FMT_Y16, Coding::raw, "GRAY16_LE"},
    Format{V4L2_PIX_FMT_Y16_BE, Coding::raw, "GRAY16_BE"}, Format{V4L2_PIX_FMT_MJPEG, Coding::jpeg, ""},
    Format{V4L2_PIX_FMT_JPEG, Coding::jpeg, ""},           Format{V4L2_PIX_FMT_H264, Coding::h264, ""},
    Format{V4L2_PIX_FMT_SBGGR8, Coding::bayer, "bggr"},    Format{V4L2_PIX_FMT_SGBRG8, Coding::bayer, "gbrg"},
    Format{V4L2_PIX_FMT_SGRBG8, Coding::bayer, "grbg"},    Format{V4L2_PIX_FMT_SRGGB8, Coding::bayer, "rggb"},
};

std::string four_letters(std::uint32_t format) {
  std::string text;
  for (int shift = 0; shift < 32; shift += 8) {
    const char c = static_cast<char>(format >> shift & 0x7F);
    if (std::isgraph(static_cast<unsigned char>(c)) != 0) text += c;
  }
  return text;
}

std::string first_line(const fs::path& file) {
  std::ifstream stream(file);
  std::string line;
  std::getline(stream, line);
  while (!line.empty() && std::isspace(static_cast<unsigned char>(line.back())) != 0) line.pop_back();
  return line;
}

int number_in(const std::string& text, int otherwise) {
  int number = otherwise;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

/// Lower-case words: letters and digits stay together.
std::vector<std::string> words_of(const std::string& text) {
  std::vector<std::string> words = {""};
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (std::isalnum(byte) != 0) {
      words.back() += static_cast<char>(std::tolower(byte));
    } else if (!words.back().empty()) {
      words.emplace_back();
    }
  }
  return words;
}

bool has_word(const std::vector<std::string>& words, std::initializer_list<const char*> wanted) {
  return std::any_of(words.begin(), words.end(), [&](const std::string& word) {
    return std::any_of(wanted.begin(), wanted.end(), [&](const char* w) { return word == w; });
  });
}

/// A device's path below its host controller, without the bus number, which changes from boot to boot.
std::string bus_of(const fs::path& device) {
  std::string host;
  for (auto part = device.begin(); part != device.end(); ++part) {
    const std::string name = part->string();
    if (name.starts_with("usb") && std::next(part) != device.end()) {
      const std::string leaf = device.filename().string();
      const std::size_t dash = leaf.find('-');
      return host + "-" + (dash == std::string::npos ? leaf : leaf.substr(dash + 1));
    }
    host = name;
  }
  return device.filename().string();
}

/// Whether an inaccessible node's name suggests a codec or the like. All others are assumed to be cameras.
bool names_helper(const std::string& name) {
  return has_word(words_of(name), {"codec", "decode", "encode", "decoder", "encoder", "dec", "enc", "isp", "stats",
                                   "metadata", "meta", "m2m", "jpeg", "scaler"});
}

bool is_camera(const V4l2Answers& answers) {
  if (answers.error != 0) return answers.place.index == 0 && !names_helper(answers.place.name);
  const std::uint32_t caps = answers.capabilities;
  constexpr std::uint32_t captures = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_VIDEO_CAPTURE_MPLANE;
  constexpr std::uint32_t other = V4L2_CAP_VIDEO_M2M | V4L2_CAP_VIDEO_M2M_MPLANE | V4L2_CAP_IO_MC | V4L2_CAP_TOUCH;
  return (caps & captures) != 0 && (caps & other) == 0 && (caps & V4L2_CAP_STREAMING) != 0;
}

void set_trouble(FoundCamera* camera, CameraTrouble trouble, const std::string& detail) {
  camera->trouble = trouble;
  camera->why = explain(trouble, camera->label, detail);
}

void judge_error(FoundCamera* camera, int error) {
  if (error == EACCES || error == EPERM) {
    const std::string advice = access_advice(camera->node);
    set_trouble(camera, CameraTrouble::no_access, advice.empty() ? camera->node + ": " + std::strerror(error) : advice);
  } else if (error == EBUSY) {
    set_trouble(camera, CameraTrouble::busy, "");
  } else if (error == ETIMEDOUT) {
    set_trouble(camera, CameraTrouble::no_picture, camera->node + " does not answer");
  } else {
    set_trouble(camera, CameraTrouble::no_picture, camera->node + ": " + std::strerror(error));
  }
}

/// Fills the camera's modes. @return names of the formats that cannot be displayed
std::string take_modes(const V4l2Answers& answers, const Decoders& decoders, FoundCamera* camera) {
  std::string refused;
  for (const V4l2Mode& mode : answers.modes) {
    const auto format =
        std::find_if(formats.begin(), formats.end(), [&](const Format& f) { return f.v4l2 == mode.format; });
    const bool decodable =
        format != formats.end() &&
        (format->coding == Coding::raw || (format->coding == Coding::jpeg && decoders.jpeg) ||
         (format->coding == Coding::h264 && decoders.h264) || (format->coding == Coding::bayer && decoders.bayer));
    if (decodable && possible_input(mode.size)) {
      add_way(&camera->modes, mode.size, {format->coding, format->name, mode.rates});
    } else if (const std::string name = four_letters(mode.format); refused.find(name) == std::string::npos) {
      refused += (refused.empty() ? "" : ", ") + name;
    }
  }
  sort_modes(&camera->modes);
  return refused;
}

}  // namespace

std::string tidy_label(const std::string& name) {
  const std::size_t colon = name.find(": ");
  if (colon == std::string::npos) return name;
  const std::string second = name.substr(colon + 2);
  return name.compare(0, second.size(), second) == 0 ? name.substr(0, colon) : name;
}

bool names_infrared(const std::string& name) {
  if (has_word(words_of(name), {"ir", "infrared"})) return true;
  const std::size_t colon = name.find(": ");
  return colon != std::string::npos && name.substr(colon + 2) == "Integrated I";
}

CameraLocation location_in(const std::string& name) {
  const std::vector<std::string> words = words_of(name);
  const bool front = has_word(words, {"front"});
  const bool rear = has_word(words, {"rear", "back"});
  if (front == rear) return CameraLocation::unknown;
  return front ? CameraLocation::front : CameraLocation::rear;
}

std::vector<std::string> video_nodes(const std::string& folder) {
  std::vector<std::pair<int, std::string>> found;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    const std::string digits = name.starts_with("video") ? name.substr(5) : "";
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string::npos) continue;
    found.emplace_back(number_in(digits, 0), entry->path().string());
  }
  std::sort(found.begin(), found.end());
  std::vector<std::string> nodes;
  for (auto& [number, node] : found) nodes.push_back(std::move(node));
  return nodes;
}

V4l2Place find_place(const std::string& node, const std::string& sysfs) {
  V4l2Place place;
  place.node = node;
  const std::string leaf = fs::path(node).filename().string();
  const fs::path folder = fs::path(sysfs) / "class" / "video4linux" / leaf;
  place.name = first_line(folder / "name");
  if (place.name.empty()) place.name = leaf;
  place.index = number_in(first_line(folder / "index"), 0);
  std::error_code error;
  const fs::path device = fs::canonical(folder / "device", error);
  place.bus = error ? leaf : bus_of(device);
  if (error) return place;
  // A USB camera's node belongs to an interface, and the interface to the device.
  const fs::path parent = device.parent_path();
  const std::string vendor = first_line(parent / "idVendor");
  if (vendor.empty()) return place;
  place.serial = first_line(parent / "serial");
  place.usb_id = vendor + ":" + first_line(parent / "idProduct");
  place.usb_device = parent.string();
  return place;
}

std::optional<FoundCamera> camera_of(const V4l2Answers& answers, const Decoders& decoders) {
  const bool gone = answers.error == ENOENT || answers.error == ENODEV || answers.error == ENXIO;
  if (gone || !is_camera(answers)) return std::nullopt;
  FoundCamera camera;
  camera.label = tidy_label(answers.place.name);
  camera.node = answers.place.node;
  camera.location = location_in(camera.label);
  if (answers.driver == "v4l2 loopback") {
    camera.kind = CameraKind::loopback;
  } else if (answers.driver == "vivid" || answers.driver == "vimc") {
    camera.kind = CameraKind::simulated;
  }
  const bool infrared = names_infrared(answers.place.name);
  if (infrared) camera.kind = CameraKind::infrared;
  if (answers.error != 0) {
    judge_error(&camera, answers.error);
    return camera;
  }
  camera.direct = true;
  const std::string refused = take_modes(answers, decoders, &camera);
  if (only_grey(camera.modes)) {
    camera.kind = CameraKind::infrared;
  } else if (!infrared) {
    drop_grey(&camera.modes);
  }
  if (!camera.modes.empty()) return camera;
  if (!refused.empty()) {
    set_trouble(&camera, CameraTrouble::formats, refused);
  } else if (camera.kind == CameraKind::loopback) {
    return std::nullopt;  // nothing feeds it
  } else {
    set_trouble(&camera, CameraTrouble::no_picture, "it offers none");
  }
  return camera;
}

}  // namespace handset

// The kernel queries behind v4l2_node.h.

#include <fcntl.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "platform/camera/v4l2_node.h"

namespace handset {
namespace {

/// For drivers that scale to any size.
constexpr std::array<camera_res_t, 6> usual_sizes = {
    {{3840, 2160}, {1920, 1080}, {1280, 720}, {960, 540}, {640, 480}, {320, 240}}};
/// Guards against a driver whose enumeration never ends.
constexpr std::uint32_t most_entries = 256;

class Node {
 public:
  explicit Node(const std::string& path) : fd_(open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC)) {}
  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;
  ~Node() {
    if (fd_ >= 0) close(fd_);
  }
  bool opened() const { return fd_ >= 0; }

  template <typename Argument>
  bool ask(unsigned long question, Argument* argument) const {
    int result = 0;
    do {
      result = ioctl(fd_, question, argument);
    } while (result < 0 && errno == EINTR);
    return result == 0;
  }

 private:
  const int fd_;
};

template <typename Text>
std::string text_of(const Text& bytes) {
  const char* text = reinterpret_cast<const char*>(bytes);
  return {text, strnlen(text, sizeof bytes)};
}

FrameRate rate_of(const v4l2_fract& interval) {
  if (interval.numerator == 0 || interval.numerator > 0x7FFFFFFF || interval.denominator > 0x7FFFFFFF) return {};
  return {static_cast<int>(interval.denominator), static_cast<int>(interval.numerator)};
}

std::vector<RateRange> ask_rates(const Node& node, std::uint32_t format, camera_res_t size) {
  std::vector<RateRange> rates;
  for (std::uint32_t i = 0; i < most_entries; ++i) {
    v4l2_frmivalenum entry{};
    entry.index = i;
    entry.pixel_format = format;
    entry.width = size.width;
    entry.height = size.height;
    if (!node.ask(VIDIOC_ENUM_FRAMEINTERVALS, &entry)) break;
    const bool one = entry.type == V4L2_FRMIVAL_TYPE_DISCRETE;
    const RateRange range = {rate_of(one ? entry.discrete : entry.stepwise.max),
                             rate_of(one ? entry.discrete : entry.stepwise.min)};
    if (range.fastest.numerator > 0) rates.push_back(range);
    if (!one) break;
  }
  return rates;
}

bool fits(std::uint32_t side, std::uint32_t least, std::uint32_t most, std::uint32_t step) {
  return side >= least && side <= most && (step == 0 || (side - least) % step == 0);
}

/// For drivers that do not enumerate sizes: tries sizes and keeps those they accept unchanged.
std::vector<camera_res_t> try_sizes(const Node& node, std::uint32_t type, std::uint32_t format) {
  std::vector<camera_res_t> sizes;
  for (const camera_res_t& size : usual_sizes) {
    v4l2_format tried{};
    tried.type = type;
    // Both kinds of format start with width, height and pixel format.
    tried.fmt.pix.width = size.width;
    tried.fmt.pix.height = size.height;
    tried.fmt.pix.pixelformat = format;
    if (node.ask(VIDIOC_TRY_FMT, &tried) && tried.fmt.pix.width == size.width && tried.fmt.pix.height == size.height &&
        tried.fmt.pix.pixelformat == format)
      sizes.push_back(size);
  }
  return sizes;
}

std::vector<camera_res_t> ask_sizes(const Node& node, std::uint32_t type, std::uint32_t format) {
  std::vector<camera_res_t> sizes;
  for (std::uint32_t i = 0; i < most_entries; ++i) {
    v4l2_frmsizeenum entry{};
    entry.index = i;
    entry.pixel_format = format;
    if (!node.ask(VIDIOC_ENUM_FRAMESIZES, &entry)) {
      if (i == 0) return try_sizes(node, type, format);
      break;
    }
    if (entry.type == V4L2_FRMSIZE_TYPE_DISCRETE) {
      sizes.push_back({entry.discrete.width, entry.discrete.height});
      continue;
    }
    const v4l2_frmsize_stepwise& range = entry.stepwise;
    for (const camera_res_t& size : usual_sizes) {
      if (fits(size.width, range.min_width, range.max_width, range.step_width) &&
          fits(size.height, range.min_height, range.max_height, range.step_height))
        sizes.push_back(size);
    }
    break;
  }
  return sizes;
}

void ask_formats(const Node& node, V4l2Answers* answers) {
  const std::uint32_t type = (answers->capabilities & V4L2_CAP_VIDEO_CAPTURE) != 0 ? V4L2_BUF_TYPE_VIDEO_CAPTURE
                                                                                   : V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE;
  for (std::uint32_t i = 0; i < most_entries; ++i) {
    v4l2_fmtdesc format{};
    format.index = i;
    format.type = type;
    if (!node.ask(VIDIOC_ENUM_FMT, &format)) break;
    for (const camera_res_t& size : ask_sizes(node, type, format.pixelformat)) {
      answers->modes.push_back({format.pixelformat, size, ask_rates(node, format.pixelformat, size)});
    }
  }
}

}  // namespace

V4l2Answers ask_node(const V4l2Place& place) {
  V4l2Answers answers;
  answers.place = place;
  const Node node(place.node);
  v4l2_capability capability{};
  if (!node.opened() || !node.ask(VIDIOC_QUERYCAP, &capability)) {
    answers.error = errno;
    return answers;
  }
  answers.driver = text_of(capability.driver);
  answers.bus_info = text_of(capability.bus_info);
  answers.capabilities =
      (capability.capabilities & V4L2_CAP_DEVICE_CAPS) != 0 ? capability.device_caps : capability.capabilities;
  ask_formats(node, &answers);
  return answers;
}

bool node_is_busy(const std::string& path) {
  const Node node(path);
  if (!node.opened()) return errno == EBUSY;
  v4l2_capability capability{};
  if (!node.ask(VIDIOC_QUERYCAP, &capability)) return errno == EBUSY;
  const std::uint32_t caps =
      (capability.capabilities & V4L2_CAP_DEVICE_CAPS) != 0 ? capability.device_caps : capability.capabilities;
  // Freeing zero buffers changes nothing, and is refused while somebody else owns the buffers.
  v4l2_requestbuffers none{};
  none.type = (caps & V4L2_CAP_VIDEO_CAPTURE) != 0 ? V4L2_BUF_TYPE_VIDEO_CAPTURE : V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE;
  none.memory = V4L2_MEMORY_MMAP;
  return !node.ask(VIDIOC_REQBUFS, &none) && errno == EBUSY;
}

}  // namespace handset

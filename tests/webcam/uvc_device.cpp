#include "tests/webcam/uvc_device.h"

#include <cstdlib>

namespace webcam {
namespace {

// USB 2.0, table 9-4.
constexpr std::uint8_t clear_feature = 1;
constexpr std::uint8_t get_descriptor = 6;
constexpr std::uint8_t set_interface = 11;

// Video class 1.1, section A.8.
constexpr std::uint8_t set_cur = 0x01;
constexpr std::uint8_t get_cur = 0x81;
constexpr std::uint8_t get_min = 0x82;
constexpr std::uint8_t get_max = 0x83;
constexpr std::uint8_t get_res = 0x84;
constexpr std::uint8_t get_len = 0x85;
constexpr std::uint8_t get_info = 0x86;
constexpr std::uint8_t get_def = 0x87;

constexpr std::uint8_t probe_control = 1;
constexpr std::uint8_t commit_control = 2;
constexpr std::size_t probe_bytes = 34;

constexpr std::uint8_t type_mask = 0x60;
constexpr std::uint8_t type_class = 0x20;

void put(Bytes* bytes, std::size_t offset, std::size_t size, std::uint32_t value) {
  for (std::size_t i = 0; i < size; ++i) (*bytes)[offset + i] = static_cast<std::uint8_t>(value >> 8 * i);
}

std::uint32_t get(const Bytes& bytes, std::size_t offset, std::size_t size) {
  std::uint32_t value = 0;
  for (std::size_t i = size; i-- > 0;) value = value << 8 | bytes[offset + i];
  return value;
}

Bytes number(std::uint32_t value, int size) {
  Bytes bytes(static_cast<std::size_t>(size));
  put(&bytes, 0, bytes.size(), value);
  return bytes;
}

}  // namespace

UvcDevice::UvcDevice(Identity identity, const std::vector<Mode>& modes, std::vector<Control> controls,
                     std::function<void(const std::string&)> note)
    : identity_(std::move(identity)),
      formats_(group_by_format(modes)),
      note_(std::move(note)),
      controls_(std::move(controls)) {}

std::optional<Bytes> UvcDevice::answer(const Setup& setup, const Bytes& data) {
  if ((setup.type & type_mask) == type_class) {
    return (setup.index & 255) == streaming_interface ? streaming_request(setup, data) : control_request(setup, data);
  }
  switch (setup.request) {
    case get_descriptor:
      return descriptor(setup);
    case clear_feature:  // how the driver stops a bulk stream
    case set_interface:
      if (setup.index == bulk_endpoint || setup.index == streaming_interface) stop();
      return Bytes{};
    case 0:  // status: bus powered, not halted
      return Bytes(2);
    default:
      return Bytes{};  // address, configuration
  }
}

std::optional<Bytes> UvcDevice::descriptor(const Setup& setup) const {
  switch (setup.value >> 8) {
    case 1:
      return device_descriptor(!identity_.serial.empty());
    case 2:
      return configuration_descriptor(formats_, controls_);
    case 3:
      return string_descriptor(setup.value & 255, identity_);
    default:
      return std::nullopt;  // no device qualifier: high speed only
  }
}

std::optional<Bytes> UvcDevice::streaming_request(const Setup& setup, const Bytes& data) {
  const int selector = setup.value >> 8;
  if (selector != probe_control && selector != commit_control) return std::nullopt;
  switch (setup.request) {
    case set_cur: {
      {
        const std::lock_guard lock(mutex_);
        if (refuses_ || data.size() < 26) return std::nullopt;
        negotiate(data);
      }
      if (selector == commit_control) start();
      return Bytes{};
    }
    case get_len:
      return number(probe_bytes, 2);
    case get_info:
      return Bytes{3};  // can be read and written
    default: {
      const std::lock_guard lock(mutex_);
      if (refuses_) return std::nullopt;
      return probe_answer();
    }
  }
}

/// Takes what was asked for as far as it is listed. With the mutex held.
void UvcDevice::negotiate(const Bytes& wish) {
  const std::size_t format = wish[2];
  const std::size_t frame = wish[3];
  if (format >= 1 && format <= formats_.size()) format_ = format - 1;
  const std::vector<Mode>& modes = formats_[format_].modes;
  mode_ = frame >= 1 && frame <= modes.size() ? frame - 1 : 0;
  const auto interval = static_cast<long>(get(wish, 4, 4));
  const std::vector<double>& rates = modes[mode_].rates;
  rate_ = 0;
  const auto distance = [&](std::size_t i) {
    return std::labs(static_cast<long>(frame_interval(rates[i])) - interval);
  };
  for (std::size_t i = 1; interval != 0 && i < rates.size(); ++i) {
    if (distance(i) < distance(rate_)) rate_ = i;
  }
}

/// Video class 1.1, table 4-47. With the mutex held.
Bytes UvcDevice::probe_answer() const {
  const Mode& mode = formats_[format_].modes[mode_];
  Bytes bytes(probe_bytes);
  put(&bytes, 2, 1, static_cast<std::uint32_t>(format_ + 1));
  put(&bytes, 3, 1, static_cast<std::uint32_t>(mode_ + 1));
  put(&bytes, 4, 4, frame_interval(mode.rates[rate_]));
  put(&bytes, 18, 4, static_cast<std::uint32_t>(frame_bytes(mode.format, mode.width, mode.height)));
  put(&bytes, 22, 4, payload_bytes);
  put(&bytes, 26, 4, 48000000);
  put(&bytes, 30, 1, 3);
  return bytes;
}

std::optional<Bytes> UvcDevice::control_request(const Setup& setup, const Bytes& data) {
  std::string line;
  std::optional<Bytes> answered = [&]() -> std::optional<Bytes> {
    const std::lock_guard lock(mutex_);
    for (Control& control : controls_) {
      if (control.entity != setup.index >> 8 || control.selector != setup.value >> 8) continue;
      const auto says = [&](int value) { return number(static_cast<std::uint32_t>(value), control.size); };
      switch (setup.request) {
        case set_cur:
          if (data.size() != static_cast<std::size_t>(control.size)) return std::nullopt;
          control.value = static_cast<int>(get(data, 0, data.size()));
          line = std::string("set ") + control.name + " " + std::to_string(control.value);
          return Bytes{};
        case get_cur:
          return says(control.value);
        case get_min:
          return says(control.minimum);
        case get_max:
          return says(control.maximum);
        case get_res:
          return says(control.step);
        case get_def:
          return says(control.preset);
        case get_len:
          return number(static_cast<std::uint32_t>(control.size), 2);
        case get_info:
          return Bytes{3};
        default:
          return std::nullopt;
      }
    }
    return std::nullopt;
  }();
  if (!line.empty()) note_(line);
  return answered;
}

void UvcDevice::start() {
  std::string line;
  {
    const std::lock_guard lock(mutex_);
    const Mode& mode = formats_[format_].modes[mode_];
    streams_ = true;
    ++starts_;
    constexpr const char* names[] = {"YUYV", "NV12", "GREY", "MJPEG", "H264", "Z16"};
    char text[100];
    std::snprintf(text, sizeof text, "start %s %dx%d %.3g", names[static_cast<int>(mode.format)], mode.width,
                  mode.height, mode.rates[rate_]);
    line = text;
  }
  note_(line);
}

void UvcDevice::stop() {
  {
    const std::lock_guard lock(mutex_);
    if (!streams_) return;
    streams_ = false;
  }
  note_("stop");
}

void UvcDevice::refuse(bool refuses) {
  const std::lock_guard lock(mutex_);
  refuses_ = refuses;
}

std::optional<Stream> UvcDevice::stream(int* start) const {
  const std::lock_guard lock(mutex_);
  *start = starts_;
  if (!streams_) return std::nullopt;
  const Mode& mode = formats_[format_].modes[mode_];
  return Stream{mode.format, mode.width, mode.height, mode.rates[rate_]};
}

void UvcDevice::reset() {
  const std::lock_guard lock(mutex_);
  streams_ = false;
  for (Control& control : controls_) control.value = control.preset;
}

}  // namespace webcam

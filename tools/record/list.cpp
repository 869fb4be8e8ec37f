#include "tools/record/list.h"

#include <cmath>
#include <cstdio>

#include "platform/camera/node_scan.h"
#include "platform/camera/v4l2_node.h"

namespace record {
namespace {

using handset::CameraKind;
using handset::CameraWay;

constexpr std::chrono::milliseconds busy_limit{500};

const char* kind_text(CameraKind kind) {
  switch (kind) {
    case CameraKind::color:
      break;
    case CameraKind::simulated:
      return ", simulated";
    case CameraKind::infrared:
      return ", infrared";
    case CameraKind::loopback:
      return ", fed by a program";
  }
  return "";
}

std::string format_text(const CameraWay& way) {
  switch (way.coding) {
    case CameraWay::Coding::raw:
      return way.format.empty() ? "raw" : way.format;
    case CameraWay::Coding::jpeg:
      return "MJPEG";
    case CameraWay::Coding::h264:
      return "H.264";
    case CameraWay::Coding::bayer:
      return "Bayer " + way.format;
  }
  return {};
}

/// "30", "29.97"
std::string rate_text(double rate) {
  char text[32];
  std::snprintf(text, sizeof text, "%.4g", std::round(rate * 100) / 100);
  return text;
}

std::string describe_size(const handset::FoundCamera& camera, const camera_res_t& size) {
  std::string line = "    " + std::to_string(size.width) + "x" + std::to_string(size.height);
  const handset::CameraMode* mode = handset::choose_mode(camera.modes, size);
  const handset::ChosenWay choice = handset::choose_way(*mode);
  if (choice.rate.numerator > 0) line += "@" + rate_text(choice.rate.value());
  return line + " " + format_text(*choice.way) + "\n";
}

}  // namespace

std::string describe_cameras(const std::vector<handset::FoundCamera>& cameras) {
  if (cameras.empty()) return "  none\n";
  std::string text;
  for (const handset::FoundCamera& camera : cameras) {
    text += "  " + camera.label + " (" + (camera.node.empty() ? "" : camera.node + ", ") + camera.identity +
            kind_text(camera.kind) + ")\n";
    if (!camera.usable()) text += "    not used: " + camera.why + "\n";
    for (const camera_res_t& size : handset::list_sizes(camera.modes)) text += describe_size(camera, size);
  }
  return text;
}

std::string describe_microphones(const std::vector<handset::FoundMicrophone>& microphones) {
  if (microphones.empty()) return "  none\n";
  std::string text;
  for (const handset::FoundMicrophone& microphone : microphones) {
    text +=
        "  " + microphone.label + " (" + microphone.identity + ")" + (microphone.is_default ? ", default" : "") + "\n";
  }
  return text;
}

int print_list() {
  std::vector<handset::FoundCamera> cameras = handset::find_cameras();
  for (handset::FoundCamera& camera : cameras) {
    const bool exclusive = camera.usable() && camera.direct && camera.kind != CameraKind::loopback;
    const auto busy = [node = camera.node] { return handset::node_is_busy(node); };
    if (!exclusive || !handset::ask_within(busy_limit, false, busy)) continue;
    camera.trouble = handset::CameraTrouble::busy;
    camera.why = handset::explain(camera.trouble, camera.label);
  }
  std::printf("Cameras:\n%s", describe_cameras(cameras).c_str());
  std::fflush(stdout);
  bool answered = false;
  const std::vector<handset::FoundMicrophone> microphones = handset::find_microphones(&answered);
  std::printf("Microphones:\n%s",
              answered ? describe_microphones(microphones).c_str() : "  unknown: the sound server does not answer\n");
  return 0;
}

}  // namespace record

// Merges what the kernel and the device providers report into one list.

#include <algorithm>
#include <map>
#include <tuple>

#include "platform/camera/device_finder.h"
#include "platform/camera/device_views.h"
#include "platform/camera/v4l2_node.h"

namespace handset {
namespace {

/// A camera and the ingredients of its identity.
struct Candidate {
  FoundCamera camera;
  V4l2Place place;
};

bool only_coded_as(const FoundCamera& camera, CameraWay::Coding coding) {
  return !camera.modes.empty() && std::all_of(camera.modes.begin(), camera.modes.end(), [&](const CameraMode& mode) {
    return std::all_of(mode.ways.begin(), mode.ways.end(), [&](const CameraWay& way) { return way.coding == coding; });
  });
}

/// Some webcams have a second node for H.264 with the same pictures as the first.
void drop_second_streams(std::vector<Candidate>* candidates) {
  const auto is_second = [&](const Candidate& c) {
    return !c.place.usb_device.empty() && only_coded_as(c.camera, CameraWay::Coding::h264) &&
           std::any_of(candidates->begin(), candidates->end(), [&](const Candidate& other) {
             return other.place.usb_device == c.place.usb_device && other.place.name == c.place.name &&
                    other.camera.usable() && !only_coded_as(other.camera, CameraWay::Coding::h264);
           });
  };
  std::vector<bool> second;
  for (const Candidate& c : *candidates) second.push_back(is_second(c));
  auto is = second.begin();
  std::erase_if(*candidates, [&](const Candidate&) { return *is++; });
}

/// The same identity format and naming for all, plus the socket where these are ambiguous.
void name_candidates(std::vector<Candidate>* candidates) {
  const auto count = [&](const std::string& identity) {
    return std::count_if(candidates->begin(), candidates->end(),
                         [&](const Candidate& c) { return c.camera.identity == identity; });
  };
  for (Candidate& c : *candidates) {
    const std::string& mark = c.place.serial.empty() ? c.place.bus : c.place.serial;
    const char* twin = c.camera.kind == CameraKind::infrared ? " infrared" : "";
    c.camera.identity = c.camera.label + (mark.empty() ? "" : "@" + mark) + twin;
  }
  std::vector<bool> several;
  for (const Candidate& c : *candidates) several.push_back(count(c.camera.identity) > 1);
  for (std::size_t i = 0; i < candidates->size(); ++i) {
    Candidate& c = (*candidates)[i];
    if (several[i] && !c.place.serial.empty() && !c.place.bus.empty()) c.camera.identity += "@" + c.place.bus;
  }
  std::map<std::string, int> seen;
  for (Candidate& c : *candidates) {
    const int number = ++seen[c.camera.identity];
    if (number > 1) c.camera.identity += "#" + std::to_string(number);
  }
}

/// Gives a node's camera the providers' view of it: as a second way to it, or as the only one.
void add_view(Candidate* candidate, const DeviceView& view) {
  FoundCamera& camera = candidate->camera;
  camera.former.push_back(view.former);
  if (camera.location == CameraLocation::unknown) camera.location = view.location;
  std::vector<CameraMode> modes = view.modes;
  if (camera.kind == CameraKind::color) drop_grey(&modes);
  if (modes.empty()) return;
  if (camera.direct && camera.usable()) {
    camera.device = view.device;
    camera.other_modes = std::move(modes);
  } else if (camera.trouble == CameraTrouble::no_access || camera.trouble == CameraTrouble::formats) {
    camera.direct = false;
    camera.device = view.device;
    if (only_grey(modes)) camera.kind = CameraKind::infrared;
    camera.modes = std::move(modes);
    camera.trouble = CameraTrouble::none;
    camera.why.clear();
  }
}

Candidate candidate_of(const DeviceView& view) {
  Candidate candidate;
  FoundCamera& camera = candidate.camera;
  camera.label = view.label;
  camera.node = view.node;
  camera.location = view.location;
  camera.device = view.device;
  camera.modes = view.modes;
  camera.former = {view.former};
  if (only_grey(camera.modes) || names_infrared(view.label)) {
    camera.kind = CameraKind::infrared;
  } else {
    drop_grey(&camera.modes);
  }
  if (camera.modes.empty()) {
    camera.trouble = view.refused.empty() ? CameraTrouble::no_picture : CameraTrouble::formats;
    camera.why = explain(camera.trouble, camera.label, view.refused);
  }
  candidate.place.serial = view.serial;
  candidate.place.bus = view.permanent;
  candidate.place.usb_id = view.usb_id;
  return candidate;
}

void place_view(const DeviceView& view, const std::vector<V4l2Answers>& nodes, std::vector<Candidate>* candidates) {
  if (view.node.empty() && !view.usb_id.empty()) {
    // Identical cameras cannot be told apart here: assign the view to one that has no other way.
    bool listed = false;
    for (Candidate& c : *candidates) {
      if (c.place.usb_id != view.usb_id || c.camera.node.empty()) continue;
      listed = true;
      if (!c.camera.usable()) return add_view(&c, view);
    }
    if (listed) return;
  }
  const auto same = std::find_if(candidates->begin(), candidates->end(),
                                 [&](const Candidate& c) { return !view.node.empty() && view.node == c.camera.node; });
  if (same != candidates->end()) return add_view(&*same, view);
  // What the kernel says is not a camera stays that way.
  const bool known = std::any_of(nodes.begin(), nodes.end(),
                                 [&](const V4l2Answers& n) { return !view.node.empty() && n.place.node == view.node; });
  if (!known) candidates->push_back(candidate_of(view));
}

}  // namespace

std::vector<FoundCamera> merge_cameras(const std::vector<V4l2Answers>& nodes, const std::vector<DeviceView>& views,
                                       const Decoders& decoders) {
  std::vector<Candidate> candidates;
  for (const V4l2Answers& answers : nodes) {
    std::optional<FoundCamera> camera = camera_of(answers, decoders);
    if (!camera) continue;
    if (!answers.bus_info.empty()) camera->former.push_back(answers.place.name + "@" + answers.bus_info);
    candidates.push_back({std::move(*camera), answers.place});
  }
  // Views with a node first: if libcamera shows the same camera again, the node's own view is already there.
  for (const bool with_node : {true, false}) {
    for (const DeviceView& view : views) {
      if (view.node.empty() != with_node) place_view(view, nodes, &candidates);
    }
  }
  drop_second_streams(&candidates);
  name_candidates(&candidates);
  std::vector<FoundCamera> cameras;
  for (Candidate& c : candidates) cameras.push_back(std::move(c.camera));
  std::sort(cameras.begin(), cameras.end(), [](const FoundCamera& a, const FoundCamera& b) {
    // Bare sensor data makes poor pictures.
    const auto rank = [](const FoundCamera& c) {
      return std::make_tuple(c.kind, only_coded_as(c, CameraWay::Coding::bayer), c.identity);
    };
    return rank(a) < rank(b);
  });
  return cameras;
}

}  // namespace handset

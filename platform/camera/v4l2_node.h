#pragma once

// What the kernel says of a video node, and what that makes of it.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/camera/device_finder.h"

namespace handset {

/// A format of a node, with a size and the rates at that size.
struct V4l2Mode {
  std::uint32_t format = 0;  ///< V4L2_PIX_FMT_…
  camera_res_t size{};
  std::vector<RateRange> rates;  ///< empty: the driver does not say
};

/// A node's place in the system, from sysfs: readable without access to the node itself.
struct V4l2Place {
  std::string node;        ///< "/dev/videoN"
  std::string name;        ///< as the driver calls it
  std::string bus;         ///< where it is plugged in, without numbers that change from start to start
  std::string serial;      ///< USB serial number, or empty
  std::string usb_id;      ///< "vvvv:pppp", or empty
  std::string usb_device;  ///< sysfs folder of the USB device, or empty: the same for all its nodes
  int index = 0;           ///< among the device's nodes
};

/// What a node answers.
struct V4l2Answers {
  V4l2Place place;
  int error = 0;  ///< errno value of opening and asking; ETIMEDOUT: no answer so far
  std::string driver;
  std::string bus_info;
  std::uint32_t capabilities = 0;  ///< of this node
  std::vector<V4l2Mode> modes;
};

/// The nodes in /dev, in the order of their numbers.
std::vector<std::string> video_nodes(const std::string& folder = "/dev");

/// Looks a node up in sysfs. Fields that are not there stay empty; the name is the node's own then.
V4l2Place find_place(const std::string& node, const std::string& sysfs = "/sys");

/// Opens a node and asks for its formats, sizes and rates; nothing is set, nothing streams. May block for as long as
/// the driver likes.
V4l2Answers ask_node(const V4l2Place& place);

/// Whether another program has buffers for streaming from the node. May block like ask_node().
bool node_is_busy(const std::string& node);

/// A camera without an identity yet, or nothing where the node is none: metadata, codecs, outputs, parts of a camera
/// that only a media controller's user can film with.
std::optional<FoundCamera> camera_of(const V4l2Answers& answers, const Decoders& decoders);

/// "HD Webcam: HD Web" is one name twice, cut off: "HD Webcam".
std::string tidy_label(const std::string& name);

/// Whether a name is an infrared camera's: the words IR or infrared, also cut off after the first letter behind a colon
/// as the kernel does.
bool names_infrared(const std::string& name);

/// "front", "rear", "back" as a word of a name.
CameraLocation location_in(const std::string& name);

}  // namespace handset

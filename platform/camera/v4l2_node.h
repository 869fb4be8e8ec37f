#pragma once

// What the kernel reports about a video node, and the camera derived from it.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/camera/device_finder.h"

namespace handset {

/// A format of a node, with a size and the rates at it.
struct V4l2Mode {
  std::uint32_t format = 0;  ///< V4L2_PIX_FMT_…
  camera_res_t size{};
  std::vector<RateRange> rates;  ///< empty if the driver does not say
};

/// A node's place in the system, from sysfs: readable without access to the node.
struct V4l2Place {
  std::string node;        ///< "/dev/videoN"
  std::string name;        ///< as the driver calls it
  std::string bus;         ///< where it is plugged in, without numbers that change from boot to boot
  std::string serial;      ///< USB serial number, or empty
  std::string usb_id;      ///< "vvvv:pppp", or empty
  std::string usb_device;  ///< sysfs folder of the USB device, the same for all its nodes; empty if not USB
  int index = 0;           ///< among the device's nodes
};

/// A node's answers.
struct V4l2Answers {
  V4l2Place place;
  int error = 0;  ///< errno value of opening and querying; ETIMEDOUT: no answer so far
  std::string driver;
  std::string bus_info;
  std::uint32_t capabilities = 0;  ///< of this node
  std::vector<V4l2Mode> modes;
};

/// The nodes in /dev, in numeric order.
std::vector<std::string> video_nodes(const std::string& folder = "/dev");

/// Looks a node up in sysfs. Missing fields stay empty; the name defaults to the node's own.
V4l2Place find_place(const std::string& node, const std::string& sysfs = "/sys");

/// Opens a node and queries its formats, sizes and rates; changes nothing and does not stream. May block for as long as
/// the driver likes.
V4l2Answers ask_node(const V4l2Place& place);

/// Whether another program has allocated streaming buffers on the node. May block like ask_node().
bool node_is_busy(const std::string& node);

/// A camera without an identity yet, or nothing if the node is not one: metadata, codecs, outputs, parts of a camera
/// usable only through a media controller.
std::optional<FoundCamera> camera_of(const V4l2Answers& answers, const Decoders& decoders);

/// Removes a repeated, truncated name: "HD Webcam: HD Web" becomes "HD Webcam".
std::string tidy_label(const std::string& name);

/// Whether a name is an infrared camera's: contains the words IR or infrared, even truncated after the first letter
/// behind a colon, as the kernel does.
bool names_infrared(const std::string& name);

/// Finds "front", "rear" or "back" as a word of a name.
CameraLocation location_in(const std::string& name);

}  // namespace handset

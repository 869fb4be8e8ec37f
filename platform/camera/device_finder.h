#pragma once

#include <string>
#include <vector>

#include "platform/camera/camera_mode.h"
#include "platform/camera/camera_trouble.h"
#include "platform/camera/gst_ptr.h"

namespace handset {

/// In the order of preference.
enum class CameraKind {
  color,
  simulated,  ///< a test driver's
  infrared,   ///< for recognizing faces, or grey only
  loopback,   ///< another program's pictures
};

/// Where a camera looks, as its name or its firmware says.
enum class CameraLocation { unknown, front, rear };

struct FoundCamera {
  std::string identity;  ///< the same whoever shows the camera, across restarts and nodes' numbers; unique in a list
  std::string label;     ///< for people
  std::string node;      ///< "/dev/videoN", empty for cameras that have none
  bool direct = false;   ///< the node can be opened by us
  CameraKind kind = CameraKind::color;
  CameraLocation location = CameraLocation::unknown;
  ObjectPtr<GstDevice> device;          ///< PipeWire's or GStreamer's view of it; with a direct node a second way to it
  std::vector<CameraMode> modes;        ///< of the node if that is direct, else of the device; largest first
  std::vector<CameraMode> other_modes;  ///< of the device where the node is direct
  CameraTrouble trouble = CameraTrouble::none;
  std::string why;                  ///< what explain() says of the trouble; empty: usable
  std::vector<std::string> former;  ///< other spellings of the identity that may be remembered

  bool usable() const { return trouble == CameraTrouble::none; }
};

/// Cameras that are plugged in now, usable or not, each once, in the order of preference: by kind, then by identity.
/// Asks the kernel and PipeWire; nothing is streamed. Any thread.
/// @param limit     waits that long for devices and servers that do not answer; a node that has not answered by then
///                  is listed with that as its trouble
/// @param answered  receives whether PipeWire has answered; may be null
std::vector<FoundCamera> find_cameras(std::chrono::milliseconds limit = std::chrono::seconds(3),
                                      bool* answered = nullptr);

struct V4l2Answers;
struct DeviceView;
/// The list made of what the nodes and the device providers say. Values in, values out.
std::vector<FoundCamera> merge_cameras(const std::vector<V4l2Answers>& nodes, const std::vector<DeviceView>& views,
                                       const Decoders& decoders);

/// Whether a remembered identity is this camera's: also one that was spelled otherwise, since it depends on what else
/// is plugged in.
bool is_called(const FoundCamera& camera, const std::string& remembered);

/// Which cameras are rear and front, as indices into the list; -1: none.
struct CameraRoles {
  int rear = -1;
  int front = -1;
};

/// Keeps remembered cameras in their role and gives free roles to other usable ones: first to those that look that way,
/// then in order, rear before front. With one camera both units open it. An infrared camera has a role only where there
/// is no other.
CameraRoles assign_roles(const std::vector<FoundCamera>& cameras, const std::string& remembered_rear,
                         const std::string& remembered_front);

/// Finds a camera by label or identity, or by a part of one that no other camera has; letter case does not matter.
/// @return its index, or -1 with one line in `complaint` that lists what there is; `error` is EINVAL where the name
/// fits
///         several cameras, ENODEV where it fits none
int find_by_name(const std::vector<FoundCamera>& cameras, const std::string& name, std::string* complaint, int* error);

}  // namespace handset

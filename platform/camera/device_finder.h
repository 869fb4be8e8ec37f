#pragma once

#include <string>
#include <vector>

#include "platform/camera/camera_mode.h"
#include "platform/camera/camera_trouble.h"
#include "platform/camera/gst_ptr.h"

namespace handset {

/// In order of preference.
enum class CameraKind {
  color,
  simulated,  ///< a test driver's
  infrared,   ///< for face recognition, or monochrome only
  loopback,   ///< pictures from another program
};

/// Where a camera faces, according to its name or firmware.
enum class CameraLocation { unknown, front, rear };

struct FoundCamera {
  std::string identity;  ///< independent of who shows the camera, of restarts and node numbers; unique in a list
  std::string label;     ///< human-readable
  std::string node;      ///< "/dev/videoN"; empty if there is none
  bool direct = false;   ///< we can open the node
  CameraKind kind = CameraKind::color;
  CameraLocation location = CameraLocation::unknown;
  ObjectPtr<GstDevice> device;          ///< PipeWire's or GStreamer's view of it; a second way if the node is direct
  std::vector<CameraMode> modes;        ///< of the node if it is direct, else of the device; largest first
  std::vector<CameraMode> other_modes;  ///< of the device if the node is direct
  CameraTrouble trouble = CameraTrouble::none;
  std::string why;                  ///< explain() for the trouble; empty if usable
  std::vector<std::string> former;  ///< other spellings of the identity that may be remembered

  bool usable() const { return trouble == CameraTrouble::none; }
};

/// Cameras plugged in now, usable or not, each once, in order of preference: by kind, then by identity. Queries the
/// kernel and PipeWire; does not stream. Any thread.
/// @param limit how long to wait for unresponsive devices and servers; a node that has not answered by then is listed
/// with that as its trouble
/// @param answered  receives whether PipeWire has answered; may be null
std::vector<FoundCamera> find_cameras(std::chrono::milliseconds limit = std::chrono::seconds(3),
                                      bool* answered = nullptr);

struct V4l2Answers;
struct DeviceView;
/// Builds the list from what the nodes and the device providers report. Values in, values out.
std::vector<FoundCamera> merge_cameras(const std::vector<V4l2Answers>& nodes, const std::vector<DeviceView>& views,
                                       const Decoders& decoders);

/// Whether a remembered identity is this camera's, in any spelling, since it depends on what else is plugged in.
bool is_called(const FoundCamera& camera, const std::string& remembered);

/// Which cameras are rear and front, as indices into the list; -1 if none.
struct CameraRoles {
  int rear = -1;
  int front = -1;
};

/// Keeps remembered cameras in their role and fills free roles with other usable ones: first those that face that way,
/// then in order, rear before front. With a single camera both units open it. An infrared camera gets a role only if
/// there is no other.
CameraRoles assign_roles(const std::vector<FoundCamera>& cameras, const std::string& remembered_rear,
                         const std::string& remembered_front);

/// Finds a camera by label or identity, or by an unambiguous part of one; case-insensitive.
/// @return its index, or -1 with one line in `complaint` that lists what there is; `error` is then EINVAL if the name
/// fits several cameras, ENODEV if it fits none
int find_by_name(const std::vector<FoundCamera>& cameras, const std::string& name, std::string* complaint, int* error);

}  // namespace handset

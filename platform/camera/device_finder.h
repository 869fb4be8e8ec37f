#pragma once

#include <string>
#include <vector>

#include "platform/camera/camera.h"
#include "platform/camera/gst_ptr.h"

namespace handset {

/// A size that a camera delivers, and how.
struct CameraMode {
  camera_res_t size;
  double raw_rate = 0;   ///< frames per second as raw video, 0: not offered
  double jpeg_rate = 0;  ///< frames per second as MJPEG, 0: not offered

  double rate() const { return raw_rate > jpeg_rate ? raw_rate : jpeg_rate; }
  /// MJPEG where raw video of this size is slow.
  bool use_jpeg() const { return jpeg_rate > 0 && (raw_rate < 24 && jpeg_rate > raw_rate); }
};

struct FoundCamera {
  std::string identity;  ///< stays the same across restarts and ports' numbers
  std::string label;     ///< for people
  ObjectPtr<GstDevice> device;
  std::vector<CameraMode> modes;  ///< largest first, each at 10 frames per second or more
  std::string node;               ///< "/dev/videoN"; empty where it has none
};

/// Cameras that V4L2 and PipeWire offer now, in the order of their identities; one that both offer is
/// listed once. Takes up to a second. Any thread.
std::vector<FoundCamera> find_cameras();

/// Modes in a device's caps. Sizes that the caps give as ranges are offered at the usual sizes inside.
std::vector<CameraMode> camera_modes(const GstCaps* caps);

/// Which cameras are rear and front, as indices into `identities`; -1: none.
struct CameraRoles {
  int rear = -1;
  int front = -1;
};

/// Keeps remembered cameras in their role and gives free roles to others in order: the first is rear, the
/// second front. With one camera both units open it.
CameraRoles assign_roles(const std::vector<std::string>& identities, const std::string& remembered_rear,
                         const std::string& remembered_front);

}  // namespace handset

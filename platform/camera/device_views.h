#pragma once

// GStreamer's view of the cameras: PipeWire's, as a rule, which also shows those that have no video node or none that
// this process may open.

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "platform/camera/camera_mode.h"
#include "platform/camera/device_finder.h"
#include "platform/camera/gst_ptr.h"

namespace handset {

/// What a device provider says of a camera.
struct DeviceView {
  ObjectPtr<GstDevice> device;
  std::string label;
  std::string node;       ///< "/dev/videoN" behind it, or empty
  std::string usb_id;     ///< "vvvv:pppp", or empty
  std::string serial;     ///< or empty
  std::string permanent;  ///< bus position or the provider's own name for it, or empty
  std::string former;     ///< how its identity was spelled once
  CameraLocation location = CameraLocation::unknown;
  std::vector<CameraMode> modes;
  std::string refused;  ///< formats that cannot be shown
};

/// Reads a provider's properties. Values in, values out: everything but `device` and the modes.
DeviceView read_view(const std::string& label, const GstStructure* properties);

/// What the providers show. The first call starts them, on a thread of their own: a sound and video server that does
/// not answer holds up nobody for longer than `limit`. Any thread.
/// @param answered  receives whether they have answered
std::vector<DeviceView> device_views(std::chrono::milliseconds limit, bool* answered);

/// Sets who is called when a device has come, changed or gone, on that thread. Any thread.
void set_device_news(std::function<void()> callback);

}  // namespace handset

#pragma once

#include <string>

#include "platform/camera/camera_config.h"
#include "platform/camera/source.h"

namespace handset {

/// Finds the camera that a unit films with: the one of that name or, for an empty name, the one in the unit's role,
/// skipping cameras that failed recently or are in use. Without any camera the built-in scene stands in. On failure
/// sets `trouble` and `why` of the source and prints one line saying the same on stderr. Waits up to three seconds for
/// unresponsive devices and servers. Any thread.
/// @return 0, or an error as resolve_source() returns
///
/// Without wait_for_picture this never blocks: it queries no node, and fails with CameraTrouble::searching while the
/// camera search is still running.
int resolve_camera(const CameraServiceConfig& config, camera_unit_t unit, const std::string& name, Source* source);

/// The camera remembered in a unit's role but not plugged in now; empty if none. Any thread.
std::string absent_owner(const CameraServiceConfig& config, camera_unit_t unit);

/// Identity of the camera that resolve_camera() would find now, as far as is known without querying; empty if none.
/// Logs and remembers nothing. Any thread.
std::string camera_candidate(const CameraServiceConfig& config, camera_unit_t unit);

}  // namespace handset

#pragma once

#include <string>

#include "platform/camera/camera_config.h"
#include "platform/camera/source.h"

namespace handset {

/// Finds the camera that a unit films with: the one of that name, or for an empty name the one that has the unit's
/// role; cameras that failed lately or are in use are passed over then. Without any camera the built-in scene stands
/// in. After a failure `trouble` and `why` of the source are set, and one line on the error stream says the same. Waits
/// up to three seconds for devices and servers that do not answer. Any thread.
/// @return 0, or as resolve_source() says
///
/// Without wait_for_picture this never blocks: it asks no node anything, and while the
/// cameras are still being looked for it fails with CameraTrouble::searching.
int resolve_camera(const CameraServiceConfig& config, camera_unit_t unit, const std::string& name, Source* source);

/// The camera that is remembered in a unit's role and is not plugged in now; empty for none. Any thread.
std::string absent_owner(const CameraServiceConfig& config, camera_unit_t unit);

/// The identity of the camera that resolve_camera() would find now, as far as is known without asking; empty for none.
/// Says nothing and remembers nothing. Any thread.
std::string camera_candidate(const CameraServiceConfig& config, camera_unit_t unit);

}  // namespace handset

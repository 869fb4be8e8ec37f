#pragma once

#include <string>

#include "platform/camera/camera_trouble.h"

namespace handset {

/// Whether a device node exists, whatever its permissions.
bool node_exists(const std::string& node);

/// Why a camera may fail to start, asked of the kernel without streaming.
/// @param node "/dev/videoN"; empty if there is no node and nothing is known
/// @param ask also check whether the device is in use; pass false while this process streams from it
/// @param detail receives more, such as the name of the program using it or what the user can do; may be empty
CameraTrouble trouble_of_node(const std::string& node, bool ask, std::string* detail);

/// Advice for a user who may not open a node: the group to join, or the setting to look for inside a sandbox.
std::string access_advice(const std::string& node);

}  // namespace handset

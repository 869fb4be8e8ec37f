#pragma once

#include <string>

#include "platform/camera/camera_trouble.h"

namespace handset {

/// Whether a device node is there, whatever its rights.
bool node_exists(const std::string& node);

/// Why a camera that does not start may not do so, asked of the kernel without streaming.
/// @param node    "/dev/videoN"; empty: not a node, nothing is known
/// @param ask     also check whether the device is in use; false while this process streams from it
/// @param detail  receives more, such as the name of the program that films with it or what the user can do;
///                may be empty
CameraTrouble trouble_of_node(const std::string& node, bool ask, std::string* detail);

/// What a user can do who may not open a node: the group to join, or the setting to look for inside a sandbox.
std::string access_advice(const std::string& node);

}  // namespace handset

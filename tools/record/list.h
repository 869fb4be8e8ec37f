#pragma once

#include <string>
#include <vector>

#include "platform/camera/device_finder.h"
#include "platform/camera/microphone_finder.h"

namespace record {

/// What --list says of cameras: name, identity, kind, and sizes with rate and format, or why it cannot be used.
std::string describe_cameras(const std::vector<handset::FoundCamera>& cameras);

/// What --list says of microphones: name, identity, and which one is the default.
std::string describe_microphones(const std::vector<handset::FoundMicrophone>& microphones);

/// Prints what there is to record from. Takes up to a few seconds where a device or a server does not answer.
/// @return exit status
int print_list();

}  // namespace record

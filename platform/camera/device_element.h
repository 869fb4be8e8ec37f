#pragma once

#include <string>

#include "platform/camera/device_finder.h"
#include "platform/camera/gst_ptr.h"

namespace handset {

/// Bin around a parsed description. @param open_ends  the bin gets the pads that are not linked in it
/// @return empty with `error` filled when it cannot be built
ElementPtr parse_bin(const std::string& description, std::string* error, bool open_ends = true);

/// Caps that ask a camera for a way of filming a size: format, size and rate. A rate out of a range may be missed by
/// 5 percent, for drivers that know steps only.
std::string caps_of(const ChosenWay& choice, camera_res_t size);

/// A bin that films with a camera: size and rate are what its modes have that comes nearest to what is wanted.
/// @param way  0: the node where that can be opened, else the device; 1: the device beside a node
/// @return empty with `error` filled when it cannot be built
ElementPtr make_device_element(const FoundCamera& camera, int way, camera_res_t size, int frame_rate,
                               std::string* error);

}  // namespace handset

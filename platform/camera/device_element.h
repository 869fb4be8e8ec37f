#pragma once

#include <string>

#include "platform/camera/device_finder.h"
#include "platform/camera/gst_ptr.h"

namespace handset {

/// Bin around a parsed description. @param open_ends whether unlinked pads become the bin's
/// @return empty, with `error` set, if it cannot be built
ElementPtr parse_bin(const std::string& description, std::string* error, bool open_ends = true);

/// Caps that request a way of filming a size: format, size and rate. A rate from a range may be off by 5 percent, for
/// drivers that only know steps.
std::string caps_of(const ChosenWay& choice, camera_res_t size);

/// A bin that films with a camera, at the size and rate of its modes nearest to what is wanted.
/// @param way 0: the node if it can be opened, else the device; 1: the device beside a node
/// @return empty, with `error` set, if it cannot be built
ElementPtr make_device_element(const FoundCamera& camera, int way, camera_res_t size, int frame_rate,
                               std::string* error);

}  // namespace handset

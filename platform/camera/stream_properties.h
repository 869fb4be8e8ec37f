#pragma once

#include <cstdarg>
#include <string>

namespace handset {

/// Settings of one stream.
struct StreamProperties {
  int width = 0;
  int height = 0;
  int frame_rate = 30;
  int rotation = 0;
  int stabilization = 0;
  std::string window_group;  ///< viewfinder only
  std::string window_id;     ///< viewfinder only
};

/// What a stream supports.
struct StreamAbilities {
  bool window;      ///< it is the viewfinder
  bool stabilizes;  ///< the camera has stabilization
};

// Property/value pairs as in camera.h, with the first property passed separately.

/// Sets all pairs, or none. @return 0, EINVAL or ENOTSUP
int write_properties(StreamProperties* properties, const StreamAbilities& abilities, int property,
                     std::va_list* values);
/// @return 0 or EINVAL
int read_properties(const StreamProperties& properties, int property, std::va_list* values);

/// Whether a running stream cannot take a change.
bool reshapes(const StreamProperties& from, const StreamProperties& to);

}  // namespace handset

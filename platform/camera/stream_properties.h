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

/// What a stream may be asked for.
struct StreamAbilities {
  bool window;      ///< it is the viewfinder's
  bool stabilizes;  ///< the camera has stabilization
};

// Pairs of property and value as in camera.h, the first property by itself.

/// Takes all pairs over, or none. @return 0, EINVAL or ENOTSUP
int write_properties(StreamProperties* properties, const StreamAbilities& abilities, int property,
                     std::va_list* values);
/// @return 0 or EINVAL
int read_properties(const StreamProperties& properties, int property, std::va_list* values);

/// Whether a change is one that a running stream cannot take.
bool reshapes(const StreamProperties& from, const StreamProperties& to);

}  // namespace handset

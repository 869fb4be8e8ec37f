#include "platform/camera/stream_properties.h"

#include <cerrno>

#include "platform/camera/camera.h"

namespace handset {
namespace {

/// Writes one value into a stream's settings. @return 0, EINVAL or ENOTSUP
int write_number(StreamProperties* properties, int property, int value, bool stabilizes) {
  switch (property) {
    case CAMERA_IMGPROP_WIDTH:
    case CAMERA_IMGPROP_HEIGHT:
      if (value < 2 || value % 2 != 0) return EINVAL;
      (property == CAMERA_IMGPROP_WIDTH ? properties->width : properties->height) = value;
      return 0;
    case CAMERA_IMGPROP_FRAMERATE:
      if (value < 1 || value > 120) return EINVAL;
      properties->frame_rate = value;
      return 0;
    case CAMERA_IMGPROP_ROTATION:
      if (value != 0 && value != 90 && value != 180 && value != 270) return EINVAL;
      properties->rotation = value;
      return 0;
    case CAMERA_IMGPROP_STABILIZATION:
      if (!stabilizes) return ENOTSUP;
      if (value != 0 && value != 1) return EINVAL;
      properties->stabilization = value;
      return 0;
    default:
      return EINVAL;
  }
}

/// @return null if the property is not a number of a stream
const int* number(const StreamProperties& properties, int property) {
  static constexpr int format = CAMERA_FRAMETYPE_NV12;
  switch (property) {
    case CAMERA_IMGPROP_FORMAT:
      return &format;
    case CAMERA_IMGPROP_WIDTH:
      return &properties.width;
    case CAMERA_IMGPROP_HEIGHT:
      return &properties.height;
    case CAMERA_IMGPROP_FRAMERATE:
      return &properties.frame_rate;
    case CAMERA_IMGPROP_ROTATION:
      return &properties.rotation;
    case CAMERA_IMGPROP_STABILIZATION:
      return &properties.stabilization;
    default:
      return nullptr;
  }
}

}  // namespace

int write_properties(StreamProperties* properties, const StreamAbilities& abilities, int property,
                     std::va_list* values) {
  StreamProperties wanted = *properties;
  for (; property != CAMERA_IMGPROP_END; property = va_arg(*values, int)) {
    if (property == CAMERA_IMGPROP_WIN_GROUPID || property == CAMERA_IMGPROP_WIN_ID) {
      const char* text = va_arg(*values, const char*);
      if (!abilities.window || text == nullptr) return EINVAL;
      (property == CAMERA_IMGPROP_WIN_ID ? wanted.window_id : wanted.window_group) = text;
      continue;
    }
    if (const int error = write_number(&wanted, property, va_arg(*values, int), abilities.stabilizes)) return error;
  }
  *properties = wanted;
  return 0;
}

int read_properties(const StreamProperties& properties, int property, std::va_list* values) {
  for (; property != CAMERA_IMGPROP_END; property = va_arg(*values, int)) {
    int* value = va_arg(*values, int*);
    const int* found = number(properties, property);
    if (value == nullptr || found == nullptr) return EINVAL;
    *value = *found;
  }
  return 0;
}

bool reshapes(const StreamProperties& from, const StreamProperties& to) {
  return to.width != from.width || to.height != from.height || to.frame_rate != from.frame_rate ||
         to.window_group != from.window_group || to.window_id != from.window_id;
}

}  // namespace handset

#include "platform/device/info.h"

#include "platform/device/profile.h"

namespace bb::device {

QSize DisplayInfo::pixelSize() const {
  return {device_profile().display_width, device_profile().display_height};
}

QString HardwareInfo::pin() const {
  return QString::fromStdString(device_profile().pin);
}

bool HardwareInfo::isPhysicalKeyboardDevice() const {
  return device_profile().keyboard;
}

}  // namespace bb::device

namespace bb::platform {

QString PlatformInfo::osVersion() const {
  return QString::fromStdString(device_profile().os_version);
}

}  // namespace bb::platform

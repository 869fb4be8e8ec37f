#pragma once

// What the application may know about its handset, from the device profile.

#include <QSize>
#include <QString>

namespace bb::device {

class DisplayInfo {
 public:
  /// Of the display in its natural direction; pixels.
  QSize pixelSize() const;
};

class HardwareInfo {
 public:
  /// Hexadecimal, prefixed with 0x.
  QString pin() const;
  bool isPhysicalKeyboardDevice() const;
};

}  // namespace bb::device

namespace bb::platform {

class PlatformInfo {
 public:
  QString osVersion() const;
};

}  // namespace bb::platform

#pragma once

// The device profile: the handset that this computer pretends to be.
//
// Read from `morvane/device.ini` in the XDG config directory; every key is optional. Only the
// handset layer reads it. README.md beside this file documents the keys for users.

#include <string>

struct DeviceProfile {
  // [display]
  int display_width = 768;    ///< pixels, 240..4096
  int display_height = 1280;  ///< pixels, 240..4096
  // [camera]: what feeds each unit, as camera/source.h reads it
  std::string front = "auto";
  std::string rear = "auto";
  std::string desktop = "auto";
  std::string microphone = "default";  ///< default, none, tone, gst:DESCRIPTION, or a microphone's name
  bool video_light = true;             ///< the rear camera has a light
  bool stabilization = true;
  // [device]
  std::string pin = "0x2B6F01A4";  ///< hardware PIN, hexadecimal with 0x
  bool keyboard = false;           ///< physical keyboard
  std::string os_version = "10.3.3.3216";
  // [bbm]
  int bbm_state = 0;            ///< final registration state, 0 (allowed) to 13
  bool bbm_registered = false;  ///< the application is already registered: the state holds from the start
};

/// Reads a profile. A missing file gives the defaults. Each unknown group, unknown key or bad value gives one line on
/// stderr and the default; an unreadable or malformed file gives one line and all defaults.
/// @param quiet print nothing: the same file has already been read and reported
DeviceProfile load_device_profile(const std::string& path, bool quiet = false);

/// `morvane/device.ini` in the XDG config directory. Any thread.
std::string device_profile_path();

/// The profile of this process, read once from the XDG config directory. Any thread.
const DeviceProfile& device_profile();

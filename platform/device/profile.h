#pragma once

// The device profile: what handset this computer pretends to be.
//
// Read from `morvane/device.ini` in the XDG config directory; every key is optional. Only the
// handset layer reads it. README.md beside this file documents the keys for users.

#include <string>

struct DeviceProfile {
  // [display]
  int display_width = 768;    ///< pixels, 240..4096
  int display_height = 1280;  ///< pixels, 240..4096
  // [camera]: what stands behind each unit, as camera/source.h reads it
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
  int bbm_state = 0;            ///< registration state that the platform ends in, 0 (allowed) to 13
  bool bbm_registered = false;  ///< the application has been registered before: the state holds from the start
};

/// Reads a profile. A missing file gives the defaults. An unknown group or key and a bad value give
/// one line each on the error stream and the default; a file that cannot be read or parsed gives one
/// line and all defaults.
/// @param quiet  no lines: somebody has read the same file and said so
DeviceProfile load_device_profile(const std::string& path, bool quiet = false);

/// `morvane/device.ini` in the XDG config directory. Any thread.
std::string device_profile_path();

/// The profile of this process: read once, from the XDG config directory. Any thread.
const DeviceProfile& device_profile();

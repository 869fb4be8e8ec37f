#pragma once

// What a webcam tells the host about itself: USB Device Class Definition for Video Devices 1.1, one camera terminal,
// one processing unit, one streaming interface with a bulk endpoint.

#include <cstdint>
#include <string>
#include <vector>

#include "tests/webcam/picture.h"

namespace webcam {

/// A frame size of one format and its rates, the one that the camera prefers first.
struct Mode {
  Format format;
  int width;
  int height;
  std::vector<double> rates;  ///< frames per second
};

/// A control of the camera terminal or the processing unit.
struct Control {
  const char* name;
  std::uint8_t entity;    ///< camera_terminal or processing_unit
  std::uint8_t selector;  ///< sections A.9.4 and A.9.5
  int bit;                ///< in the entity's bmControls
  int size;               ///< bytes
  int minimum, maximum, step, preset;
  int value;
};

inline constexpr std::uint8_t camera_terminal = 1;
inline constexpr std::uint8_t processing_unit = 2;

inline constexpr std::uint8_t control_interface = 0;
inline constexpr std::uint8_t streaming_interface = 1;
inline constexpr std::uint8_t bulk_endpoint = 0x81;
inline constexpr std::uint32_t payload_bytes = 16384;  ///< most that one transfer of the kernel's driver takes

/// The controls that a webcam can be given, with usual ranges.
const std::vector<Control>& known_controls();

struct Identity {
  std::string name = "Test Webcam";
  std::string serial;  ///< empty: none
};

/// One format descriptor and the modes below it, in the order in which they were asked for.
struct FormatGroup {
  Format format;
  std::vector<Mode> modes;
};
std::vector<FormatGroup> group_by_format(const std::vector<Mode>& modes);

/// Units of 100 ns, as the class counts.
std::uint32_t frame_interval(double rate);

Bytes device_descriptor(bool has_serial);
Bytes configuration_descriptor(const std::vector<FormatGroup>& formats, const std::vector<Control>& controls);
/// @param index  0 languages, 1 maker, 2 name, 3 serial number
Bytes string_descriptor(int index, const Identity& identity);

}  // namespace webcam

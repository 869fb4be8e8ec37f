#pragma once

#include <cstdint>
#include <string>

namespace record {

/// What morvane-record was asked to do.
struct Options {
  enum class Action { record, help, version };
  Action action = Action::record;
  std::string source = "auto";
  unsigned width = 0;  ///< pixels; 0: the source's own choice
  unsigned height = 0;
  std::int32_t filter = -1;  ///< effect id, -1..11
  int u = 128;               ///< of effect 0, 0..255
  int v = 128;
  float tolerance = 0.5F;  ///< of effects 8 to 11, 0 up to but not 1
  double seconds = 0;      ///< 0: until it is stopped, or the clip ends
  std::string microphone;  ///< default, none or tone; empty: as the device profile says
  bool unpaced = false;
  std::string output;
};

/// Reads a command line.
/// @return empty, or one line that says what is wrong
std::string parse_options(int argc, char** argv, Options* options);

/// The text of --help.
const char* help_text();

}  // namespace record

#pragma once

#include <cstdint>
#include <string>

namespace record {

/// What morvane-record was asked to do.
struct Options {
  enum class Action { record, list, help, version };
  Action action = Action::record;
  std::string source = "auto";
  unsigned width = 0;  ///< pixels; 0: the source's own choice
  unsigned height = 0;
  std::int32_t filter = -1;  ///< effect id, -1..11
  int u = 128;               ///< of effect 0, 0..255
  int v = 128;
  float tolerance = 0.5F;  ///< of effects 8 to 11, 0 up to but not 1
  double seconds = 0;      ///< 0: until it is stopped, or the clip ends
  std::string microphone;  ///< default, none, tone, gst:… or a name; empty: as the device profile says
  bool unpaced = false;
  std::string texture;      ///< name of a built-in texture, or a picture file; empty: none
  int position = 0;         ///< of a picture, 0..6
  bool fill_frame = false;  ///< stretch a picture to the frame; a built-in texture always is
  bool own_colors = false;  ///< the overlay keeps its colours
  int stamp = 0;            ///< format, 1..8; 0: none
  int stamp_color = 5;      ///< 0..5
  int stamp_position = 4;   ///< 0..4
  std::string output;
};

/// Reads a command line.
/// @return empty, or one line that says what is wrong
std::string parse_options(int argc, char** argv, Options* options);

/// The text of --help.
const char* help_text();

}  // namespace record

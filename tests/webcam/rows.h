#pragma once

// The table of what is filmed in the virtual machines, and what must come of it.

#include <string>
#include <vector>

namespace webcam {

/// What a film shows.
enum class Look {
  none,   ///< there is no film
  chart,  ///< the programmable webcam's chart in color, its frames numbered
  grey,   ///< the same from a camera without color
  red,    ///< nothing but red
  scene,  ///< the built-in scene, its frames numbered
};

/// In the patterns, `.` stands for a line's end as well.
struct Row {
  std::string name;
  std::string script;  ///< in the words of row.sh
  Look look = Look::none;
  int port = 0;  ///< whose chart is to be seen
  int width = 320;
  int height = 240;
  double rate = 30;      ///< of the pictures, frames per second; within 5 %
  int broken_every = 0;  ///< the camera damages each of these: their numbers may be missing
  double pause = 0;      ///< seconds without a picture, once; within half a second
  int status = 0;
  std::string says{};        ///< pattern that the error stream must match; empty: it says nothing
  std::string prints{};      ///< pattern that the output must match
  std::string journal{};     ///< pattern that the first webcam's journal must match
  double most_seconds = 60;  ///< from the program's start to its end
  bool sound = false;        ///< the film holds the tone
  bool pipewire = false;     ///< under PipeWire
};

const std::vector<Row>& rows();

/// Rows that a change has to pass within minutes; the others are for when there is time.
bool is_quick(const Row& row);

}  // namespace webcam

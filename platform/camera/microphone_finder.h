#pragma once

#include <string>
#include <vector>

#include "platform/camera/gst_ptr.h"

namespace handset {

/// A sound source on this computer.
struct FoundMicrophone {
  std::string identity;     ///< the name in the sound server or ALSA; stable across restarts
  std::string label;        ///< human-readable
  bool is_default = false;  ///< the sound server's default source
  bool is_monitor = false;  ///< records what an output plays
};

/// Sources that the sound server offers now, or ALSA if there is no server: the default first, monitors of outputs
/// last. An unresponsive server is given up after two seconds, at the cost of an abandoned thread.
/// @param answered  receives whether the list is complete
std::vector<FoundMicrophone> find_microphones(bool* answered = nullptr);

/// The source that a name refers to.
struct MicrophoneChoice {
  int index = -1;         ///< -1: unknown or ambiguous
  std::string complaint;  ///< one line that says so and lists the sources
};

/// Looks up a label or an identity, or part of one, case-insensitively. A whole name wins over a part, a microphone
/// over an output's monitor.
MicrophoneChoice choose_microphone(const std::vector<FoundMicrophone>& found, const std::string& name);

/// Whether a microphone setting (see Microphone) can be recorded, as far as is known now; takes up to two seconds for a
/// name. An unresponsive server is not an error: it may recover.
/// @return empty, or one line describing the problem
std::string check_microphone(const std::string& setting);

/// Elements with a raw-audio source pad for a microphone setting, in the order to try them. Waits for the sound server
/// as long as it takes. @param why receives a line if there are none
std::vector<ElementPtr> make_microphone_elements(const std::string& setting, std::string* why);

}  // namespace handset

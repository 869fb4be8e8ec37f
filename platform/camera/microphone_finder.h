#pragma once

#include <string>
#include <vector>

#include "platform/camera/gst_ptr.h"

namespace handset {

/// A source of sound that this computer offers.
struct FoundMicrophone {
  std::string identity;     ///< what the sound server or ALSA calls it; stays the same across restarts
  std::string label;        ///< for people
  bool is_default = false;  ///< the sound server's choice for programs that ask for none by name
  bool is_monitor = false;  ///< records what an output plays
};

/// Sources that the sound server offers now, or ALSA where there is no server: the default one first, monitors of
/// outputs last. A server that does not answer is given up after two seconds and costs a thread that is left behind.
/// @param answered  receives whether the list is complete
std::vector<FoundMicrophone> find_microphones(bool* answered = nullptr);

/// What a name stands for among what there is.
struct MicrophoneChoice {
  int index = -1;         ///< -1: unknown or ambiguous
  std::string complaint;  ///< one line that says so, and lists what there is
};

/// Looks for a label or an identity, or a part of one, whatever its case. The whole name goes before a part, a
/// microphone before an output's monitor.
MicrophoneChoice choose_microphone(const std::vector<FoundMicrophone>& found, const std::string& name);

/// Whether a microphone setting (see Microphone) can be recorded as far as is known now; takes up to two seconds for a
/// name. A server that does not answer is no reason for a complaint: it may come to itself.
/// @return empty, or one line that says what is wrong
std::string check_microphone(const std::string& setting);

/// Elements with a raw-audio source pad for a microphone setting, in the order in which they are worth trying. Waits
/// for the sound server as long as that takes. @param why  receives a line when there is none
std::vector<ElementPtr> make_microphone_elements(const std::string& setting, std::string* why);

}  // namespace handset

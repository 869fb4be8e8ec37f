#pragma once

// Where sound goes. Any thread.

#include <chrono>
#include <string>

namespace handset {

/// GStreamer's description of the sink to play on; empty where there is no sound device. The answer is remembered for
/// ten seconds. A sound server that does not answer within `patience` counts as none.
std::string sound_output(std::chrono::milliseconds patience = std::chrono::milliseconds(300));

/// The sink failed while it played: there is none for the next ten seconds.
void lose_sound_output();

/// Instead of looking for a device: a sink's description, or "none". "auto" looks again.
void set_sound_output(const std::string& output);

}  // namespace handset

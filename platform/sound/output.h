#pragma once

// Where sound goes. Any thread.

#include <chrono>
#include <string>

namespace handset {

/// GStreamer's description of the sink to play on; empty if there is no sound device. The result is cached for ten
/// seconds. A sound server that does not answer within `patience` counts as none.
std::string sound_output(std::chrono::milliseconds patience = std::chrono::milliseconds(300));

/// Reports that the sink failed while playing: there is none for the next ten seconds.
void lose_sound_output();

/// Overrides the device search: a sink's description, or "none". "auto" searches again.
void set_sound_output(const std::string& output);

}  // namespace handset

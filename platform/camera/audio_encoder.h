#pragma once

#include <cstdint>
#include <string>

namespace handset {

/// Description from raw sound to parsed AAC, whose parser is called "aac"; empty when no AAC encoder is installed.
std::string audio_encoder_description();

/// How much later than it was fed a decoder gives sound that this encoder made, nanoseconds: the encoder begins with
/// samples of its own. Measured once, which takes some 50 ms; 4 s at most. Any thread.
std::int64_t audio_encoder_delay();

}  // namespace handset

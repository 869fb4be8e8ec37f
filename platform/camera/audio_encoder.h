#pragma once

#include <cstdint>
#include <string>

namespace handset {

/// Description from raw sound to parsed AAC, whose parser is called "aac"; empty when no AAC encoder is installed.
std::string audio_encoder_description();

/// The encoder's delay, nanoseconds: how much later than its input sound comes out of a decoder. Measured once, which
/// takes about 50 ms, at most 4 s. Any thread.
std::int64_t audio_encoder_delay();

}  // namespace handset

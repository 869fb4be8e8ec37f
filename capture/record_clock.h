#pragma once

// What the record clock shows. Whether the stamp is drawn anew at its ticks: stamp_ticks in engine/stamp.h.

#include <string>

inline constexpr int record_clock_period_ms = 1000;

/// "MM:SS", from one hour on "HH:MM:SS".
/// @param seconds  since the recording's start, not negative
std::string record_clock_text(int seconds);

/// The dot blinks: another image for odd seconds than for even ones.
const char* record_dot_image(int seconds);

#pragma once

// The system sounds, by name: "event_recording_start" and "event_recording_stop". They are WAV files in the package.
// Only one plays at a time: a new one stops the previous one. Any thread.

/// Plays a sound and returns when it has finished, after at most 1500 ms, or at once if there is no sound device.
/// @return 0, ENOENT (no such sound), ENODEV (no device), ECANCELED (another sound started), ETIMEDOUT
int soundplayer_play_sound_blocking(const char* name);

/// Starts a sound and returns. Never blocks; later failures are not reported.
/// @return 0 or ENOENT
int soundplayer_play_sound(const char* name);

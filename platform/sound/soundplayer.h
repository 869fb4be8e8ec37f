#pragma once

// The system sounds, by name: "event_recording_start" and "event_recording_stop". They are WAV files of the package.
// One is heard at a time: a new one ends the one before. Any thread.

/// Plays a sound and returns when it has finished, after 1500 ms at the latest, and at once where there is no sound
/// device.
/// @return 0, ENOENT (no such sound), ENODEV (nothing to play it on), ECANCELED (another one came), ETIMEDOUT
int soundplayer_play_sound_blocking(const char* name);

/// Starts a sound and returns. Never blocks; what fails later is not reported.
/// @return 0 or ENOENT
int soundplayer_play_sound(const char* name);

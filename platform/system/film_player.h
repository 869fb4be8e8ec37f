#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/camera/viewfinder_slot.h"

namespace handset {

/// Plays a film: its pictures go to a viewfinder slot, in time and as the camera's frames are (NV12, full-range
/// BT.601), its sound to the sound device where there is one. Everything that may wait happens on a thread of the
/// player's own.
class FilmPlayer {
 public:
  struct Status {
    std::int64_t position = 0;  ///< nanoseconds
    std::int64_t duration = 0;  ///< nanoseconds; 0 while it is not known
    bool ended = false;         ///< played to its end
    std::string failure;        ///< why it cannot be played, or no further; empty while it can
  };

  /// Starts to play.
  FilmPlayer(const std::string& path, std::shared_ptr<ViewfinderSlot> slot);
  FilmPlayer(const FilmPlayer&) = delete;
  FilmPlayer& operator=(const FilmPlayer&) = delete;
  /// Clears the slot; nothing is posted to it afterwards. Waits for the player's thread, 100 ms at the longest: what a
  /// device or decoder holds up ends later.
  ~FilmPlayer();

  Status status() const;
  void set_playing(bool playing);
  /// Goes to a time in nanoseconds, within the film. While it is on its way to one the newest of others waits.
  void seek(std::int64_t position);

 private:
  class Run;
  std::shared_ptr<Run> run_;
};

}  // namespace handset

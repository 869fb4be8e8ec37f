#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/camera/viewfinder_slot.h"

namespace handset {

/// Plays a film and the parts that its recording went on in: its pictures go to a viewfinder slot, on time and in the
/// camera's frame format (NV12, full-range BT.601), its sound to the sound device if there is one. Everything that may
/// block happens on the player's own thread.
class FilmPlayer {
 public:
  struct Status {
    std::int64_t position = 0;  ///< nanoseconds
    std::int64_t duration = 0;  ///< nanoseconds; 0 while unknown
    bool ended = false;         ///< played to its end
    std::string failure;        ///< why it cannot be played, or played further; empty if it can
  };

  /// Starts playing.
  FilmPlayer(const std::string& path, std::shared_ptr<ViewfinderSlot> slot);
  FilmPlayer(const FilmPlayer&) = delete;
  FilmPlayer& operator=(const FilmPlayer&) = delete;
  /// Clears the slot; nothing is posted to it afterwards. Waits at most 100 ms for the player's thread: whatever a
  /// device or decoder blocks ends later.
  ~FilmPlayer();

  Status status() const;
  void set_playing(bool playing);
  /// Seeks to a time in nanoseconds, within the film. During a seek only the newest further request is kept.
  void seek(std::int64_t position);

 private:
  class Run;
  std::shared_ptr<Run> run_;
};

}  // namespace handset

#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/camera/film.h"
#include "platform/camera/microphone.h"
#include "platform/camera/sound_placer.h"
#include "platform/camera/sound_watch.h"

namespace handset {

/// The sound of a recording: what the microphone delivers, placed where its times say, and silence where there is
/// nothing. The microphone is on from the first to the last moment of this. Used by one thread.
class SoundTrack {
 public:
  /// @param microphone  a setting as Microphone takes it
  explicit SoundTrack(const std::string& microphone);

  /// The next film begins. @param start  CLOCK_MONOTONIC nanoseconds of its time 0
  void begin(std::int64_t start);
  /// The film goes on in another one, sample by sample. @param full  gets its sound up to there
  /// @param start  CLOCK_MONOTONIC nanoseconds where the other one's time 0 is
  void go_on(std::shared_ptr<Film> full, std::int64_t start);
  /// Whether the film before the current one has all its sound.
  bool reached_film() const { return full_ == nullptr; }
  /// Brings what has come into the film, and silence where nothing is to be expected. To be called often.
  void feed(Film& film);
  /// Fills the track up to the picture's end, waits shortly for the sound that is still on its way, and begins to close
  /// the microphone.
  void complete(Film& film);

  /// What a viewfinder is to say: "no sound" while there is none, else nothing.
  const char* status() const;

 private:
  SoundPlacer::Push into(Film& film);
  std::int64_t length(const Film& film) const;
  void judge();
  void complain();

  Microphone microphone_;
  SoundWatch watch_;
  SoundWatch::Verdict verdict_ = SoundWatch::Verdict::open;
  bool complained_ = false;
  SoundPlacer placer_;           ///< counts from the first film's time 0
  std::int64_t start_ = 0;       ///< that time, CLOCK_MONOTONIC nanoseconds
  std::int64_t begun_ = 0;       ///< when begin() was called
  std::shared_ptr<Film> full_;   ///< film before the current one, while it lacks sound
  std::int64_t full_first_ = 0;  ///< its first sample, since start_
  std::int64_t film_first_ = 0;  ///< the current film's
  std::int64_t film_start_ = 0;  ///< its time 0, CLOCK_MONOTONIC nanoseconds
};

}  // namespace handset

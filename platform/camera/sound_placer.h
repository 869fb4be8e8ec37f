#pragma once

#include <cstdint>
#include <deque>
#include <functional>

#include "platform/camera/drift_resampler.h"
#include "platform/camera/microphone.h"
#include "platform/camera/sound_clock.h"

namespace handset {

/// Makes the sound track of a film from a microphone's blocks: each is placed where its time says, stretched where the
/// microphone's clock is not the picture's, and there is silence where there is nothing. Used by one thread.
class SoundPlacer {
 public:
  /// Takes what a film's track goes on with: audio_caps, and the number of its first sample.
  using Push = std::function<void(BufferPtr block, std::uint64_t first_sample)>;

  SoundPlacer();

  /// The next film begins. @param start  CLOCK_MONOTONIC nanoseconds of its time 0
  void begin(std::int64_t start);
  /// The film ends there: nothing is pushed beyond it. @param time  nanoseconds since its beginning
  void set_end(std::int64_t time);
  bool at_end() const { return next_ >= end_; }
  /// The sample that is pushed next.
  std::int64_t next_sample() const { return next_; }

  /// Keeps a block until its turn. Also those that come before a film begins are welcome: the microphone's clock is
  /// known better with each. Of blocks that nobody asks for, a minute is kept.
  void take(Microphone::Block block);
  bool has_waiting() const { return !waiting_.empty(); }
  /// Pushes the blocks that begin before a time of the film.
  void place_until(std::int64_t time, const Push& push);
  /// Pushes silence up to a time of the film, which takes the place of sound that comes later.
  void fill_until(std::int64_t time, const Push& push);

 private:
  struct Sound {
    BufferPtr buffer;
    SoundClock::Place place;
  };

  void place(const Sound& sound, const Push& push);
  void fill(std::int64_t sample, const Push& push);

  SoundClock clock_;
  DriftLoop drift_;
  DriftResampler resampler_;
  BufferPtr silence_;          ///< a block of it
  std::deque<Sound> waiting_;  ///< for their turn
  std::int64_t start_ = 0;
  std::int64_t next_ = 0;   ///< first sample of the current film that was not pushed yet
  std::int64_t end_ = 0;    ///< nothing is pushed from this sample on
  double landing_ = 0;      ///< where in the film the resampler puts the next sample, while following
  bool following_ = false;  ///< what was pushed last was sound
};

}  // namespace handset

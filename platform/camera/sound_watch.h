#pragma once

#include <chrono>
#include <cstdint>

namespace handset {

/// Judges from what a microphone delivers whether a recording has sound. Times are nanoseconds of CLOCK_MONOTONIC.
class SoundWatch {
 public:
  enum class Verdict {
    open,     ///< it is too early to say
    sound,    ///< there is some
    missing,  ///< nothing comes
    silent    ///< what comes is silence: the microphone is muted
  };

  /// Peaks below this are silence: -70 dBFS. A quiet room has some 40 dB SPL, unweighted; a microphone of usual
  /// sensitivity (-26 dBFS at 94 dB SPL, without gain) makes -80 dBFS of that, and noise peaks 13 dB above its
  /// effective value within seconds. A muted one gives zeros, or its converter's noise, which stays below -73 dBFS.
  static constexpr float silence = 3.16e-4F;
  static constexpr std::int64_t missing_after = 1'000'000'000;
  static constexpr std::int64_t silent_after = 3'000'000'000;

  explicit SoundWatch(std::int64_t start) : last_block_(start), last_sound_(start) {}

  /// A block came. @param peak  its largest sample, 0..1
  void take(std::int64_t now, float peak) {
    last_block_ = now;
    if (peak < silence) return;
    last_sound_ = now;
    heard_ = true;
    verdict_ = Verdict::sound;
  }

  /// Sound is needed to take a complaint back.
  Verdict judge(std::int64_t now) {
    if (now - last_block_ >= missing_after) {
      verdict_ = Verdict::missing;
    } else if (now - last_sound_ >= silent_after) {
      verdict_ = Verdict::silent;
    }
    return verdict_;
  }

  /// Whether there ever was sound.
  bool heard() const { return heard_; }
  /// How long there has been none.
  std::int64_t without_sound(std::int64_t now) const { return now - last_sound_; }

 private:
  std::int64_t last_block_;
  std::int64_t last_sound_;
  bool heard_ = false;
  Verdict verdict_ = Verdict::open;
};

}  // namespace handset

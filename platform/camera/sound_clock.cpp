#include "platform/camera/sound_clock.h"

#include <algorithm>
#include <cstdlib>

namespace handset {
namespace {

/// Differences that are no lateness: samples are missing, or are there twice.
constexpr std::int64_t certain_gap = 1'000'000'000;
/// The same where no block of an eighth of a second is nearer.
constexpr std::int64_t lasting_gap = 30'000'000;

}  // namespace

void SoundClock::SlidingLeast::reset(std::int64_t value) {
  current_ = before_ = value;
  filled_ = 0;
}

void SoundClock::SlidingLeast::take(std::int64_t value, std::int64_t samples) {
  if (filled_ >= span_) {
    before_ = current_;
    current_ = value;
    filled_ = 0;
  }
  current_ = std::min(current_, value);
  filled_ += samples;
}

SoundClock::Place SoundClock::next(std::int64_t stamp, std::int64_t samples, bool broken) {
  const bool first = samples_ < 0 || broken;
  if (first) samples_ = 0;
  const std::int64_t seconds = samples_ / rate_;
  const std::int64_t counted = seconds * 1'000'000'000 + samples_ % rate_ * 1'000'000'000 / rate_;
  const std::int64_t origin = stamp - counted;
  const std::int64_t before = origin_.least();
  bool follows = !first && std::abs(origin - before) < certain_gap;
  if (follows) {
    origin_.take(origin, samples);
    recent_.take(origin, samples);
    follows = recent_.least() - origin_.least() < lasting_gap && before - origin_.least() < lasting_gap;
  } else {
    recent_.reset(origin);
  }
  if (!follows) {
    origin_.reset(recent_.least());
    recent_.reset(origin_.least());
  }
  samples_ += samples;
  return {origin_.least() + counted, follows};
}

}  // namespace handset

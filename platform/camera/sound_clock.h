#pragma once

#include <cstdint>

namespace handset {

/// Tells when a microphone's blocks of sound began, from their time stamps, which may come late by some milliseconds,
/// and from the number of their samples, which says exactly how they follow each other, but counts time by a clock of
/// the microphone's own. Times are nanoseconds.
class SoundClock {
 public:
  struct Place {
    std::int64_t time;
    bool follows;  ///< without a gap or an overlap on the block before it
  };

  /// @param rate  samples per second
  explicit SoundClock(int rate) : rate_(rate) {}

  /// Places the next block.
  /// @param broken  the source says that this block does not follow the last one
  Place next(std::int64_t stamp, std::int64_t samples, bool broken);

 private:
  /// The smallest value of the last one to two spans.
  class SlidingLeast {
   public:
    explicit SlidingLeast(std::int64_t span) : span_(span) {}
    void reset(std::int64_t value);
    void take(std::int64_t value, std::int64_t samples);
    std::int64_t least() const { return current_ < before_ ? current_ : before_; }

   private:
    const std::int64_t span_;  ///< samples
    std::int64_t current_ = 0;
    std::int64_t before_ = 0;
    std::int64_t filled_ = 0;
  };

  const std::int64_t rate_;
  std::int64_t samples_ = -1;  ///< before the next block; negative at the very beginning
  /// Stamps, less the time that the samples before them take: constant but for lateness and the clocks' difference.
  SlidingLeast origin_{rate_};
  SlidingLeast recent_{rate_ / 8};
};

}  // namespace handset

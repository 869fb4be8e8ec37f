#pragma once

#include <cstdint>

namespace handset {

/// Turns the times of a recording's frames into those of its film. All values are nanoseconds. Allocates nothing.
class FilmClock {
 public:
  struct Span {
    std::int64_t pts;
    std::int64_t duration;
  };

  FilmClock() = default;
  /// @param start   time of a frame that becomes 0
  /// @param period  nominal distance of two frames, positive
  FilmClock(std::int64_t start, std::int64_t period) : start_(start), period_(period) {}

  /// Where the next frame belongs. Times in the film always grow: a frame that repeats an earlier time, or goes back,
  /// follows closely, and later ones are at their own times again. One that goes back by more than a second follows the
  /// last one, and later ones follow it.
  /// @param duration  the frame's own, or 0 where it has none: it lasts the nominal period then, since the gap before
  ///                  a frame says nothing about what follows it
  Span next(std::int64_t timestamp, std::int64_t duration);

  /// End of the last frame; 0 before the first.
  std::int64_t length() const { return length_; }

 private:
  std::int64_t start_ = 0;
  std::int64_t period_ = 1;
  std::int64_t last_ = -1;  ///< pts of the last frame
  std::int64_t length_ = 0;
};

}  // namespace handset

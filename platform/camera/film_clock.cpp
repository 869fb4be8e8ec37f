#include "platform/camera/film_clock.h"

#include <algorithm>

namespace handset {
namespace {

/// Frames that share a time are so far apart: a film's unit of time must not round it to nothing.
constexpr std::int64_t least_distance = 1'000'000;

/// A clock that goes back so far was set back.
constexpr std::int64_t set_back = 1'000'000'000;

}  // namespace

FilmClock::Span FilmClock::next(std::int64_t timestamp, std::int64_t duration) {
  // The film goes on where it was.
  if (last_ >= 0 && timestamp - start_ < last_ - set_back) start_ = timestamp - length_;
  const std::int64_t earliest = last_ < 0 ? 0 : last_ + std::min(least_distance, period_ / 2 + 1);
  last_ = std::max(timestamp - start_, earliest);
  const Span span{last_, duration > 0 ? duration : period_};
  length_ = span.pts + span.duration;
  return span;
}

}  // namespace handset

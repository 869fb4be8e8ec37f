#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace handset {

/// Says from the queue in front of an encoder when that has to work faster: before anything is dropped, but not for a
/// hiccup that it recovers from.
class OverloadWatch {
 public:
  /// @param room  frames that the queue holds
  explicit OverloadWatch(std::size_t room) : high_(room * 4 / 5), middle_(room / 2) {}

  /// Told of each frame that goes to the encoder. @param waiting  frames behind it
  /// @return whether the encoder must get lighter now
  bool must_lighten(std::size_t waiting) {
    if (pause_ > 0 && pause_-- > 0) return false;
    behind_ = waiting >= middle_ ? behind_ + 1 : 0;
    if (waiting < high_ && behind_ < patience) return false;
    behind_ = 0;
    pause_ = patience;  // frames until the lighter one may be judged
    return true;
  }

 private:
  static constexpr int patience = 10;
  const std::size_t high_;
  const std::size_t middle_;
  int behind_ = 0;
  int pause_ = 0;
};

/// Says from a growing count of lost frames whether frames are being lost: for a while after each loss.
class LossWatch {
 public:
  using Clock = std::chrono::steady_clock;

  bool losing(std::uint64_t lost, Clock::time_point now) {
    if (!known_ || lost != lost_) until_ = known_ ? now + shown : now;
    known_ = true;
    lost_ = lost;
    return now < until_;
  }

 private:
  static constexpr std::chrono::seconds shown{3};
  bool known_ = false;
  std::uint64_t lost_ = 0;
  Clock::time_point until_{};
};

inline constexpr char dropping_text[] = "frames are being dropped";

}  // namespace handset

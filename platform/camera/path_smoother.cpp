#include "platform/camera/path_smoother.h"

#include <algorithm>
#include <cmath>

namespace handset {
namespace {

constexpr double rest_rate = 2.8;  ///< 1/s
constexpr double knee = 0.2;       ///< share of the margin beyond which the low-passes quicken
constexpr double quickening = 8;   ///< factor on the rate at rest, at the margin's end

}  // namespace

double PathSmoother::rate() const {
  const double beyond = std::max(0.0, (std::abs(first_ + second_) / margin_ - knee) / (1 - knee));
  return rest_rate * (1 + quickening * beyond * beyond * beyond);
}

double PathSmoother::next(double motion, double seconds) {
  first_ += motion;
  const double share = 1 - std::exp(-rate() * seconds);
  const double step = share * first_;
  first_ -= step;
  second_ += step;
  second_ -= share * second_;
  const double limit = margin_;
  second_ = std::clamp(first_ + second_, -limit, limit) - first_;
  return first_ + second_;
}

}  // namespace handset

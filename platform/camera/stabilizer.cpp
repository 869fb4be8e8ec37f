#include "platform/camera/stabilizer.h"

#include <algorithm>
#include <cmath>

namespace handset {
namespace {

constexpr double largest_margin = 0.08;  ///< of a side, in total
constexpr int spare_rows = 2;            ///< below the lowest view
/// A view that noise would move one sample back and forth stays put.
constexpr double indifference = 1.5;
constexpr double shortest_step = 1.0 / 240;  ///< s
constexpr double longest_step = 0.25;

/// How far a picture of a length may move either way, in pixels; that margin is never shown.
int margin_of(std::uint32_t length, int spare) {
  return std::max(0, static_cast<int>((length * largest_margin - spare) / 2)) & ~1;
}

}  // namespace

camera_res_t Stabilizer::canvas_of(camera_res_t picture) {
  const auto x = static_cast<std::uint32_t>(margin_of(picture.width, 0));
  const auto y = static_cast<std::uint32_t>(margin_of(picture.height, spare_rows));
  if (x == 0 || y == 0) return picture;
  return {picture.width + 2 * x, picture.height + 2 * y + spare_rows};
}

Stabilizer::Stabilizer(camera_res_t picture)
    : estimator_(static_cast<int>(canvas_of(picture).width), static_cast<int>(canvas_of(picture).height)),
      x_(margin_of(picture.width, 0)),
      y_(margin_of(picture.height, spare_rows)) {}

void Stabilizer::Axis::move(double motion, double seconds) {
  const double shake = path.next(motion, seconds);
  if (std::abs(shake - shift) > indifference)
    shift = std::clamp(2 * static_cast<int>(std::lround(shake / 2)), -limit, limit);
}

void Stabilizer::Axis::reset() {
  path.reset();
  shift = 0;
}

Stabilizer::View Stabilizer::next(const std::uint8_t* luma, std::ptrdiff_t stride, std::int64_t timestamp) {
  const double seconds =
      std::clamp(static_cast<double>(timestamp - last_timestamp_) / 1e9, shortest_step, longest_step);
  last_timestamp_ = timestamp;
  const Motion motion = estimator_.next(luma, stride);
  if (motion.kind == Motion::Kind::cut) {
    x_.reset();
    y_.reset();
  } else {
    x_.move(motion.x, seconds);
    y_.move(motion.y, seconds);
  }
  return {x_.limit + x_.shift, y_.limit + y_.shift};
}

}  // namespace handset

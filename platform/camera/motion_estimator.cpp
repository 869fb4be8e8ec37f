#include "platform/camera/motion_estimator.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace handset {
namespace {

constexpr int largest_side = softened_width;  ///< of the largest level
constexpr int smallest_side = 160;            ///< no further levels once the longer side is at most this

constexpr int search_radius = 6;
constexpr int search_width = 2 * search_radius + 1;
constexpr double step_price = 0.004;  ///< tile votes per pixel of displacement: prefers the shorter of two

constexpr int grid_columns = 8;
constexpr int grid_rows = 6;
constexpr int grid_blocks = grid_columns * grid_rows;
constexpr int least_block_side = 4;

constexpr double least_slope = 0.5;       ///< squared gray levels a pixel, across a block's weakest direction
constexpr double most_unexplained = 1.5;  ///< relative to a block's slopes; pure noise has 4
constexpr double longest_step = 1.5;      ///< pixels; beyond that slopes carry no information
/// Blocks agree with the median if their distance from it is at most this multiple of the median distance, within
/// bounds.
constexpr double agreement = 3;
constexpr double closest_agreement = 0.1, widest_agreement = 0.75;  ///< pixels
constexpr int least_textured = grid_blocks / 4;
constexpr double matching_share = 0.4;  ///< of the textured blocks; with fewer it is a different picture
constexpr double agreeing_share = 0.5;  ///< of the matching ones

/// Sums corrected for a change of brightness, in slopes of one picture.
struct Equation {
  double xx = 0, xy = 0, yy = 0, xt = 0, yt = 0, tt = 0, count = 0;

  Equation() = default;
  explicit Equation(const SlopeSums& s) : count(static_cast<double>(s.count)) {
    const auto centred = [this](std::int64_t product, std::int64_t a, std::int64_t b, double scale) {
      return (static_cast<double>(product) - static_cast<double>(a) * static_cast<double>(b) / count) / scale;
    };
    xx = centred(s.xx, s.x, s.x, slope_scale * slope_scale);
    xy = centred(s.xy, s.x, s.y, slope_scale * slope_scale);
    yy = centred(s.yy, s.y, s.y, slope_scale * slope_scale);
    xt = centred(s.xt, s.x, s.t, slope_scale);
    yt = centred(s.yt, s.y, s.t, slope_scale);
    tt = centred(s.tt, s.t, s.t, 1);
  }
  void add(const Equation& other) {
    xx += other.xx, xy += other.xy, yy += other.yy;
    xt += other.xt, yt += other.yt, tt += other.tt;
    count += other.count;
  }
  /// Squared slope per pixel along the weakest direction.
  double weakest() const {
    const double difference = xx - yy;
    return (xx + yy - std::sqrt(difference * difference + 4 * xy * xy)) / 2 / count;
  }
  /// The displacement that best explains the step by the slopes; weakest() must be above 0.
  void solve(double* x, double* y) const {
    const double determinant = xx * yy - xy * xy;
    *x = (xy * yt - yy * xt) / determinant;
    *y = (xy * xt - xx * yt) / determinant;
  }
  /// Whether that displacement explains the step.
  bool explained_by(double x, double y) const { return tt + x * xt + y * yt <= most_unexplained * (xx + yy); }
};

struct Vote {
  Equation equation;
  double x, y;
};

struct Votes {
  std::array<Vote, grid_blocks> matching;
  std::size_t count = 0;
  int textured = 0;
};

/// One number per vote.
template <typename Number>
double median(const Votes& votes, Number number) {
  std::array<double, grid_blocks> values{};
  for (std::size_t i = 0; i < votes.count; ++i) values[i] = number(votes.matching[i]);
  const auto end = values.begin() + static_cast<std::ptrdiff_t>(votes.count);
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(votes.count / 2);
  std::nth_element(values.begin(), middle, end);
  return *middle;
}

/// The combined estimate of the blocks that agree with the median.
Motion decide(const Votes& votes) {
  if (votes.textured < least_textured) return {};
  if (static_cast<double>(votes.count) < matching_share * votes.textured) return {.kind = Motion::Kind::cut};
  const double x = median(votes, [](const Vote& vote) { return vote.x; });
  const double y = median(votes, [](const Vote& vote) { return vote.y; });
  const auto distance = [x, y](const Vote& vote) { return std::hypot(vote.x - x, vote.y - y); };
  const double reach = std::clamp(agreement * median(votes, distance), closest_agreement, widest_agreement);
  Equation together;
  std::size_t agreeing = 0;
  for (std::size_t i = 0; i < votes.count; ++i) {
    if (distance(votes.matching[i]) > reach) continue;
    together.add(votes.matching[i].equation);
    ++agreeing;
  }
  if (static_cast<double>(agreeing) < agreeing_share * static_cast<double>(votes.count)) return {};
  Motion motion{.kind = Motion::Kind::followed};
  together.solve(&motion.x, &motion.y);
  return motion;
}

static_assert(largest_side / grid_columns <= slope_columns);

int halvings(int side, int limit) {
  int count = 0;
  for (; side > limit; side /= 2) ++count;
  return count;
}

}  // namespace

MotionEstimator::MotionEstimator(int width, int height) : width_(width), height_(height) {
  const int to_largest = halvings(std::max(width, height), largest_side);
  for (int i = 1; i <= to_largest; ++i) passing_.emplace_back(width >> i, height >> i);
  scale_ = 1 << to_largest;
  int w = width >> to_largest, h = height >> to_largest;
  for (int more = halvings(std::max(w, h), smallest_side); more >= 0; --more, w /= 2, h /= 2) {
    for (Levels& levels : levels_) levels.emplace_back(w, h);
  }
}

void MotionEstimator::shrink(const std::uint8_t* luma, std::ptrdiff_t stride, Levels* levels) {
  int width = width_, height = height_;
  const auto halve_into = [&](Plane* to) {
    halve_plane(luma, stride, width, height, to->pixels.data(), to->width);
    luma = to->pixels.data();
    stride = width = to->width;
    height = to->height;
  };
  for (Plane& plane : passing_) halve_into(&plane);
  Plane& largest = levels->front();
  soften_plane(luma, stride, width, height, largest.pixels.data(), width);
  luma = largest.pixels.data();
  stride = width;
  for (std::size_t i = 1; i < levels->size(); ++i) halve_into(&(*levels)[i]);
}

/// The displacement at which most textured tiles match.
MotionEstimator::Offset MotionEstimator::search(const Plane& now, const Plane& last) {
  std::array<double, search_width * search_width> cost{};
  int tiles = 0;
  for (int y = search_radius; y + tile_height + search_radius < now.height; y += tile_height) {
    for (int x = search_radius; x + tile_width + search_radius < now.width; x += tile_width) {
      const unsigned texture = texture_of_tile(now.at(x, y), now.width);
      if (texture < tile_width * tile_height) continue;
      ++tiles;
      for (std::size_t i = 0; i < cost.size(); ++i) {
        const int dx = static_cast<int>(i) % search_width - search_radius;
        const int dy = static_cast<int>(i) / search_width - search_radius;
        const unsigned difference = difference_of_tiles(now.at(x, y), last.at(x - dx, y - dy), now.width);
        cost[i] += std::min(1.0, static_cast<double>(difference) / texture);
      }
    }
  }
  for (std::size_t i = 0; i < cost.size(); ++i) {
    const int dx = static_cast<int>(i) % search_width - search_radius;
    const int dy = static_cast<int>(i) / search_width - search_radius;
    cost[i] += step_price * tiles * (std::abs(dx) + std::abs(dy));
  }
  const auto best = static_cast<int>(std::min_element(cost.begin(), cost.end()) - cost.begin());
  return tiles == 0 ? Offset{0, 0} : Offset{best % search_width - search_radius, best / search_width - search_radius};
}

/// The displacement near `from` that the blocks agree on, in pixels of this level.
Motion MotionEstimator::refine(const Plane& now, const Plane& last, Offset from) {
  const int left = slope_reach + std::max(0, from.x), right = now.width - slope_reach + std::min(0, from.x);
  const int top = slope_reach + std::max(0, from.y), bottom = now.height - slope_reach + std::min(0, from.y);
  const int width = (right - left) / grid_columns, height = (bottom - top) / grid_rows;
  if (width < least_block_side || height < least_block_side) return {};
  Votes votes;
  for (int i = 0; i < grid_blocks; ++i) {
    const int x = left + i % grid_columns * width, y = top + i / grid_columns * height;
    const Equation equation(sum_slopes(now.at(x, y), last.at(x - from.x, y - from.y), now.width, width, height));
    if (equation.weakest() < least_slope) continue;
    ++votes.textured;
    Vote vote{.equation = equation, .x = 0, .y = 0};
    equation.solve(&vote.x, &vote.y);
    const bool near = std::abs(vote.x) <= longest_step && std::abs(vote.y) <= longest_step;
    if (near && equation.explained_by(vote.x, vote.y)) votes.matching[votes.count++] = vote;
  }
  Motion motion = decide(votes);
  if (motion.kind == Motion::Kind::followed) {
    motion.x += from.x;
    motion.y += from.y;
  }
  return motion;
}

Motion MotionEstimator::next(const std::uint8_t* luma, std::ptrdiff_t stride) {
  now_ = 1 - now_;
  const Levels& now = levels_[now_];
  const Levels& last = levels_[1 - now_];
  shrink(luma, stride, &levels_[now_]);
  if (!std::exchange(has_last_, true)) return {};

  const auto nearest = [](double x, double y) {
    return Offset{static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y))};
  };
  Offset from = search(now.back(), last.back());
  for (std::size_t level = now.size() - 1; level > 0; --level) {
    const Motion motion = refine(now[level], last[level], from);
    from = motion.kind == Motion::Kind::followed ? nearest(2 * motion.x, 2 * motion.y) : Offset{2 * from.x, 2 * from.y};
  }
  Motion motion = refine(now[0], last[0], from);
  // Slopes are most accurate when little is left to explain.
  if (motion.kind == Motion::Kind::followed) {
    const Offset nearer = nearest(motion.x, motion.y);
    if (nearer.x != from.x || nearer.y != from.y) motion = refine(now[0], last[0], nearer);
  }
  motion.x *= scale_;
  motion.y *= scale_;
  return motion;
}

}  // namespace handset

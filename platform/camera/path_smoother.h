#pragma once

namespace handset {

/// Separates shake from intended movement along one axis: follows the content's path with a low-pass and returns the
/// remainder, which is how far the content is from where it should be. Causal: the answer for a picture depends on no
/// later one.
///
/// The low-pass is two first-order stages in series, each approaching its input by 1 - exp(-w * t) in a time t: it
/// cannot overshoot, however w changes. Together they pass a sine of f Hz as 1 / (1 + (2 * pi * f / w)^2); at rest w is
/// 2.8/s, which leaves 5 % of 2 Hz. During a lasting movement the smooth path lags by 2 * speed / w. As that lag uses
/// up the margin, w grows, so that a pan goes on at its own speed; when it ends, the lag decays smoothly.
class PathSmoother {
 public:
  /// @param margin limit of the answer in pixels, either way; above 0
  explicit PathSmoother(int margin) : margin_(margin) {}

  /// Takes one step. @param motion  pixels that the content has moved
  /// @param seconds duration of the step; above 0
  /// @return the shake in pixels, within the margin
  double next(double motion, double seconds);
  /// Restarts: the content is where it should be.
  void reset() { first_ = second_ = 0; }

 private:
  double rate() const;

  int margin_;
  double first_ = 0;   ///< from the first low-pass to the real path
  double second_ = 0;  ///< from the second low-pass to the first
};

}  // namespace handset

#pragma once

namespace handset {

/// Tells shake from intended movement along one axis: follows the way that the picture's content takes with a low-pass
/// and hands out what is left, which is how far the content is from where it should be. Causal: the answer for a
/// picture depends on no later one.
///
/// The low-pass is two first-order ones in a row, each of which comes nearer to its input by 1 - exp(-w * t) in a time
/// t: it cannot overshoot, whatever w does meanwhile. With both, a sine of f Hz comes through with
/// 1 / (1 + (2 * pi * f / w)^2); at rest w is 2.8/s, which leaves 5 % of 2 Hz. A lasting movement drags the smooth way
/// behind it by 2 * speed / w. As that distance uses up the margin w grows, so that a pan goes on at its own speed, and
/// when it ends what was dragged glides home.
class PathSmoother {
 public:
  /// @param margin  pixels that the answer never exceeds, either way; above 0
  explicit PathSmoother(int margin) : margin_(margin) {}

  /// Takes one step. @param motion  pixels that the content has moved
  /// @param seconds  that it took; above 0
  /// @return the shake: pixels, within the margin
  double next(double motion, double seconds);
  /// Starts anew: the content is where it should be.
  void reset() { first_ = second_ = 0; }

 private:
  double rate() const;

  int margin_;
  double first_ = 0;   ///< from the first low-pass to the real way
  double second_ = 0;  ///< from the second low-pass to the first
};

}  // namespace handset

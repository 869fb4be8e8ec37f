#pragma once

// Where an overlay or a stamp stands in the frame.

/// How much of the free space lies before the overlay along one axis, in halves.
enum overlay_edge : int { at_start = 0, at_middle = 1, at_end = 2 };

struct overlay_anchor_s {
  overlay_edge across, down;
};

/// First pixel of `size` pixels in a frame of `frame` pixels; negative where they do not fit. Half of the free
/// space is truncated toward zero; the result is rounded down to even, as the blender would take it.
constexpr int anchored(overlay_edge edge, int frame, int size) {
  return ((frame - size) * edge / 2) & ~1;
}

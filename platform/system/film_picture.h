#pragma once

#include <functional>
#include <string>

#include "platform/camera/frame.h"

namespace handset {

/// The size in which to show a film: square pixels, no side longer than `max_side`, both even.
struct PictureSize {
  int width, height;
  bool operator==(const PictureSize&) const = default;
};
PictureSize shown_size(int width, int height, int par_numerator, int par_denominator, int max_side);

/// The end of a film's pipeline: converts its pictures to the camera's frame format, turns them upright and delivers
/// them on time.
/// @param deliver called on the streaming thread; must not wait
/// @return a sink for raw video; null, with `error` set, if an element is missing
ElementPtr make_film_picture_sink(std::function<void(const Frame&)> deliver, std::string* error);

}  // namespace handset

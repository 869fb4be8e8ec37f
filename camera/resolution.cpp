#include "camera/resolution.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr std::uint32_t long_side = 1280;
constexpr std::uint32_t short_side = 720;
constexpr int first_best = 3;

int count_of(std::span<const camera_res_t> list) {
  return static_cast<int>(list.size());
}

bool contains(std::span<const camera_res_t> list, int index) {
  return index >= 0 && index < count_of(list);
}

/// A difference is a signed 32-bit number; its magnitude needs one bit more.
std::int64_t distance(std::uint32_t side, std::uint32_t wanted) {
  return std::abs(std::int64_t{static_cast<std::int32_t>(side - wanted)});
}

bool nearer(const camera_res_t& size, const camera_res_t& best) {
  const bool upright = size.width <= size.height;
  const std::uint32_t width = upright ? short_side : long_side;
  const std::uint32_t height = upright ? long_side : short_side;
  return distance(size.width, width) < distance(best.width, width) &&
         distance(size.height, height) < distance(best.height, height);
}

}  // namespace

int preferred_resolution(std::span<const camera_res_t> list) {
  int best = contains(list, first_best) ? first_best : 0;
  for (int i = 0; i < count_of(list); ++i) {
    if (nearer(list[i], list[best])) best = i;
  }
  return best;
}

std::optional<int> choose_resolution(camera_unit_t unit, int stored, std::span<const camera_res_t> list) {
  if (list.empty()) return std::nullopt;
  const bool unchosen = unit == CAMERA_UNIT_REAR && stored == -1;
  const bool lens = unit == CAMERA_UNIT_REAR || unit == CAMERA_UNIT_FRONT;
  if (!lens || unchosen || stored >= count_of(list)) return preferred_resolution(list);
  return stored < 0 ? 0 : stored;
}

std::string resolution_text(const camera_res_t& size) {
  char text[32];
  std::snprintf(text, sizeof text, "%d x %d", static_cast<int>(size.width), static_cast<int>(size.height));
  return text;
}

std::string resolution_label(int stored, std::span<const camera_res_t> list) {
  if (list.empty()) return {};
  return resolution_text(list[contains(list, stored) ? stored : preferred_resolution(list)]);
}

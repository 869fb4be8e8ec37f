#include "engine/color_filter.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <mutex>

#include "engine/filter_thread.h"
#include "engine/frame_planes.h"
#include "engine/kernels/reference.h"

std::atomic<std::int32_t> _u = 128, _v = 128, _y = 128;
std::atomic<float> _color_filter_value = 0.5f;
std::atomic<bool> _busy = false;
std::uint8_t filter_bitmask[filter_bitmask_size] = {};
static_assert(filter_bitmask_size == kernels::mask_size);

namespace {

using color_match = bool (*)(std::uint8_t luma, std::uint8_t u, std::uint8_t v, double threshold);

constexpr color_match predicates[] = {color_match_red, color_match_green, color_match_blue, color_match_yellow};

struct tint {
  std::uint8_t u, v;
};

/// Effects 1 to 5: yellow, blue, green and red solid, sepia.
constexpr tint tints[] = {{0, 128}, {200, 0}, {0, 0}, {85, 243}, {110, 140}};

constexpr std::int32_t effect_custom = 0, effect_flat_luma = 6, effect_greyscale = 7;
constexpr std::uint8_t flat_luma = 110, grey_chroma = 127;

struct rgb {
  double red, green, blue;
};

rgb rgb_for_yuv(std::uint8_t luma, std::uint8_t u, std::uint8_t v) {
  rgb color{};
  get_rgb_for_yuv(luma, u, v, &color.red, &color.green, &color.blue);
  return color;
}

struct band {
  double lower, upper;
};

band band_around(double anchor, double other, double threshold) {
  band limits{};
  get_color_frame(anchor, other, threshold, &limits.upper, &limits.lower);
  return limits;
}

bool strictly_inside(double value, const band& limits) {
  return value < limits.upper && value > limits.lower;
}

/// Whether each of two components lies inside the band that the anchor and the other one span.
bool anchored_on(double anchor, double first, double second, double threshold) {
  return strictly_inside(second, band_around(anchor, first, threshold)) &&
         strictly_inside(first, band_around(anchor, second, threshold));
}

/// Strictly outside on both sides, which takes limits that have changed places.
bool strictly_reversed(double value, const band& limits) {
  return value > limits.upper && value < limits.lower;
}

std::uint8_t mask_byte(int slab, int u_level, int v_level, double threshold, color_match matches) {
  unsigned byte = 0;
  for (int bit = 0; bit < 8; ++bit) {
    const auto luma = static_cast<std::uint8_t>((slab * 8 + bit) * 8);
    if (matches(luma, static_cast<std::uint8_t>(u_level * 8), static_cast<std::uint8_t>(v_level * 8), threshold)) {
      byte |= 1u << bit;
    }
  }
  return static_cast<std::uint8_t>(byte);
}

double clamped_component(double value) {
  return std::max(std::min(value, 255.0), 0.0) / 255;
}

}  // namespace

void filter_init(double threshold, FilterColorMatch which) {
  const color_match matches = predicates[which];
  std::uint8_t built[filter_bitmask_size];
  for (int i = 0; i < filter_bitmask_size; ++i)
    built[i] = mask_byte(i >> 10, (i >> 5) & 31, i & 31, threshold, matches);
  const std::lock_guard lock(engine_lock());
  std::memcpy(filter_bitmask, built, sizeof built);
}

void get_rgb_for_yuv(std::uint8_t luma, std::uint8_t u, std::uint8_t v, double* red, double* green, double* blue) {
  const double y = luma, du = u - 128, dv = v - 128;
  *red = clamped_component(y + 1.402 * dv);
  *green = clamped_component(y - (0.714 * dv + 0.344 * du));
  *blue = clamped_component(y + 1.772 * du);
}

void get_color_frame(double anchor, double other, double threshold, double* upper, double* lower) {
  *upper = threshold * anchor + other * (1 - threshold);
  *lower = other / (1 - threshold) + threshold * anchor / (threshold - 1);
}

bool color_match_red(std::uint8_t luma, std::uint8_t u, std::uint8_t v, double threshold) {
  const rgb color = rgb_for_yuv(luma, u, v);
  return anchored_on(color.red, color.green, color.blue, threshold);
}

bool color_match_green(std::uint8_t luma, std::uint8_t u, std::uint8_t v, double threshold) {
  const rgb color = rgb_for_yuv(luma, u, v);
  return anchored_on(color.green, color.red, color.blue, threshold);
}

bool color_match_blue(std::uint8_t luma, std::uint8_t u, std::uint8_t v, double threshold) {
  const rgb color = rgb_for_yuv(luma, u, v);
  return anchored_on(color.blue, color.red, color.green, threshold);
}

bool color_match_yellow(std::uint8_t luma, std::uint8_t u, std::uint8_t v, double threshold) {
  const rgb color = rgb_for_yuv(luma, u, v);
  return strictly_reversed(color.green, band_around(color.blue, color.red, threshold)) &&
         strictly_reversed(color.red, band_around(color.blue, color.green, threshold));
}

void logo_get_yuv_for_rgb(std::uint8_t red, std::uint8_t green, std::uint8_t blue, std::uint8_t* luma, std::uint8_t* u,
                          std::uint8_t* v) {
  const kernels::reference::yuv color = kernels::reference::yuv_for_rgb(red, green, blue);
  *luma = color.luma;
  *u = color.u;
  *v = color.v;
}

bool color_match_for_effect(std::int32_t effect, FilterColorMatch* which) {
  constexpr FilterColorMatch by_effect[] = {filter_match_yellow, filter_match_blue, filter_match_green,
                                            filter_match_red};
  if (effect < 8 || effect > 11) return false;
  *which = by_effect[effect - 8];
  return true;
}

void changeCustomColor(int type, float value) {
  // A value that no integer holds, or none at all, has no truncation: the nearest integer, or 0, stands in.
  const double bounded = std::isnan(value) ? 0.0 : std::clamp<double>(value, INT32_MIN, INT32_MAX);
  std::atomic<std::int32_t>& component = type == 0 ? _y : type == 1 ? _u : _v;
  component = static_cast<std::int32_t>(bounded);
}

void changeFilterColor(float value) {
  if (_busy) return;
  FilterColorMatch which{};
  if (color_match_for_effect(_cur_camera_filter, &which)) filter_init(value, which);
  _color_filter_value = value;
}

color_edit color_edit_of(std::int32_t effect) {
  using enum color_edit::kind;
  if (effect == -1) return {none, 0, 0, std::nullopt};
  if (effect < 0 || effect > effect_greyscale) return {mask, 0, 0, kernels::color_mask(filter_bitmask)};
  if (effect == effect_flat_luma) return {luma, flat_luma, 0, std::nullopt};
  if (effect == effect_greyscale) return {chroma, grey_chroma, 0, std::nullopt};
  const auto low_byte = [](std::int32_t component) { return static_cast<std::uint8_t>(component & 0xFF); };
  if (effect == effect_custom) return {pairs, low_byte(_u), low_byte(_v), std::nullopt};
  return {pairs, tints[effect - 1].u, tints[effect - 1].v, std::nullopt};
}

void apply_color_edit(const color_edit& edit, const camera_buffer_t& input, const camera_buffer_t& output) {
  const std::size_t width = input.nv12.width, height = input.nv12.height;
  std::uint8_t* const chroma = output.data + chroma_offset(output);
  switch (edit.what) {
    case color_edit::kind::none:
      return;
    case color_edit::kind::pairs:
      return kernels::fill_pairs(chroma, chroma_stride(output), width, height / 2, edit.value, edit.second);
    case color_edit::kind::luma:
      return kernels::fill_bytes(output.data, luma_stride(output), width, height, edit.value);
    case color_edit::kind::chroma:
      return kernels::fill_bytes(chroma, chroma_stride(output), width, height / 2, edit.value);
    case color_edit::kind::mask:
      return kernels::keep_color(output.data, luma_stride(output), chroma, chroma_stride(output), width, height,
                                 *edit.mask);
  }
}

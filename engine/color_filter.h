#pragma once

// Colour filters: fixed chroma and luma fills, and the colour-keep filters driven by a mask of
// colour cells. The arithmetic on pixels is in engine/kernels.

#include <atomic>
#include <cstdint>
#include <optional>

#include "engine/kernels/color_kernels.h"
#include "platform/camera/camera.h"

/// Colour-keep predicates, in the order of the builder's table.
enum FilterColorMatch : int {
  filter_match_red = 0,
  filter_match_green = 1,
  filter_match_blue = 2,
  filter_match_yellow = 3,
};

/// Custom colour of effect 0; the fill writes the low 8 bits of _u and _v. No frame operation reads _y.
extern std::atomic<std::int32_t> _u, _v, _y;
/// Tolerance of the colour-keep filters. UI thread.
extern std::atomic<float> _color_filter_value;
/// While set, tolerance changes are ignored. UI thread.
extern std::atomic<bool> _busy;

inline constexpr int filter_bitmask_size = 4096;
/// 32 x 32 x 32 bits over 5-bit levels of luma L, U (P) and V (Q): bit L & 7 of byte
/// (L >> 3) * 1024 + P * 32 + Q is set when the colour stays. Guarded by engine_lock().
extern std::uint8_t filter_bitmask[filter_bitmask_size];

/// Builds the mask for one predicate and swaps it in whole. The 32768 predicates are evaluated
/// outside the engine lock. UI thread.
/// @param threshold tolerance, below 1
void filter_init(double threshold, FilterColorMatch which);

/// Whether a colour is kept. Full-range BT.601 in, `threshold` below 1.
bool color_match_red(std::uint8_t luma, std::uint8_t u, std::uint8_t v, double threshold);
bool color_match_green(std::uint8_t luma, std::uint8_t u, std::uint8_t v, double threshold);
bool color_match_blue(std::uint8_t luma, std::uint8_t u, std::uint8_t v, double threshold);
bool color_match_yellow(std::uint8_t luma, std::uint8_t u, std::uint8_t v, double threshold);

/// Full-range BT.601 to RGB in 0..1.
void get_rgb_for_yuv(std::uint8_t luma, std::uint8_t u, std::uint8_t v, double* red, double* green, double* blue);
/// Limits of the band around `other`, as seen from `anchor`.
void get_color_frame(double anchor, double other, double threshold, double* upper, double* lower);
/// RGB to full-range BT.601, truncated to bytes.
void logo_get_yuv_for_rgb(std::uint8_t red, std::uint8_t green, std::uint8_t blue, std::uint8_t* luma, std::uint8_t* u,
                          std::uint8_t* v);

/// Effects 8 to 11 to their predicate.
/// @return false for any other effect id; `which` is then untouched.
bool color_match_for_effect(std::int32_t effect, FilterColorMatch* which);

/// Colour mixer: type 0 sets _y, 1 _u, any other _v; the value is truncated toward zero. UI thread.
void changeCustomColor(int type, float value);
/// Tolerance slider: stores the value, and rebuilds the mask at once while a colour-keep effect is
/// on. Does nothing while _busy. UI thread.
void changeFilterColor(float value);

/// What a color filter does to a frame, decided once for all its strips.
struct color_edit {
  enum class kind : std::uint8_t { none, pairs, luma, chroma, mask };
  kind what;
  std::uint8_t value, second;               ///< fills: the sample, or U and V
  std::optional<kernels::color_mask> mask;  ///< of filter_bitmask, which must not change meanwhile
};

/// The edit of an effect id with the custom color and the mask of this moment. Filter thread, engine lock held.
color_edit color_edit_of(std::int32_t effect);
/// Edits the output of a frame pair, or of the same strip of both. Filter thread, engine lock held.
void apply_color_edit(const color_edit& edit, const camera_buffer_t& input, const camera_buffer_t& output);

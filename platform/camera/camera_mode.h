#pragma once

// The sizes, formats and rates that a camera delivers, and which of them to use. Values in, values out.

#include <gst/gst.h>

#include <cstdint>
#include <string>
#include <vector>

#include "platform/camera/camera.h"

namespace handset {

/// Frames per second; 0/1 when variable or unknown.
struct FrameRate {
  int numerator = 0;
  int denominator = 1;

  double value() const { return static_cast<double>(numerator) / denominator; }
  bool operator==(const FrameRate&) const = default;
};

/// Rates from slowest to fastest; a single rate if both are equal.
struct RateRange {
  FrameRate slowest;
  FrameRate fastest;
};

/// One way in which a camera delivers pictures of a size.
struct CameraWay {
  /// In order of preference at equal rates.
  enum class Coding { raw, jpeg, h264, bayer };
  Coding coding = Coding::raw;
  std::string format;            ///< GStreamer's name of the raw or Bayer format; empty if compressed
  std::vector<RateRange> rates;  ///< empty: unknown, do not request one
};

/// A size that a camera delivers, and how.
struct CameraMode {
  camera_res_t size{};
  std::vector<CameraWay> ways;
};

/// Which decoders and converters are installed.
struct Decoders {
  bool jpeg = true;
  bool h264 = true;
  bool bayer = true;
};

/// Queries GStreamer's registry. Any thread.
Decoders installed_decoders();

/// A way and the rate to request; `way` is null when the mode has none.
struct ChosenWay {
  const CameraWay* way = nullptr;
  FrameRate rate;     ///< 0/1: do not request one
  bool exact = true;  ///< the rate is listed explicitly, not taken from a range

  /// Expected frames per second; 30 if unknown.
  double expected() const { return rate.numerator > 0 ? rate.value() : 30; }
};

/// The default frame rate, frames per second.
inline constexpr double usual_rate = 30;

/// The best way to film a size at a wanted rate. Rates from 4/5 of the wanted one up to it come first, raw before MJPEG
/// before H.264 before Bayer, then nearest; then faster ones, the slowest first; then slower ones, the fastest first.
ChosenWay choose_way(const CameraMode& mode, double wanted_rate = usual_rate);

/// Sizes in the order in which a unit lists them: first the full-rate size nearest to 1280 x 720, then the others by
/// size. A handset's application starts from the fourth entry and takes another only if it is nearer to 1280 x 720 on
/// both sides, so the order leads it to the first entry. A slow size that would win in any order is left out.
std::vector<camera_res_t> list_sizes(const std::vector<CameraMode>& modes);

/// The mode for filming a size: its own, else the smallest full-rate mode that covers it, else the nearest.
/// @return null without modes
const CameraMode* choose_mode(const std::vector<CameraMode>& modes, camera_res_t size, double wanted_rate = usual_rate);

/// Whether there are modes, all of them monochrome.
bool only_grey(const std::vector<CameraMode>& modes);
/// Drops monochrome modes.
void drop_grey(std::vector<CameraMode>* modes);

/// Even, and within the pipeline's limits.
constexpr bool possible_input(camera_res_t size) {
  return size.width % 2 == 0 && size.height % 2 == 0 && size.width >= 16 && size.height >= 16 && size.width <= 8192 &&
         size.height <= 4320;
}

/// Adds a way to the mode of its size, creating the mode if needed.
void add_way(std::vector<CameraMode>* modes, camera_res_t size, const CameraWay& way);

/// Largest first.
void sort_modes(std::vector<CameraMode>* modes);

/// Modes in a device's caps, largest first. Size ranges are offered as the usual sizes inside them.
/// @param refused receives the names of formats that cannot be displayed; may be null
std::vector<CameraMode> camera_modes(const GstCaps* caps, const Decoders& decoders,
                                     std::vector<std::string>* refused = nullptr);

}  // namespace handset

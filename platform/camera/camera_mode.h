#pragma once

// Sizes, formats and rates that a camera delivers, and which of them are taken. Values in, values out.

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

/// Rates from slowest to fastest; one rate where both are the same.
struct RateRange {
  FrameRate slowest;
  FrameRate fastest;
};

/// One way in which a camera delivers pictures of a size.
struct CameraWay {
  /// In the order of preference at equal rates.
  enum class Coding { raw, jpeg, h264, bayer };
  Coding coding = Coding::raw;
  std::string format;            ///< GStreamer's name of the raw or Bayer format; empty: compressed
  std::vector<RateRange> rates;  ///< empty: unknown, and not to be asked for
};

/// A size that a camera delivers, and how.
struct CameraMode {
  camera_res_t size{};
  std::vector<CameraWay> ways;
};

/// What is installed to make pictures of a camera's data.
struct Decoders {
  bool jpeg = true;
  bool h264 = true;
  bool bayer = true;
};

/// Looks into GStreamer's registry. Any thread.
Decoders installed_decoders();

/// A way and the rate to request; `way` is null when the mode has none.
struct ChosenWay {
  const CameraWay* way = nullptr;
  FrameRate rate;     ///< 0/1: do not request one
  bool exact = true;  ///< the rate is one that is listed, not one within a range

  /// Expected frames per second; 30 if unknown.
  double expected() const { return rate.numerator > 0 ? rate.value() : 30; }
};

/// The default frame rate, frames per second.
inline constexpr double usual_rate = 30;

/// The best way to film a size at a wanted rate. Rates from 4/5 of the wanted one up to it come first, raw before MJPEG
/// before H.264 before Bayer, then nearest; then faster ones, the slowest first; then slower ones, the fastest first.
ChosenWay choose_way(const CameraMode& mode, double wanted_rate = usual_rate);

/// Sizes in the order in which a unit lists them: the one nearest to 1280 x 720 that runs at full rate first, the
/// others by size. A handset's application starts from the fourth entry and takes another one only when that is nearer
/// to 1280 x 720 on both sides: the order leads it to the first entry. A slow size that would draw it away in any order
/// is left out.
std::vector<camera_res_t> list_sizes(const std::vector<CameraMode>& modes);

/// The mode to film a size with: its own, else the smallest that covers it at full rate, else the nearest.
/// @return null without modes
const CameraMode* choose_mode(const std::vector<CameraMode>& modes, camera_res_t size, double wanted_rate = usual_rate);

/// Whether there are pictures, and all of them without color.
bool only_grey(const std::vector<CameraMode>& modes);
/// Leaves out pictures without color.
void drop_grey(std::vector<CameraMode>* modes);

/// Even, and within what the pipeline can take.
constexpr bool possible_input(camera_res_t size) {
  return size.width % 2 == 0 && size.height % 2 == 0 && size.width >= 16 && size.height >= 16 && size.width <= 8192 &&
         size.height <= 4320;
}

/// Adds a way to the mode of its size, which is added where it is missing.
void add_way(std::vector<CameraMode>* modes, camera_res_t size, const CameraWay& way);

/// Largest first.
void sort_modes(std::vector<CameraMode>* modes);

/// Modes in a device's caps, largest first. Sizes that the caps give as ranges are offered at the usual sizes inside.
/// @param refused  receives the names of formats that cannot be shown; may be null
std::vector<CameraMode> camera_modes(const GstCaps* caps, const Decoders& decoders,
                                     std::vector<std::string>* refused = nullptr);

}  // namespace handset

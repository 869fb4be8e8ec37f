// Reads a device's caps into modes.

#include <algorithm>
#include <array>
#include <cstring>

#include "platform/camera/camera_mode.h"
#include "platform/camera/gst_ptr.h"

namespace handset {
namespace {

constexpr std::array<camera_res_t, 6> usual_sizes = {
    {{3840, 2160}, {1920, 1080}, {1280, 720}, {960, 540}, {640, 480}, {320, 240}}};

FrameRate rate_of(const GValue* fraction) {
  const int denominator = gst_value_get_fraction_denominator(fraction);
  return {gst_value_get_fraction_numerator(fraction), denominator > 0 ? denominator : 1};
}

void add_rates(const GValue* value, std::vector<RateRange>* rates) {
  if (GST_VALUE_HOLDS_FRACTION(value)) {
    const FrameRate rate = rate_of(value);
    if (rate.numerator > 0) rates->push_back({rate, rate});  // 0/1: variable
  } else if (GST_VALUE_HOLDS_FRACTION_RANGE(value)) {
    RateRange range{rate_of(gst_value_get_fraction_range_min(value)), rate_of(gst_value_get_fraction_range_max(value))};
    if (range.slowest.numerator <= 0) range.slowest = {1, 1};
    if (range.fastest.value() >= range.slowest.value()) rates->push_back(range);
  } else if (GST_VALUE_HOLDS_LIST(value)) {
    for (guint i = 0; i < gst_value_list_get_size(value); ++i) add_rates(gst_value_list_get_value(value, i), rates);
  }
}

std::vector<RateRange> rates_of(const GstStructure* structure) {
  std::vector<RateRange> rates;
  if (const GValue* value = gst_structure_get_value(structure, "framerate")) add_rates(value, &rates);
  return rates;
}

std::vector<std::string> strings_of(const GstStructure* structure, const char* field) {
  const GValue* value = gst_structure_get_value(structure, field);
  std::vector<std::string> strings;
  if (value == nullptr) return strings;
  if (G_VALUE_HOLDS_STRING(value)) strings.emplace_back(g_value_get_string(value));
  for (guint i = 0; GST_VALUE_HOLDS_LIST(value) && i < gst_value_list_get_size(value); ++i) {
    const GValue* entry = gst_value_list_get_value(value, i);
    if (G_VALUE_HOLDS_STRING(entry)) strings.emplace_back(g_value_get_string(entry));
  }
  return strings;
}

/// The sizes that one caps structure describes.
std::vector<camera_res_t> sizes_of(const GstStructure* structure) {
  int width = 0;
  int height = 0;
  if (gst_structure_get_int(structure, "width", &width) && gst_structure_get_int(structure, "height", &height)) {
    return {{static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)}};
  }
  std::vector<camera_res_t> sizes;
  for (const camera_res_t& size : usual_sizes) {
    GstStructure* wanted = gst_structure_new(gst_structure_get_name(structure), "width", G_TYPE_INT, size.width,
                                             "height", G_TYPE_INT, size.height, nullptr);
    if (gst_structure_can_intersect(structure, wanted)) sizes.push_back(size);
    gst_structure_free(wanted);
  }
  return sizes;
}

/// The displayable formats of one structure, each as a way.
std::vector<CameraWay> ways_of(const GstStructure* structure, const Decoders& decoders,
                               std::vector<std::string>* refused) {
  using Coding = CameraWay::Coding;
  const std::string name = gst_structure_get_name(structure);
  std::vector<CameraWay> ways;
  const auto take = [&](bool possible, Coding coding, const std::string& format, const std::string& called) {
    if (possible) {
      ways.push_back({coding, format, rates_of(structure)});
    } else {
      refused->push_back(called);
    }
  };
  if (name == "video/x-raw") {
    const std::vector<std::string> formats = strings_of(structure, "format");
    if (formats.empty()) take(true, Coding::raw, "", "");
    for (const std::string& format : formats) take(true, Coding::raw, format, format);
  } else if (name == "image/jpeg") {
    take(decoders.jpeg, Coding::jpeg, "", "MJPEG");
  } else if (name == "video/x-h264") {
    take(decoders.h264, Coding::h264, "", "H.264");
  } else if (name == "video/x-bayer") {
    for (const std::string& format : strings_of(structure, "format")) {
      const bool eight_bits = format.size() == 4;
      take(decoders.bayer && eight_bits, Coding::bayer, format, "Bayer " + format);
    }
  } else {
    refused->push_back(name);
  }
  return ways;
}

bool is_grey(const CameraWay& way) {
  return way.format.starts_with("GRAY");
}

}  // namespace

bool only_grey(const std::vector<CameraMode>& modes) {
  return !modes.empty() && std::all_of(modes.begin(), modes.end(), [](const CameraMode& mode) {
    return std::all_of(mode.ways.begin(), mode.ways.end(), is_grey);
  });
}

void drop_grey(std::vector<CameraMode>* modes) {
  for (CameraMode& mode : *modes) std::erase_if(mode.ways, is_grey);
  std::erase_if(*modes, [](const CameraMode& mode) { return mode.ways.empty(); });
}

void add_way(std::vector<CameraMode>* modes, camera_res_t size, const CameraWay& way) {
  auto mode = std::find_if(modes->begin(), modes->end(), [&](const CameraMode& m) {
    return m.size.width == size.width && m.size.height == size.height;
  });
  if (mode == modes->end()) mode = modes->insert(modes->end(), CameraMode{size, {}});
  auto known = std::find_if(mode->ways.begin(), mode->ways.end(), [&](const CameraWay& w) {
    return w.coding == way.coding && w.format == way.format && w.rates.empty() == way.rates.empty();
  });
  if (known == mode->ways.end()) {
    mode->ways.push_back(way);
  } else {
    known->rates.insert(known->rates.end(), way.rates.begin(), way.rates.end());
  }
}

void sort_modes(std::vector<CameraMode>* modes) {
  std::stable_sort(modes->begin(), modes->end(), [](const CameraMode& a, const CameraMode& b) {
    return std::uint64_t{a.size.width} * a.size.height > std::uint64_t{b.size.width} * b.size.height;
  });
}

std::vector<CameraMode> camera_modes(const GstCaps* caps, const Decoders& decoders, std::vector<std::string>* refused) {
  std::vector<std::string> unheard;
  if (refused == nullptr) refused = &unheard;
  std::vector<CameraMode> modes;
  for (guint i = 0; caps != nullptr && i < gst_caps_get_size(caps); ++i) {
    const GstCapsFeatures* features = gst_caps_get_features(caps, i);
    if (features != nullptr && !gst_caps_features_is_any(features) &&
        !gst_caps_features_is_equal(features, GST_CAPS_FEATURES_MEMORY_SYSTEM_MEMORY))
      continue;
    const GstStructure* structure = gst_caps_get_structure(caps, i);
    const std::vector<CameraWay> ways = ways_of(structure, decoders, refused);
    for (const camera_res_t& size : sizes_of(structure)) {
      if (!possible_input(size)) continue;
      for (const CameraWay& way : ways) add_way(&modes, size, way);
    }
  }
  sort_modes(&modes);
  return modes;
}

}  // namespace handset

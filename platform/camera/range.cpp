#include "platform/camera/range.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "platform/camera/colorimetry.h"
#include "platform/camera/gst_ptr.h"

namespace handset {
namespace {

using Table = std::array<std::uint8_t, 256>;

Table make_table(double from, double to, double scale) {
  Table table{};
  for (int i = 0; i < 256; ++i) {
    table[static_cast<std::size_t>(i)] =
        static_cast<std::uint8_t>(std::clamp(std::lround(to + (i - from) * scale), 0L, 255L));
  }
  return table;
}

void map_plane(GstVideoFrame* frame, int plane, int rows, const Table& table) {
  auto* data = static_cast<std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(frame, plane));
  const int width = GST_VIDEO_FRAME_WIDTH(frame);
  for (int row = 0; row < rows; ++row) {
    std::uint8_t* line = data + static_cast<std::ptrdiff_t>(row) * GST_VIDEO_FRAME_PLANE_STRIDE(frame, plane);
    for (int x = 0; x < width; ++x) line[x] = table[line[x]];
  }
}

}  // namespace

void assume_camera_colors(GstPadProbeInfo* info, GstVideoInfo* input) {
  if (!GST_VIDEO_INFO_IS_YUV(input)) return;
  GstCaps* caps = nullptr;
  gst_event_parse_caps(gst_pad_probe_info_get_event(info), &caps);
  if (gst_structure_has_field(gst_caps_get_structure(caps, 0), "colorimetry")) return;
  const CapsPtr named = CapsPtr::adopt(gst_caps_copy(caps));
  gst_caps_set_simple(named.get(), "colorimetry", G_TYPE_STRING, GST_VIDEO_COLORIMETRY_BT601, nullptr);
  gst_video_info_from_caps(input, named.get());
  replace_caps_event(info, named);
}

bool claim_full_range(GstPadProbeInfo* info, const GstVideoInfo& input) {
  const bool limited = GST_VIDEO_INFO_IS_YUV(&input) && input.colorimetry.matrix == GST_VIDEO_COLOR_MATRIX_BT601 &&
                       input.colorimetry.range == GST_VIDEO_COLOR_RANGE_16_235;
  if (!limited) return false;
  GstCaps* caps = nullptr;
  gst_event_parse_caps(gst_pad_probe_info_get_event(info), &caps);
  const CapsPtr relabelled = CapsPtr::adopt(gst_caps_copy(caps));
  gst_caps_set_simple(relabelled.get(), "colorimetry", G_TYPE_STRING, frame_colorimetry, nullptr);
  replace_caps_event(info, relabelled);
  return true;
}

GstPadProbeReturn drop_container_colours(GstPad*, GstPadProbeInfo* info, gpointer) {
  GstEvent* event = gst_pad_probe_info_get_event(info);
  if (GST_EVENT_TYPE(event) != GST_EVENT_CAPS) return GST_PAD_PROBE_OK;
  GstCaps* caps = nullptr;
  gst_event_parse_caps(event, &caps);
  const CapsPtr plain = CapsPtr::adopt(gst_caps_copy(caps));
  gst_structure_remove_field(gst_caps_get_structure(plain.get(), 0), "colorimetry");
  replace_caps_event(info, plain);
  return GST_PAD_PROBE_OK;
}

void expand_range(GstVideoFrame* frame) {
  static const Table luma = make_table(16, 0, 255.0 / 219);
  static const Table chroma = make_table(128, 128, 255.0 / 224);
  map_plane(frame, 0, GST_VIDEO_FRAME_HEIGHT(frame), luma);
  map_plane(frame, 1, GST_VIDEO_FRAME_HEIGHT(frame) / 2, chroma);
}

}  // namespace handset

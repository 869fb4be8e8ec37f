#include "platform/camera/h264_description.h"

extern "C" {
#include <libavcodec/bsf.h>
#include <libavcodec/defs.h>
}

#include <algorithm>
#include <limits>
#include <memory>

#include "platform/camera/gst_ptr.h"
#include "platform/camera/handover.h"

namespace handset {
namespace {

struct FreeFilter {
  void operator()(AVBSFContext* filter) const { av_bsf_free(&filter); }
};
struct FreePacket {
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using FilterPtr = std::unique_ptr<AVBSFContext, FreeFilter>;
using PacketPtr = std::unique_ptr<AVPacket, FreePacket>;

FilterPtr make_filter() {
  AVBSFContext* context = nullptr;
  // frame_colorimetry in ITU-T H.264's numbers, table E-3 and after.
  constexpr char text[] =
      "h264_metadata=video_full_range_flag=1:colour_primaries=6:transfer_characteristics=6:matrix_coefficients=6";
  if (av_bsf_list_parse_str(text, &context) < 0) return nullptr;
  FilterPtr filter(context);
  filter->par_in->codec_type = AVMEDIA_TYPE_VIDEO;
  filter->par_in->codec_id = AV_CODEC_ID_H264;
  return av_bsf_init(filter.get()) < 0 ? nullptr : std::move(filter);
}

/// A buffer's bytes through the filter. @return null when it makes nothing of them
PacketPtr filtered(AVBSFContext* filter, GstBuffer* buffer) {
  PacketPtr packet(av_packet_alloc());
  GstMapInfo map;
  if (!packet || !gst_buffer_map(buffer, &map, GST_MAP_READ)) return nullptr;
  const bool fits = map.size <= static_cast<gsize>(std::numeric_limits<int>::max() - AV_INPUT_BUFFER_PADDING_SIZE);
  const bool made = fits && av_new_packet(packet.get(), static_cast<int>(map.size)) == 0;
  if (made) std::copy_n(map.data, map.size, packet->data);
  gst_buffer_unmap(buffer, &map);
  if (!made || av_bsf_send_packet(filter, packet.get()) < 0) return nullptr;
  return av_bsf_receive_packet(filter, packet.get()) < 0 ? nullptr : std::move(packet);
}

GstPadProbeReturn on_unit(GstPad*, GstPadProbeInfo* info, gpointer filter) {
  const CalledBack scope(filter);
  GstBuffer* unit = gst_pad_probe_info_get_buffer(info);
  PacketPtr packet = filtered(static_cast<AVBSFContext*>(filter), unit);
  if (!packet) return GST_PAD_PROBE_OK;
  const auto size = static_cast<gsize>(packet->size);
  std::uint8_t* const bytes = packet->data;
  GstBuffer* described = gst_buffer_new_wrapped_full(GST_MEMORY_FLAG_READONLY, bytes, size, 0, size, packet.release(),
                                                     [](gpointer held) { FreePacket()(static_cast<AVPacket*>(held)); });
  const auto what = static_cast<GstBufferCopyFlags>(GST_BUFFER_COPY_FLAGS | GST_BUFFER_COPY_TIMESTAMPS);
  gst_buffer_copy_into(described, unit, what, 0, static_cast<gsize>(-1));
  gst_buffer_unref(unit);
  GST_PAD_PROBE_INFO_DATA(info) = described;
  return GST_PAD_PROBE_OK;
}

}  // namespace

bool describe_colours(GstPad* pad) {
  FilterPtr filter = make_filter();
  if (!filter) return false;
  handed_over(filter.get());
  gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, on_unit, filter.release(), [](gpointer held) {
    taken_back(held);
    FreeFilter()(static_cast<AVBSFContext*>(held));
  });
  return true;
}

}  // namespace handset

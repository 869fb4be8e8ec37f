#include "platform/camera/frame.h"

namespace handset {
namespace {

/// Bytes from a plane's first sample to the picture's; both planes of NV12 have a byte for every column.
gsize way_to_picture(const Frame& frame, int plane, int stride) {
  return static_cast<gsize>(frame.top >> plane) * static_cast<gsize>(stride) + static_cast<gsize>(frame.left);
}

}  // namespace

std::shared_ptr<const GstVideoInfo> part_of(const GstVideoInfo& whole, unsigned width, unsigned height) {
  auto part = std::make_shared<GstVideoInfo>();
  gst_video_info_set_format(part.get(), GST_VIDEO_FORMAT_NV12, width, height);
  part->colorimetry = whole.colorimetry;
  part->chroma_site = whole.chroma_site;
  part->fps_n = whole.fps_n;
  part->fps_d = whole.fps_d;
  return part;
}

bool map_frame(const Frame& frame, GstMapFlags flags, GstVideoFrame* mapped) {
  const GstVideoInfo* whole = frame.canvas ? frame.canvas.get() : frame.info.get();
  if (!gst_video_frame_map(mapped, whole, frame.buffer.get(), flags)) return false;
  if (!frame.canvas) return true;
  for (int plane = 0; plane < 2; ++plane) {
    auto* first = static_cast<std::uint8_t*>(mapped->data[plane]);
    mapped->data[plane] = first + way_to_picture(frame, plane, GST_VIDEO_FRAME_PLANE_STRIDE(mapped, plane));
  }
  mapped->info.width = GST_VIDEO_INFO_WIDTH(frame.info.get());
  mapped->info.height = GST_VIDEO_INFO_HEIGHT(frame.info.get());
  return true;
}

BufferPtr wrap_picture(const Frame& frame) {
  BufferPtr wrapper = BufferPtr::adopt(gst_buffer_copy(frame.buffer.get()));
  if (!frame.canvas) return wrapper;
  GstVideoMeta* meta = gst_buffer_get_video_meta(wrapper.get());
  if (meta == nullptr) {
    const GstVideoInfo* canvas = frame.canvas.get();
    meta = gst_buffer_add_video_meta_full(wrapper.get(), GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_NV12,
                                          static_cast<guint>(canvas->width), static_cast<guint>(canvas->height), 2,
                                          const_cast<gsize*>(canvas->offset), const_cast<gint*>(canvas->stride));
  }
  for (int plane = 0; plane < 2; ++plane) meta->offset[plane] += way_to_picture(frame, plane, meta->stride[plane]);
  meta->width = static_cast<guint>(GST_VIDEO_INFO_WIDTH(frame.info.get()));
  meta->height = static_cast<guint>(GST_VIDEO_INFO_HEIGHT(frame.info.get()));
  return wrapper;
}

}  // namespace handset

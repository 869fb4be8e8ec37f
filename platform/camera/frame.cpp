#include "platform/camera/frame.h"

#include "platform/camera/handover.h"

namespace handset {
namespace {

/// Bytes from a plane's first sample to the picture's; both NV12 planes have one byte per column.
gsize way_to_picture(const Frame& frame, int plane, int stride) {
  return static_cast<gsize>(frame.top >> plane) * static_cast<gsize>(stride) + static_cast<gsize>(frame.left);
}

/// Keeps a frame's buffer alive and mapped while others use its bytes.
struct HeldBytes {
  BufferPtr buffer;
  GstMapInfo map;

  static void release(gpointer self) {
    taken_back(self);
    auto* held = static_cast<HeldBytes*>(self);
    gst_buffer_unmap(held->buffer.get(), &held->map);
    delete held;
  }
};

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
  auto held = std::make_unique<HeldBytes>(HeldBytes{frame.buffer.share(), {}});
  if (!gst_buffer_map(held->buffer.get(), &held->map, GST_MAP_READ)) return {};
  // Separate memory: a pool does not take back a buffer whose memory is shared, and would allocate a new one for every
  // frame.
  handed_over(held.get());
  const gsize size = held->map.size;
  std::uint8_t* const bytes = held->map.data;
  GstMemory* memory =
      gst_memory_new_wrapped(GST_MEMORY_FLAG_READONLY, bytes, size, 0, size, held.release(), HeldBytes::release);
  BufferPtr wrapper = BufferPtr::adopt(gst_buffer_new());
  gst_buffer_append_memory(wrapper.get(), memory);
  GST_BUFFER_DURATION(wrapper.get()) = GST_BUFFER_DURATION(frame.buffer.get());
  const GstVideoInfo* whole = frame.canvas ? frame.canvas.get() : frame.info.get();
  const GstVideoMeta* own = gst_buffer_get_video_meta(frame.buffer.get());
  gsize offset[GST_VIDEO_MAX_PLANES] = {};
  gint stride[GST_VIDEO_MAX_PLANES] = {};
  for (int plane = 0; plane < 2; ++plane) {
    stride[plane] = own != nullptr ? own->stride[plane] : whole->stride[plane];
    offset[plane] =
        (own != nullptr ? own->offset[plane] : whole->offset[plane]) + way_to_picture(frame, plane, stride[plane]);
  }
  gst_buffer_add_video_meta_full(wrapper.get(), GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_NV12,
                                 static_cast<guint>(GST_VIDEO_INFO_WIDTH(frame.info.get())),
                                 static_cast<guint>(GST_VIDEO_INFO_HEIGHT(frame.info.get())), 2, offset, stride);
  return wrapper;
}

}  // namespace handset

#include "tests/camera/scene_frames.h"

#include "platform/camera/colorimetry.h"

SceneFrames::SceneFrames(int width, int height) : painter_(width, height) {
  gst_init(nullptr, nullptr);
  auto info = std::make_shared<GstVideoInfo>();
  gst_video_info_set_format(info.get(), GST_VIDEO_FORMAT_NV12, static_cast<guint>(width), static_cast<guint>(height));
  gst_video_colorimetry_from_string(&info->colorimetry, handset::frame_colorimetry);
  info_ = std::move(info);
}

handset::Frame SceneFrames::make(std::uint64_t number, std::int64_t timestamp) const {
  const int width = GST_VIDEO_INFO_WIDTH(info_.get());
  const int height = GST_VIDEO_INFO_HEIGHT(info_.get());
  GstBuffer* buffer = gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(info_.get()), nullptr);
  GstMapInfo map;
  gst_buffer_map(buffer, &map, GST_MAP_WRITE);
  painter_.paint({map.data, map.data + width * height, width, height, width, width}, number,
                 0.1 * static_cast<double>(number));
  gst_buffer_unmap(buffer, &map);
  return {handset::BufferPtr::adopt(buffer), info_, timestamp};
}

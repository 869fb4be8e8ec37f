#include "platform/camera/scene_source.h"

#include <gst/base/gstpushsrc.h>
#include <gst/video/video.h>

#include <memory>
#include <mutex>

#include "platform/camera/colorimetry.h"
#include "platform/camera/handover.h"
#include "platform/camera/scene_painter.h"

// GObject boilerplate: the class and instance structures are GLib's to allocate, so what C++ must
// construct hangs off one pointer.
struct SceneSource {
  GstPushSrc parent;
  struct State {
    GstVideoInfo info{};
    std::unique_ptr<handset::ScenePainter> painter;
    std::uint64_t frame = 0;
  } * state;
};
struct SceneSourceClass {
  GstPushSrcClass parent_class;
};

G_DEFINE_TYPE(SceneSource, scene_source, GST_TYPE_PUSH_SRC)

namespace {

SceneSource* self(gpointer object) {
  return static_cast<SceneSource*>(object);
}

gboolean set_caps(GstBaseSrc* base, GstCaps* caps) {
  const handset::CalledBack scope(base);
  SceneSource::State& state = *self(base)->state;
  if (!gst_video_info_from_caps(&state.info, caps)) return FALSE;
  const int width = GST_VIDEO_INFO_WIDTH(&state.info);
  const int height = GST_VIDEO_INFO_HEIGHT(&state.info);
  if (width % 2 != 0 || height % 2 != 0) return FALSE;
  if (!state.painter || state.painter->width() != width || state.painter->height() != height) {
    state.painter = std::make_unique<handset::ScenePainter>(width, height);
  }
  gst_base_src_set_blocksize(base, static_cast<guint>(GST_VIDEO_INFO_SIZE(&state.info)));
  return TRUE;
}

GstCaps* fixate(GstBaseSrc*, GstCaps* caps) {
  GstCaps* fixed = gst_caps_make_writable(caps);
  GstStructure* structure = gst_caps_get_structure(fixed, 0);
  gst_structure_fixate_field_nearest_int(structure, "width", 1280);
  gst_structure_fixate_field_nearest_int(structure, "height", 720);
  gst_structure_fixate_field_nearest_fraction(structure, "framerate", 30, 1);
  return gst_caps_fixate(fixed);
}

gboolean decide_allocation(GstBaseSrc* base, GstQuery* query) {
  const handset::CalledBack scope(base);
  // A video pool recycles the frames' memory; the default one of the base class would be asked for
  // plain blocks and could hand out a pool that downstream wants rows padded in.
  GstCaps* caps = nullptr;
  gst_query_parse_allocation(query, &caps, nullptr);
  GstBufferPool* pool = gst_video_buffer_pool_new();
  const guint size = static_cast<guint>(GST_VIDEO_INFO_SIZE(&self(base)->state->info));
  GstStructure* config = gst_buffer_pool_get_config(pool);
  gst_buffer_pool_config_set_params(config, caps, size, 2, 0);
  const bool usable = gst_buffer_pool_set_config(pool, config);
  if (gst_query_get_n_allocation_pools(query) > 0) {
    gst_query_set_nth_allocation_pool(query, 0, usable ? pool : nullptr, size, 2, 0);
  } else {
    gst_query_add_allocation_pool(query, usable ? pool : nullptr, size, 2, 0);
  }
  gst_object_unref(pool);
  return TRUE;
}

/// A frame is due at its own timestamp: the base class waits for the clock until then.
void get_times(GstBaseSrc*, GstBuffer* buffer, GstClockTime* start, GstClockTime* end) {
  *start = GST_BUFFER_PTS(buffer);
  *end = GST_CLOCK_TIME_NONE;
}

GstClockTime frame_time(const GstVideoInfo& info, std::uint64_t frame) {
  return gst_util_uint64_scale(frame, GST_SECOND * static_cast<guint64>(info.fps_d), static_cast<guint64>(info.fps_n));
}

/// A live source that was held up resumes with the frame that is due now, as a sensor does.
void skip_missed_frames(SceneSource* source) {
  SceneSource::State& state = *source->state;
  GstClock* clock = gst_element_get_clock(GST_ELEMENT(source));
  if (clock == nullptr) return;
  const GstClockTime base = gst_element_get_base_time(GST_ELEMENT(source));
  const GstClockTime now = gst_clock_get_time(clock);
  gst_object_unref(clock);
  if (now <= base) return;
  const std::uint64_t due = gst_util_uint64_scale(now - base, static_cast<guint64>(state.info.fps_n),
                                                  GST_SECOND * static_cast<guint64>(state.info.fps_d));
  if (due > state.frame) state.frame = due;
}

GstFlowReturn fill(GstPushSrc* push, GstBuffer* buffer) {
  const handset::CalledBack scope(push);
  SceneSource::State& state = *self(push)->state;
  skip_missed_frames(self(push));
  GstVideoFrame frame;
  if (!gst_video_frame_map(&frame, &state.info, buffer, GST_MAP_WRITE)) return GST_FLOW_ERROR;
  const GstClockTime start = frame_time(state.info, state.frame);
  const handset::ScenePicture picture = {
      static_cast<std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0)),
      static_cast<std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 1)),
      GST_VIDEO_FRAME_WIDTH(&frame),
      GST_VIDEO_FRAME_HEIGHT(&frame),
      GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0),
      GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 1),
  };
  state.painter->paint(picture, state.frame, static_cast<double>(start) / GST_SECOND);
  gst_video_frame_unmap(&frame);
  GST_BUFFER_PTS(buffer) = start;
  GST_BUFFER_DTS(buffer) = GST_CLOCK_TIME_NONE;
  GST_BUFFER_DURATION(buffer) = frame_time(state.info, state.frame + 1) - start;
  GST_BUFFER_OFFSET(buffer) = state.frame;
  ++state.frame;
  return GST_FLOW_OK;
}

gboolean start(GstBaseSrc* base) {
  const handset::CalledBack scope(base);
  self(base)->state->frame = 0;
  return TRUE;
}

void finalize(GObject* object) {
  handset::taken_back(object);
  delete self(object)->state;
  G_OBJECT_CLASS(scene_source_parent_class)->finalize(object);
}

}  // namespace

static void scene_source_class_init(SceneSourceClass* klass) {
  G_OBJECT_CLASS(klass)->finalize = finalize;
  GstElementClass* element = GST_ELEMENT_CLASS(klass);
  GstCaps* caps = gst_caps_from_string(
      ("video/x-raw, format=(string)NV12, width=(int)[16,8192], height=(int)[16,8192], "
       "framerate=(fraction)[1/1,120/1], "
       "pixel-aspect-ratio=(fraction)1/1, interlace-mode=(string)progressive, colorimetry=(string)" +
       std::string(handset::frame_colorimetry))
          .c_str());
  gst_element_class_add_pad_template(element, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, caps));
  gst_caps_unref(caps);
  gst_element_class_set_static_metadata(element, "Built-in scene", "Source/Video",
                                        "What the camera sees on a computer without one", "Morvane");
  GstBaseSrcClass* base = GST_BASE_SRC_CLASS(klass);
  base->set_caps = set_caps;
  base->fixate = fixate;
  base->decide_allocation = decide_allocation;
  base->get_times = get_times;
  base->start = start;
  GST_PUSH_SRC_CLASS(klass)->fill = fill;
}

static void scene_source_init(SceneSource* source) {
  source->state = new SceneSource::State;
  gst_base_src_set_live(GST_BASE_SRC(source), TRUE);
  gst_base_src_set_format(GST_BASE_SRC(source), GST_FORMAT_TIME);
  handset::handed_over(source);
}

namespace handset {

void register_scene_source() {
  static std::once_flag once;
  std::call_once(once, [] { gst_element_register(nullptr, "morvanescene", GST_RANK_NONE, scene_source_get_type()); });
}

}  // namespace handset

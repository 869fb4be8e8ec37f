#include "platform/camera/capture.h"

#include <gst/app/gstappsink.h>

#include <algorithm>
#include <cmath>

#include "platform/camera/brighten.h"
#include "platform/camera/colorimetry.h"
#include "platform/camera/handover.h"
#include "platform/camera/range.h"

namespace handset {

std::int64_t monotonic_now() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

Crop crop_to_fill(int input_width, int input_height, unsigned output_width, unsigned output_height, double zoom,
                  double pixel_shape) {
  const double shape = static_cast<double>(output_width) / output_height / pixel_shape;
  const double width = std::min<double>(input_width, input_height * shape) / zoom;
  const double height = std::min<double>(input_height, input_width / shape) / zoom;
  const auto cut = [](int whole, double part) {
    // Half a pixel of rounding must not turn a picture that fits into a scaled one.
    return static_cast<int>((whole - part) / 2 + 0.01) & ~1;
  };
  const int x = cut(input_width, width);
  const int y = cut(input_height, height);
  return {x, x, y, y};
}

namespace {

/// A clip's queues hold a few of its turns, so that many may end before the first picture of them is there.
constexpr int most_empty_turns = 50;
constexpr GstClockTime usual_frame_time = GST_SECOND / 30;

BrightenPlanes planes_of(const GstVideoFrame& frame) {
  return {static_cast<std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0)),
          GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0),
          static_cast<std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 1)),
          GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 1),
          static_cast<std::size_t>(GST_VIDEO_FRAME_WIDTH(&frame)),
          static_cast<std::size_t>(GST_VIDEO_FRAME_HEIGHT(&frame))};
}

}  // namespace

Capture::Capture(Setup setup, Deliver deliver)
    : setup_(std::move(setup)), deliver_(std::move(deliver)), stabilized_(setup_.stabilized) {}

std::unique_ptr<Capture> Capture::start(Setup setup, Deliver deliver, std::string* error) {
  std::unique_ptr<Capture> capture(new Capture(std::move(setup), std::move(deliver)));
  if (!capture->build(error) || !capture->begin(error)) return nullptr;
  return capture;
}

Capture::~Capture() {
  stop();
}

void Capture::stop_pipeline() {
  if (pipeline_) gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
  taken_back(this);
}

void Capture::stop() {
  stop_pipeline();
  std::shared_ptr<void> hold;
  const std::lock_guard lock(mutex_);
  std::swap(hold, setup_.hold);
}

bool Capture::build(std::string* error) {
  ElementPtr source = make_source_element(*setup_.source, setup_.way, setup_.size, setup_.frame_rate, error);
  if (!source) return false;
  GError* problem = nullptr;
  GstElement* tail = gst_parse_bin_from_description_full(
      (std::string("videocrop name=crop ! videoconvertscale name=convert n-threads=2 add-borders=") +
       (setup_.source->is_screen() ? "true" : "false") +
       " ! capsfilter name=shape caps-change-mode=delayed ! videobalance name=balance ! appsink name=sink "
       "max-buffers=1 enable-last-sample=false wait-on-eos=false")
          .c_str(),
      TRUE, nullptr, GST_PARSE_FLAG_FATAL_ERRORS, &problem);
  if (tail == nullptr) {
    *error = problem->message;
    g_clear_error(&problem);
    return false;
  }
  pipeline_ = ElementPtr::adopt(gst_pipeline_new("capture"));
  gst_bin_add_many(GST_BIN(pipeline_.get()), source.get(), tail, nullptr);
  if (!gst_element_link(source.get(), tail)) {
    *error = "the source gives no raw video";
    return false;
  }
  const auto child = [this](const char* name) {
    return ElementPtr::adopt(gst_bin_get_by_name(GST_BIN(pipeline_.get()), name));
  };
  crop_ = child("crop");
  shape_ = child("shape");
  balance_ = child("balance");
  sink_ = child("sink");
  bus_ = BusPtr::adopt(gst_element_get_bus(pipeline_.get()));
  ask_for_size();
  // A file has to be slowed down to its own pace; cameras come at theirs.
  g_object_set(sink_.get(), "sync", setup_.source->is_file_paced() && !setup_.unpaced ? TRUE : FALSE, nullptr);
  GstAppSinkCallbacks callbacks{};
  callbacks.new_sample = [](GstAppSink* sink, gpointer self) { return on_new_sample(GST_ELEMENT(sink), self); };
  gst_app_sink_set_callbacks(GST_APP_SINK(sink_.get()), &callbacks, this, nullptr);

  const auto end = ObjectPtr<GstPad>::adopt(gst_element_get_static_pad(sink_.get(), "sink"));
  gst_pad_add_probe(end.get(), GST_PAD_PROBE_TYPE_BUFFER, on_buffer, this, nullptr);
  if (setup_.source->is_clip()) {
    gst_pad_add_probe(end.get(), GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, on_output_event, this, nullptr);
  }
  const auto pad = ObjectPtr<GstPad>::adopt(gst_element_get_static_pad(crop_.get(), "sink"));
  gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, on_input_event, this, nullptr);
  return true;
}

bool Capture::begin(std::string* error) {
  // One clock for picture and sound: timestamps of all pipelines are comparable.
  const auto clock = ObjectPtr<GstClock>::adopt(gst_system_clock_obtain());
  gst_pipeline_use_clock(GST_PIPELINE(pipeline_.get()), clock.get());
  last_frame_ = monotonic_now();
  handed_over(this);
  const bool looping = setup_.source->is_clip() && !setup_.unpaced;
  bool started = true;
  if (looping) {
    started = gst_element_set_state(pipeline_.get(), GST_STATE_PAUSED) != GST_STATE_CHANGE_FAILURE &&
              gst_element_get_state(pipeline_.get(), nullptr, nullptr, 5 * GST_SECOND) == GST_STATE_CHANGE_SUCCESS;
    // A file that cannot be wound back plays once, from a fresh start: some demuxers give nothing after the refusal.
    if (started && !seek_to_start(true)) {
      stop_pipeline();
      if (!build(error)) return false;
      gst_pipeline_use_clock(GST_PIPELINE(pipeline_.get()), clock.get());
      handed_over(this);
    }
  }
  started = started && gst_element_set_state(pipeline_.get(), GST_STATE_PLAYING) != GST_STATE_CHANGE_FAILURE;
  if (started) return true;
  *error = poll(std::chrono::milliseconds(0)) == Event::failed ? failure_ : "the source does not start";
  return false;
}

/// A segment seek makes the clip's end a message instead of the stream's end; the next loop's
/// timestamps then continue this one's.
bool Capture::seek_to_start(bool flush) {
  const auto flags = static_cast<GstSeekFlags>(GST_SEEK_FLAG_SEGMENT | (flush ? GST_SEEK_FLAG_FLUSH : 0));
  return gst_element_seek(pipeline_.get(), 1.0, GST_FORMAT_TIME, flags, GST_SEEK_TYPE_SET, 0, GST_SEEK_TYPE_NONE, 0);
}

Capture::Event Capture::poll(std::chrono::milliseconds limit) {
  const auto types = static_cast<GstMessageType>(GST_MESSAGE_ERROR | GST_MESSAGE_EOS | GST_MESSAGE_SEGMENT_DONE |
                                                 GST_MESSAGE_APPLICATION);
  const auto wait = static_cast<GstClockTime>(std::chrono::nanoseconds(limit).count());
  const MessagePtr message = MessagePtr::adopt(gst_bus_timed_pop_filtered(bus_.get(), wait, types));
  if (!message) return Event::none;
  switch (GST_MESSAGE_TYPE(message.get())) {
    case GST_MESSAGE_ERROR: {
      GError* error = nullptr;
      gst_message_parse_error(message.get(), &error, nullptr);
      failure_ = error->message;
      g_error_free(error);
      return Event::failed;
    }
    case GST_MESSAGE_EOS:
      return Event::ended;
    case GST_MESSAGE_SEGMENT_DONE:
      if (!turn_had_picture()) {
        failure_ = "there is no picture in the clip";
      } else if (seek_to_start(false)) {
        return Event::none;
      } else {
        failure_ = "the clip cannot be rewound";
      }
      return Event::failed;
    default:
      return Event::none;
  }
}

/// Whether the clip's last turns have brought a picture.
bool Capture::turn_had_picture() {
  const std::uint64_t taken = taken_;
  empty_turns_ = taken == taken_before_ && !occupied_ ? empty_turns_ + 1 : 0;
  taken_before_ = taken;
  return empty_turns_ < most_empty_turns;
}

void Capture::wake() {
  gst_bus_post(bus_.get(), gst_message_new_application(GST_OBJECT(pipeline_.get()), gst_structure_new_empty("wake")));
}

bool Capture::wait_first_frame(std::chrono::milliseconds limit) {
  std::unique_lock lock(mutex_);
  return arrived_.wait_for(lock, limit, [this] { return has_frame_; });
}

std::chrono::nanoseconds Capture::silence() const {
  const std::lock_guard lock(mutex_);
  return std::chrono::nanoseconds(monotonic_now() - last_frame_);
}

bool Capture::is_starved(std::chrono::nanoseconds limit) const {
  return !occupied_ && silence() > limit;
}

std::shared_ptr<const GstVideoInfo> Capture::picture() const {
  const std::lock_guard lock(mutex_);
  return info_;
}

void Capture::set_zoom(double factor) {
  {
    const std::lock_guard lock(mutex_);
    zoom_ = factor;
  }
  update_crop();
}

void Capture::update_crop() {
  Crop crop;
  {
    const std::lock_guard lock(mutex_);
    if (input_width_ == 0) return;
    // A screen keeps its own shape.
    const auto shape = setup_.source->is_screen() ? camera_res_t{static_cast<std::uint32_t>(input_width_),
                                                                 static_cast<std::uint32_t>(input_height_)}
                                                  : setup_.size;
    crop = crop_to_fill(input_width_, input_height_, shape.width, shape.height, zoom_,
                        setup_.source->is_screen() ? 1 : pixel_shape_);
  }
  g_object_set(crop_.get(), "left", crop.left, "right", crop.right, "top", crop.top, "bottom", crop.bottom, nullptr);
}

void Capture::set_balance(double brightness, double contrast, double saturation) {
  g_object_set(balance_.get(), "brightness", brightness, "contrast", 1 + contrast, "saturation", 1 + saturation,
               nullptr);
}

void Capture::set_stabilized(bool on) {
  if (stabilized_.exchange(on) != on) ask_for_size();
}

/// Of the converter: frames, or canvases that frames are parts of.
void Capture::ask_for_size() {
  const camera_res_t size = stabilized_ ? Stabilizer::canvas_of(setup_.size) : setup_.size;
  const std::string text = "video/x-raw,format=NV12,width=" + std::to_string(size.width) +
                           ",height=" + std::to_string(size.height) +
                           ",pixel-aspect-ratio=1/1,colorimetry=" + frame_colorimetry;
  const CapsPtr caps = CapsPtr::adopt(gst_caps_from_string(text.c_str()));
  g_object_set(shape_.get(), "caps", caps.get(), nullptr);
}

void Capture::frame_rate(int* numerator, int* denominator) const {
  const std::lock_guard lock(mutex_);
  *numerator = rate_numerator_;
  *denominator = rate_denominator_;
}

/// The crop depends on the input's size, which is known when its caps pass.
GstPadProbeReturn Capture::on_input_event(GstPad*, GstPadProbeInfo* info, gpointer data) {
  auto* self = static_cast<Capture*>(data);
  const CalledBack scope(self);
  GstEvent* event = gst_pad_probe_info_get_event(info);
  if (GST_EVENT_TYPE(event) != GST_EVENT_CAPS) return GST_PAD_PROBE_OK;
  GstCaps* caps = nullptr;
  gst_event_parse_caps(event, &caps);
  GstVideoInfo input;
  if (!gst_video_info_from_caps(&input, caps)) return GST_PAD_PROBE_OK;
  {
    const std::lock_guard lock(self->mutex_);
    self->input_width_ = GST_VIDEO_INFO_WIDTH(&input);
    self->input_height_ = GST_VIDEO_INFO_HEIGHT(&input);
    const int wide = GST_VIDEO_INFO_PAR_N(&input);
    const int high = GST_VIDEO_INFO_PAR_D(&input);
    self->pixel_shape_ = wide > 0 && high > 0 ? static_cast<double>(wide) / high : 1;
    self->rate_numerator_ = GST_VIDEO_INFO_FPS_N(&input);
    self->rate_denominator_ = GST_VIDEO_INFO_FPS_D(&input);
  }
  self->update_crop();
  // Clips name their colors, or mean those of their size.
  if (!self->setup_.source->is_clip()) assume_camera_colors(info, &input);
  self->limited_range_ = claim_full_range(info, input);
  return GST_PAD_PROBE_OK;
}

/// A sink holds on to the buffer that it shows, and a buffer with two owners may not be edited. So the sink gets
/// a stand-in with the frame's times, to wait for and to preroll with, and the frame stays ours alone.
GstPadProbeReturn Capture::on_buffer(GstPad*, GstPadProbeInfo* info, gpointer data) {
  auto* self = static_cast<Capture*>(data);
  const CalledBack scope(self);
  GstBuffer* frame = gst_pad_probe_info_get_buffer(info);
  GstBuffer* stand_in = gst_buffer_new();
  const auto what = static_cast<GstBufferCopyFlags>(GST_BUFFER_COPY_FLAGS | GST_BUFFER_COPY_TIMESTAMPS);
  gst_buffer_copy_into(stand_in, frame, what, 0, static_cast<gsize>(-1));
  if (self->setup_.source->is_clip()) self->complete_times(stand_in);
  self->occupied_ = true;
  self->arriving_ = BufferPtr::adopt(frame);
  GST_PAD_PROBE_INFO_DATA(info) = stand_in;
  return GST_PAD_PROBE_OK;
}

/// Pictures to which a clip gives no time follow each other at its rate, or at the usual one: they would be shown as
/// fast as they are decoded.
void Capture::complete_times(GstBuffer* buffer) {
  if (!GST_BUFFER_DURATION_IS_VALID(buffer)) GST_BUFFER_DURATION(buffer) = frame_time_;
  if (!GST_BUFFER_PTS_IS_VALID(buffer)) GST_BUFFER_PTS(buffer) = next_pts_;
  next_pts_ = GST_BUFFER_PTS(buffer) + GST_BUFFER_DURATION(buffer);
}

GstPadProbeReturn Capture::on_output_event(GstPad*, GstPadProbeInfo* info, gpointer data) {
  auto* self = static_cast<Capture*>(data);
  const CalledBack scope(self);
  GstEvent* event = gst_pad_probe_info_get_event(info);
  if (GST_EVENT_TYPE(event) == GST_EVENT_SEGMENT) {
    const GstSegment* segment = nullptr;
    gst_event_parse_segment(event, &segment);
    self->next_pts_ = segment->start;
  } else if (GST_EVENT_TYPE(event) == GST_EVENT_CAPS) {
    GstCaps* caps = nullptr;
    gst_event_parse_caps(event, &caps);
    int rate = 0, per = 1;
    gst_structure_get_fraction(gst_caps_get_structure(caps, 0), "framerate", &rate, &per);
    self->frame_time_ = rate > 0 && per > 0 ? gst_util_uint64_scale_int(GST_SECOND, per, rate) : usual_frame_time;
  }
  return GST_PAD_PROBE_OK;
}

/// Cameras and the built-in scene number their frames.
void Capture::count_missed(GstBuffer* frame) {
  if (setup_.source->kind != Source::Kind::scene && setup_.source->kind != Source::Kind::device) return;
  const guint64 offset = GST_BUFFER_OFFSET(frame);
  if (last_offset_ != GST_BUFFER_OFFSET_NONE && offset != GST_BUFFER_OFFSET_NONE && offset > last_offset_ + 1) {
    missed_ += offset - last_offset_ - 1;
  }
  last_offset_ = offset;
}

GstFlowReturn Capture::on_new_sample(GstElement*, gpointer data) {
  auto* self = static_cast<Capture*>(data);
  const CalledBack scope(self);
  const GstFlowReturn result = self->take_sample();
  {
    const std::lock_guard lock(self->mutex_);
    self->last_frame_ = monotonic_now();
  }
  ++self->taken_;
  self->occupied_ = false;
  return result;
}

GstFlowReturn Capture::take_sample() {
  Frame frame;
  {
    const SamplePtr sample = SamplePtr::adopt(gst_app_sink_pull_sample(GST_APP_SINK(sink_.get())));
    if (!sample) return GST_FLOW_EOS;
    GstCaps* caps = gst_sample_get_caps(sample.get());
    if (caps_.get() != caps && !take_caps(caps)) return GST_FLOW_NOT_NEGOTIATED;
    frame = {std::move(arriving_), info_, 0};
    if (!frame) return GST_FLOW_OK;
    count_missed(frame.buffer.get());
    frame.timestamp = time_of(sample.get());
  }
  frame = make_exclusive(std::move(frame));
  if (!frame || (stabilizer_ && !choose_view(&frame))) return GST_FLOW_ERROR;
  const bool brighter = brighten_;
  GstVideoFrame mapped;
  if ((limited_range_ || brighter) && map_frame(frame, GST_MAP_READWRITE, &mapped)) {
    if (limited_range_) expand_range(&mapped);
    if (brighter) brighten(planes_of(mapped));
    gst_video_frame_unmap(&mapped);
  }
  {
    const std::lock_guard lock(mutex_);
    has_frame_ = true;
    last_frame_ = monotonic_now();
  }
  arrived_.notify_all();
  deliver_(std::move(frame));
  return GST_FLOW_OK;
}

/// Of what comes from now on.
bool Capture::take_caps(GstCaps* caps) {
  const bool same = caps_ && gst_caps_is_equal(caps_.get(), caps);
  caps_ = CapsPtr::share(caps);
  if (same) return true;
  auto whole = std::make_shared<GstVideoInfo>();
  if (!gst_video_info_from_caps(whole.get(), caps)) return false;
  auto picture = part_of(*whole, setup_.size.width, setup_.size.height);
  const bool larger = GST_VIDEO_INFO_SIZE(whole.get()) > GST_VIDEO_INFO_SIZE(picture.get());
  canvas_ = larger ? std::move(whole) : nullptr;
  stabilizer_ = larger ? std::make_unique<Stabilizer>(setup_.size) : nullptr;
  const std::lock_guard lock(mutex_);
  info_ = std::move(picture);
  return true;
}

/// Makes a frame of a canvas. @return false when its memory cannot be read
bool Capture::choose_view(Frame* frame) {
  GstVideoFrame mapped;
  if (!gst_video_frame_map(&mapped, canvas_.get(), frame->buffer.get(), GST_MAP_READ)) return false;
  const Stabilizer::View view =
      stabilizer_->next(static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&mapped, 0)),
                        GST_VIDEO_FRAME_PLANE_STRIDE(&mapped, 0), frame->timestamp);
  gst_video_frame_unmap(&mapped);
  frame->canvas = canvas_;
  frame->left = view.left;
  frame->top = view.top;
  return true;
}

/// Capture time of a sample's picture.
std::int64_t Capture::time_of(GstSample* sample) {
  GstBuffer* buffer = gst_sample_get_buffer(sample);
  const GstClockTime running =
      gst_segment_to_running_time(gst_sample_get_segment(sample), GST_FORMAT_TIME, GST_BUFFER_PTS(buffer));
  if (!GST_CLOCK_TIME_IS_VALID(running)) return monotonic_now();
  GstClockTime base = gst_element_get_base_time(sink_.get());
  if (setup_.source->is_clip() && GST_CLOCK_TIME_IS_VALID(last_running_) && running <= last_running_ &&
      GST_CLOCK_TIME_IS_VALID(last_duration_)) {
    // A new loop starts at the time at which the last picture began, not ended: it is put off by that one's turn.
    base += last_duration_;
    gst_element_set_base_time(sink_.get(), base);
  }
  last_running_ = running;
  last_duration_ = GST_BUFFER_DURATION(buffer);
  return static_cast<std::int64_t>(base + running);
}

/// The engine edits the pixels, so a picture that somebody else still reads (a decoder's reference,
/// the sink's preroll) must be copied first. Frames that the conversion made never are.
Frame Capture::make_exclusive(Frame frame) {
  GstBuffer* buffer = frame.buffer.get();
  if (gst_buffer_is_writable(buffer) && gst_buffer_is_all_memory_writable(buffer)) return frame;
  ++copied_;
  frame.buffer = BufferPtr::adopt(gst_buffer_copy_deep(buffer));
  return frame;
}

}  // namespace handset

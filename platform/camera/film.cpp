#include "platform/camera/film.h"

#include <gst/app/gstappsrc.h>

#include <cerrno>
#include <cmath>
#include <cstring>

#include "platform/camera/audio_encoder.h"
#include "platform/camera/camera_config.h"
#include "platform/camera/colorimetry.h"
#include "platform/camera/encoders.h"
#include "platform/camera/handover.h"
#include "platform/camera/microphone.h"
#include "platform/camera/range.h"

namespace handset {
namespace {

/// With the encoder's and the sound's delay this bounds what a kill loses. At its end there is no way back to what was
/// written: the file is completed by other means.
constexpr char muxer_description[] =
    "mp4mux name=mux fragment-duration=500 streamable=true ! appsink name=file sync=false async=false max-buffers=64";

/// Encoded data may wait long for the other track: it is small.
constexpr char mux_queue[] = " ! queue max-size-buffers=0 max-size-bytes=67108864 max-size-time=5000000000 ! mux. ";

}  // namespace

Film::Film(const Setup& setup)
    : setup_(setup), clock_(setup.start, std::int64_t{1'000'000'000} * setup.rate_denominator / setup.rate_numerator) {}

std::unique_ptr<Film> Film::start(const Setup& setup, std::string* error) {
  std::unique_ptr<Film> film(new Film(setup));
  return film->build(error) ? std::move(film) : nullptr;
}

Film::~Film() {
  if (pipeline_) gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
  taken_back(this);
}

bool Film::build(std::string* error) {
  if (const int problem = file_.open(setup_.path)) {
    *error = std::strerror(error_ = problem);
    return false;
  }
  size_ = {static_cast<std::uint32_t>(GST_VIDEO_INFO_WIDTH(setup_.info.get())),
           static_cast<std::uint32_t>(GST_VIDEO_INFO_HEIGHT(setup_.info.get()))};
  nominal_rate_ = nominal_rate(setup_.rate_numerator, setup_.rate_denominator);
  encoder_ = proven_video_encoder(size_, nominal_rate_);
  if (!encoder_) {
    *error = "no H.264 encoder works at this size";
    return false;
  }
  std::string description = "appsrc name=video format=time is-live=true max-buffers=2 max-bytes=0 max-time=0 ! " +
                            video_encoder_description(*encoder_, size_, nominal_rate_) + mux_queue;
  if (setup_.sound) {
    description += "appsrc name=audio format=time is-live=true max-bytes=0 caps=" + std::string(audio_caps) + " ! " +
                   audio_encoder_description() + mux_queue;
  }
  description += muxer_description;
  GError* problem = nullptr;
  pipeline_ =
      ElementPtr::adopt(gst_parse_launch_full(description.c_str(), nullptr, GST_PARSE_FLAG_FATAL_ERRORS, &problem));
  if (!pipeline_) {
    *error = problem->message;
    g_error_free(problem);
    return false;
  }
  if (!complete_video_encoder(pipeline_.get())) {
    *error = "the film's colors cannot be described";
    return false;
  }
  const auto child = [this](const char* name) {
    return ElementPtr::adopt(gst_bin_get_by_name(GST_BIN(pipeline_.get()), name));
  };
  video_ = child("video");
  audio_ = child("audio");
  const ElementPtr muxer = child("mux");
  if (audio_) {
    // The encoder's own first samples would put all sound off. The muxer leaves out what lies before time 0.
    const auto aac = ObjectPtr<GstPad>::adopt(gst_element_get_static_pad(child("aac").get(), "src"));
    gst_pad_set_offset(aac.get(), -audio_encoder_delay());
  }
  // The muxer would derive the unit of its timestamps from the frame rate, and round a camera's jitter to it.
  const auto track = ObjectPtr<GstPad>::adopt(gst_element_get_static_pad(muxer.get(), "video_0"));
  if (track) g_object_set(track.get(), "trak-timescale", 90000, nullptr);
  bus_ = BusPtr::adopt(gst_element_get_bus(pipeline_.get()));
  GstAppSinkCallbacks writing{};
  writing.new_sample = [](GstAppSink* sink, gpointer self) { return static_cast<Film*>(self)->write(sink); };
  gst_app_sink_set_callbacks(GST_APP_SINK(child("file").get()), &writing, this, nullptr);

  const auto parsed = ObjectPtr<GstPad>::adopt(gst_element_get_static_pad(child("parse").get(), "src"));
  gst_pad_add_probe(parsed.get(), GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, drop_container_colours, nullptr, nullptr);

  const CapsPtr caps = CapsPtr::adopt(gst_video_info_to_caps(setup_.info.get()));
  gst_caps_set_simple(caps.get(), "framerate", GST_TYPE_FRACTION, setup_.rate_numerator, setup_.rate_denominator,
                      nullptr);
  g_object_set(video_.get(), "caps", caps.get(), nullptr);
  GstAppSrcCallbacks callbacks{};
  callbacks.need_data = [](GstAppSrc*, guint, gpointer self) { static_cast<Film*>(self)->set_ready(true); };
  callbacks.enough_data = [](GstAppSrc*, gpointer self) { static_cast<Film*>(self)->set_ready(false); };
  gst_app_src_set_callbacks(GST_APP_SRC(video_.get()), &callbacks, this, nullptr);

  handed_over(this);
  if (gst_element_set_state(pipeline_.get(), GST_STATE_PLAYING) != GST_STATE_CHANGE_FAILURE) return true;
  check();
  *error = failure_.empty() ? "the encoder does not start" : failure_;
  return false;
}

/// Writes the muxer's next bytes. The muxer's thread.
GstFlowReturn Film::write(GstAppSink* sink) {
  const CalledBack scope(this);
  const SamplePtr sample = SamplePtr::adopt(gst_app_sink_pull_sample(sink));
  if (!sample) return GST_FLOW_EOS;
  GstBuffer* buffer = gst_sample_get_buffer(sample.get());
  return file_.append(BufferPtr::share(buffer)) == 0 ? GST_FLOW_OK : GST_FLOW_ERROR;
}

void Film::set_ready(bool ready) {
  const CalledBack scope(this);
  const std::lock_guard lock(mutex_);
  ready_ = ready;
  changed_.notify_all();
}

bool Film::wait_ready(std::chrono::milliseconds limit) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, limit, [this] { return ready_; });
}

void Film::push_video(const Frame& frame) {
  // A new wrapper around the same memory: the screen reads the original's timestamp at the same time.
  GstBuffer* buffer = wrap_picture(frame).release();
  if (buffer == nullptr) return;
  const std::int64_t own =
      GST_BUFFER_DURATION_IS_VALID(buffer) ? static_cast<std::int64_t>(GST_BUFFER_DURATION(buffer)) : 0;
  const FilmClock::Span span = clock_.next(frame.timestamp, own);
  GST_BUFFER_PTS(buffer) = static_cast<GstClockTime>(span.pts);
  GST_BUFFER_DTS(buffer) = GST_CLOCK_TIME_NONE;
  GST_BUFFER_DURATION(buffer) = static_cast<GstClockTime>(span.duration);
  gst_app_src_push_buffer(GST_APP_SRC(video_.get()), buffer);
}

void Film::push_audio(BufferPtr block, std::uint64_t first_sample) {
  if (!audio_) return;
  GstBuffer* buffer = gst_buffer_make_writable(block.release());
  const guint64 samples = gst_buffer_get_size(buffer) / audio_frame_bytes;
  GST_BUFFER_PTS(buffer) = gst_util_uint64_scale(first_sample, GST_SECOND, audio_rate);
  GST_BUFFER_DTS(buffer) = GST_CLOCK_TIME_NONE;
  GST_BUFFER_DURATION(buffer) =
      gst_util_uint64_scale(first_sample + samples, GST_SECOND, audio_rate) - GST_BUFFER_PTS(buffer);
  gst_app_src_push_buffer(GST_APP_SRC(audio_.get()), buffer);
}

bool Film::lighten() {
  const std::optional<VideoEncoder> lighter = lighter_video_encoder(*encoder_);
  if (!lighter || !replace_video_encoder(pipeline_.get(), *lighter, size_, nominal_rate_)) return false;
  encoder_ = lighter;
  return true;
}

int Film::take_message(GstMessage* message) {
  GError* error = nullptr;
  gst_message_parse_error(message, &error, nullptr);
  error_ = EIO;
  failure_ = error->message;
  g_error_free(error);
  return error_;
}

int Film::check() {
  if (error_ != 0) return error_;
  // Before the pipeline's own word for it, which says nothing of the reason.
  if ((error_ = file_.error()) != 0) {
    failure_ = std::strerror(error_);
    return error_;
  }
  const MessagePtr message = MessagePtr::adopt(gst_bus_pop_filtered(bus_.get(), GST_MESSAGE_ERROR));
  if (!message) return 0;
  take_message(message.get());
  if (file_.error() != 0) failure_ = std::strerror(error_ = file_.error());
  return error_;
}

int Film::finish() {
  if (error_ == 0) {
    gst_app_src_end_of_stream(GST_APP_SRC(video_.get()));
    if (audio_) gst_app_src_end_of_stream(GST_APP_SRC(audio_.get()));
    const auto limit = static_cast<GstClockTime>(std::chrono::nanoseconds(camera_timeouts::finalise).count());
    const MessagePtr message = MessagePtr::adopt(gst_bus_timed_pop_filtered(
        bus_.get(), limit, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)));
    if (!message) {
      error_ = ETIMEDOUT;
      failure_ = "the encoder does not finish";
    } else if (GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_ERROR) {
      take_message(message.get());
    }
  }
  gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
  taken_back(this);
  if (const int error = file_.complete(); error != 0 && (error_ == 0 || error_ == EIO)) {
    failure_ = std::strerror(error_ = error);
  }
  return error_;
}

}  // namespace handset

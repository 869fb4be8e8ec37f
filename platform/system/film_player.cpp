#include "platform/system/film_player.h"

#include <gst/gst.h>
#include <gst/pbutils/pbutils.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/camera/camera_roll.h"
#include "platform/camera/range.h"
#include "platform/sound/output.h"
#include "platform/system/film_picture.h"

namespace handset {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds closing_patience{100};
constexpr std::chrono::seconds start_patience{10};
constexpr GstClockTime tick = 100 * GST_MSECOND;
constexpr std::int64_t last_picture = 100 * GST_MSECOND;

/// GstPlayFlags: video and audio, without the converter that playbin would insert before the video sink.
constexpr int play_flags = 0x1 | 0x2 | 0x40;

/// Opening anything but a regular file may block forever or have side effects.
std::string reason_against(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return "there is no such file";
  return S_ISREG(status.st_mode) ? "" : "it is no file";
}

/// @return nanoseconds; 0 if unknown
std::int64_t length_of(const std::string& path) {
  const auto discoverer =
      ObjectPtr<GstDiscoverer>::adopt(gst_discoverer_new(GST_SECOND * start_patience.count(), nullptr));
  const GStringPtr uri(gst_filename_to_uri(path.c_str(), nullptr), g_free);
  if (!discoverer || !uri) return 0;
  const auto info =
      ObjectPtr<GstDiscovererInfo>::adopt(gst_discoverer_discover_uri(discoverer.get(), uri.get(), nullptr));
  const GstClockTime length = info ? gst_discoverer_info_get_duration(info.get()) : GST_CLOCK_TIME_NONE;
  return GST_CLOCK_TIME_IS_VALID(length) ? static_cast<std::int64_t>(length) : 0;
}

/// The streams that carry their own color description.
void on_demuxed_pad(GstElement*, GstPad* pad, gpointer) {
  const CapsPtr caps = CapsPtr::adopt(gst_pad_get_current_caps(pad));
  if (!caps) return;
  const std::string_view type = gst_structure_get_name(gst_caps_get_structure(caps.get(), 0));
  if (type == "video/x-h264" || type == "video/x-h265")
    gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, drop_container_colours, nullptr, nullptr);
}

void on_element(GstBin*, GstBin*, GstElement* element, gpointer) {
  GstElementFactory* factory = gst_element_get_factory(element);
  if (factory != nullptr && std::string_view(GST_OBJECT_NAME(factory)) == "qtdemux")
    g_signal_connect(element, "pad-added", G_CALLBACK(on_demuxed_pad), nullptr);
}

}  // namespace

/// State shared by the player and its thread, and the thread's own.
class FilmPlayer::Run {
 public:
  Run(std::string path, std::shared_ptr<ViewfinderSlot> slot) : path_(std::move(path)), slot_(std::move(slot)) {}

  // The player's side.
  Status status() const;
  void set_playing(bool playing);
  void seek(std::int64_t position);
  void close();

  // The thread.
  void play();

 private:
  void find_parts();
  bool build();
  bool go_to_part(std::size_t part);
  std::size_t part_at(std::int64_t position) const;
  bool step();
  bool take(GstMessage* message);
  bool take_error(GstMessage* message);
  bool obey();
  void seek_now(std::int64_t position);
  void look_at_clock();
  void fail(const std::string& reason);
  void wake();
  bool seeking() const { return Clock::now() < seeking_until_; }

  const std::string path_;
  const std::shared_ptr<ViewfinderSlot> slot_;

  /// Guards the following members, up to the thread's own; held while posting a picture or a wake-up, never during a
  /// GStreamer call that may block.
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  Status status_;
  bool playing_ = true;
  std::int64_t wanted_position_ = -1;  ///< seek target; -1 if none
  bool closing_ = false;
  bool over_ = false;
  BusPtr bus_;

  // Used by the thread only.
  std::vector<std::string> parts_;
  std::vector<std::int64_t> begins_{0};  ///< of each part in the whole, and the end of the whole if there are several
  std::size_t part_ = 0;
  ElementPtr pipeline_;
  ElementPtr sound_;
  bool silent_ = false;   ///< the sound device has failed
  bool plays_ = true;     ///< the pipeline's state
  bool started_ = false;  ///< the first picture has arrived
  Clock::time_point begun_ = Clock::now();
  Clock::time_point seeking_until_{};
};

// --- the player's side ------------------------------------------------------------------------

FilmPlayer::Status FilmPlayer::Run::status() const {
  const std::lock_guard lock(mutex_);
  return status_;
}

void FilmPlayer::Run::set_playing(bool playing) {
  const std::lock_guard lock(mutex_);
  playing_ = playing;
  wake();
}

void FilmPlayer::Run::seek(std::int64_t position) {
  const std::lock_guard lock(mutex_);
  if (status_.duration <= 0) return;  // unknown: there is nowhere to seek
  wanted_position_ = std::clamp<std::int64_t>(position, 0, status_.duration);
  status_.position = wanted_position_;
  wake();
}

void FilmPlayer::Run::close() {
  std::unique_lock lock(mutex_);
  closing_ = true;
  slot_->clear();
  wake();
  changed_.wait_for(lock, closing_patience, [this] { return over_; });
}

/// With the mutex held.
void FilmPlayer::Run::wake() {
  if (bus_) gst_bus_post(bus_.get(), gst_message_new_application(nullptr, gst_structure_new_empty("wake")));
}

// --- the thread -------------------------------------------------------------------------------

void FilmPlayer::Run::play() {
  gst_init(nullptr, nullptr);
  const std::string reason = reason_against(path_);
  if (!reason.empty()) {
    fail(reason);
  } else {
    find_parts();
    if (build()) {
      while (step()) {
      }
    }
  }
  if (pipeline_) gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
  pipeline_.reset();
  const std::lock_guard lock(mutex_);
  over_ = true;
  changed_.notify_all();
}

/// A long recording's film goes on in further files, which are played as one.
void FilmPlayer::Run::find_parts() {
  parts_ = film_parts(path_);
  if (parts_.size() == 1) return;
  for (const std::string& part : parts_) begins_.push_back(begins_.back() + length_of(part));
}

std::size_t FilmPlayer::Run::part_at(std::int64_t position) const {
  std::size_t part = 0;
  while (part + 1 < parts_.size() && position >= begins_[part + 1]) ++part;
  return part;
}

/// @return false when it cannot be played
bool FilmPlayer::Run::go_to_part(std::size_t part) {
  gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
  part_ = part;
  return build();
}

bool FilmPlayer::Run::build() {
  std::string error;
  const ElementPtr picture = make_film_picture_sink(
      [this](const Frame& frame) {
        const std::lock_guard lock(mutex_);
        if (!closing_ && status_.failure.empty()) slot_->post(frame);
      },
      &error);
  const std::string output = silent_ ? std::string() : sound_output();
  sound_ = ElementPtr::adopt(gst_parse_launch(output.empty() ? "fakesink sync=true" : output.c_str(), nullptr));
  pipeline_ = ElementPtr::adopt(gst_element_factory_make("playbin", nullptr));
  if (!picture || !sound_ || !pipeline_) {
    fail(error.empty() ? "GStreamer is not installed completely" : error);
    return false;
  }
  const GStringPtr uri(gst_filename_to_uri(parts_[part_].c_str(), nullptr), g_free);
  g_object_set(pipeline_.get(), "uri", uri.get(), "flags", play_flags, "video-sink", picture.get(), "audio-sink",
               sound_.get(), nullptr);
  g_signal_connect(pipeline_.get(), "deep-element-added", G_CALLBACK(on_element), nullptr);
  {
    const std::lock_guard lock(mutex_);
    bus_ = BusPtr::adopt(gst_element_get_bus(pipeline_.get()));
    plays_ = playing_;
  }
  started_ = false;
  begun_ = Clock::now();
  gst_element_set_state(pipeline_.get(), plays_ ? GST_STATE_PLAYING : GST_STATE_PAUSED);
  return true;
}

/// @return false if there is nothing more to do
bool FilmPlayer::Run::step() {
  const auto types = static_cast<GstMessageType>(GST_MESSAGE_ERROR | GST_MESSAGE_EOS | GST_MESSAGE_ASYNC_DONE |
                                                 GST_MESSAGE_APPLICATION);
  const MessagePtr message = MessagePtr::adopt(gst_bus_timed_pop_filtered(bus_.get(), tick, types));
  if (message && !take(message.get())) return false;
  if (!started_ && Clock::now() > begun_ + start_patience) {
    fail("it does not start");
    return false;
  }
  look_at_clock();
  return obey();
}

bool FilmPlayer::Run::take(GstMessage* message) {
  switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_ERROR:
      return take_error(message);
    case GST_MESSAGE_EOS: {
      if (part_ + 1 < parts_.size()) return go_to_part(part_ + 1);
      const std::lock_guard lock(mutex_);
      status_.ended = true;
      return false;
    }
    case GST_MESSAGE_ASYNC_DONE:
      started_ = true;
      seeking_until_ = {};
      return true;
    default:
      return true;
  }
}

/// If the sound device fails, the film goes on silently; any other failure ends it.
bool FilmPlayer::Run::take_error(GstMessage* message) {
  const bool of_sound = gst_object_has_as_ancestor(GST_MESSAGE_SRC(message), GST_OBJECT(sound_.get()));
  if (of_sound && !silent_) {
    silent_ = true;
    lose_sound_output();
    gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
    {
      const std::lock_guard lock(mutex_);
      if (wanted_position_ < 0 && status_.position > 0) wanted_position_ = status_.position;
    }
    return build();
  }
  GError* error = nullptr;
  gst_message_parse_error(message, &error, nullptr);
  fail(error->message);
  g_error_free(error);
  return false;
}

/// Carries out the player's latest requests.
bool FilmPlayer::Run::obey() {
  std::int64_t position = -1;
  bool playing;
  {
    const std::lock_guard lock(mutex_);
    if (closing_) return false;
    playing = playing_;
    if (started_ && !seeking()) position = std::exchange(wanted_position_, -1);
  }
  if (position >= 0) {
    if (const std::size_t part = part_at(position); part != part_) {
      {
        const std::lock_guard lock(mutex_);
        if (wanted_position_ < 0) wanted_position_ = position;
      }
      return go_to_part(part);
    }
    seek_now(position - begins_[part_]);
  }
  if (playing != plays_) {
    plays_ = playing;
    gst_element_set_state(pipeline_.get(), plays_ ? GST_STATE_PLAYING : GST_STATE_PAUSED);
  }
  return true;
}

void FilmPlayer::Run::seek_now(std::int64_t position) {
  const auto flags = static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE);
  // At the very end there is no picture left.
  const std::int64_t end = parts_.size() > 1 ? begins_[part_ + 1] - begins_[part_] : status().duration;
  const std::int64_t last = std::max<std::int64_t>(0, end - last_picture);
  // Completion is a message. If it never arrives, the user must still be able to seek elsewhere.
  if (gst_element_seek_simple(pipeline_.get(), GST_FORMAT_TIME, flags, std::min(position, last)))
    seeking_until_ = Clock::now() + std::chrono::seconds(1);
}

void FilmPlayer::Run::look_at_clock() {
  gint64 position = -1;
  gint64 duration = -1;
  gst_element_query_position(pipeline_.get(), GST_FORMAT_TIME, &position);
  gst_element_query_duration(pipeline_.get(), GST_FORMAT_TIME, &duration);
  const std::lock_guard lock(mutex_);
  if (parts_.size() > 1) {
    status_.duration = begins_.back();
  } else if (duration >= 0) {
    status_.duration = duration;
  }
  if (position >= 0 && started_ && !seeking() && wanted_position_ < 0) status_.position = begins_[part_] + position;
}

void FilmPlayer::Run::fail(const std::string& reason) {
  const std::lock_guard lock(mutex_);
  status_.failure = reason;
  if (!closing_) slot_->clear();
}

// ----------------------------------------------------------------------------------------------

FilmPlayer::FilmPlayer(const std::string& path, std::shared_ptr<ViewfinderSlot> slot)
    : run_(std::make_shared<Run>(path, std::move(slot))) {
  std::thread([run = run_] { run->play(); }).detach();
}

FilmPlayer::~FilmPlayer() {
  run_->close();
}

FilmPlayer::Status FilmPlayer::status() const {
  return run_->status();
}

void FilmPlayer::set_playing(bool playing) {
  run_->set_playing(playing);
}

void FilmPlayer::seek(std::int64_t position) {
  run_->seek(position);
}

}  // namespace handset

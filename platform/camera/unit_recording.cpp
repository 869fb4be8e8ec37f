// A unit's recording: what is found out for it beforehand, its start, its end.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <limits>
#include <utility>

#include "platform/camera/audio_encoder.h"
#include "platform/camera/camera_roll.h"
#include "platform/camera/encoders.h"
#include "platform/camera/film_trouble.h"
#include "platform/camera/unit.h"

namespace handset {
namespace {

constexpr std::chrono::milliseconds recording_start{5500};
/// A camera that has sent nothing for so long is not recorded from.
constexpr std::chrono::milliseconds recording_silence{1000};
constexpr std::chrono::milliseconds start_turn{50};
constexpr std::chrono::milliseconds preparation_patience{1500};
/// A window has enough to do when it opens; encoders are proven after that, or when a recording wants one.
constexpr std::chrono::milliseconds preparation_delay{2000};
constexpr std::chrono::milliseconds preparation_long_patience{30000};  ///< of a client without a window

/// A recording that takes nothing for so long, while frames come, has hung.
constexpr std::chrono::milliseconds recording_hang{3000};
/// A recording that is ended at once still gets a picture, also from a camera that has just been opened. Shorter than
/// disk_patience: when that is over the recording gets no frames any more.
constexpr std::chrono::milliseconds first_frame_patience{1800};
constexpr std::uint64_t no_pair = std::numeric_limits<std::uint64_t>::max();
constexpr char saving_notice[] = "Saving the film…";

std::string end_notice(int error) {
  return "Recording ended: " + film_trouble(error);
}

/// A film that was completed beside is done.
void end_saving(ViewfinderSlot* slot, int error) {
  if (slot == nullptr) return;
  if (error != 0) {
    slot->set_notice(end_notice(error));
  } else if (slot->status().notice == saving_notice) {
    slot->set_notice({});
  }
}

}  // namespace

class FilmHold {
 public:
  FilmHold() = default;
  FilmHold(const FilmHold&) = delete;
  FilmHold& operator=(const FilmHold&) = delete;
  ~FilmHold() {
    if (fd_ >= 0) close(fd_);
  }
  /// @return 0 when the path is a regular file that can be written, else an errno value
  int take(const std::string& path) {
    fd_ = open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (fd_ < 0) return errno;
    struct stat status {};
    if (fstat(fd_, &status) != 0 || !S_ISREG(status.st_mode)) return EINVAL;
    hold_film(fd_);
    return 0;
  }

 private:
  int fd_ = -1;
};

/// Proves an encoder, which the first recording should not have to wait for.
void CameraUnit::prepare() {
  const auto preparation = std::make_shared<Preparation>();
  camera_res_t size{};
  int frame_rate = 0;
  {
    const std::lock_guard lock(state_mutex_);
    if (preparation_) return;  // a source that was started anew
    preparation_ = preparation;
    size = {static_cast<std::uint32_t>(viewfinder_.width), static_cast<std::uint32_t>(viewfinder_.height)};
    frame_rate = viewfinder_.frame_rate;
  }
  // The film has the camera's own rate, whatever was asked for.
  if (const auto running = capture()) {
    int numerator = 0;
    int denominator = 1;
    running->frame_rate(&numerator, &denominator);
    if (numerator > 0) frame_rate = nominal_rate(numerator, denominator);
  }
  const bool sound = !audio_encoder_description().empty();
  const auto delay = config_.wait_for_picture ? std::chrono::milliseconds(0) : preparation_delay;
  std::thread([preparation, size, frame_rate, sound, delay] {
    {
      std::unique_lock lock(preparation->mutex);
      preparation->changed.wait_for(lock, delay, [&] { return preparation->wanted; });
    }
    proven_video_encoder(size, frame_rate);
    if (sound) audio_encoder_delay();
    const std::lock_guard lock(preparation->mutex);
    preparation->done = true;
    preparation->changed.notify_all();
  }).detach();
}

/// Waits a bounded time for what prepare() began.
void CameraUnit::wait_prepared() const {
  std::shared_ptr<Preparation> preparation;
  {
    const std::lock_guard lock(state_mutex_);
    preparation = preparation_;
  }
  if (!preparation) return;
  std::unique_lock lock(preparation->mutex);
  preparation->wanted = true;
  preparation->changed.notify_all();
  const auto patience = config_.wait_for_picture ? preparation_long_patience : preparation_patience;
  preparation->changed.wait_for(lock, patience, [&] { return preparation->done; });
}

/// The microphone to record, or "none" where the film is to have, or can have, no sound.
std::string CameraUnit::microphone_for_recording() const {
  if (unpaced_ || config_.microphone == "none") return "none";
  if (!audio_encoder_description().empty()) return config_.microphone;
  std::fputs("no sound: no AAC encoder is installed\n", stderr);
  show_status("no sound");
  return "none";
}

/// Puts a short line at the viewfinder's edge, as long as there is one. Any thread.
void CameraUnit::show_status(const std::string& text) const {
  with_slot([&](ViewfinderSlot& slot) { slot.set_status(text); });
}

std::shared_ptr<Recorder> CameraUnit::make_recorder(const char* filename, const Capture& capture) {
  Recorder::Setup setup{.path = filename,
                        .info = capture.picture(),
                        .rate_numerator = 0,
                        .rate_denominator = 1,
                        .microphone = microphone_for_recording(),
                        .wait_for_room = unpaced_,
                        .disk_margin = config_.disk_margin,
                        .show_status =
                            [weak = weak_from_this()](const std::string& text) {
                              if (const auto self = weak.lock()) self->show_status(text);
                            },
                        .lost_before = [weak = weak_from_this()]() -> std::uint64_t {
                          const auto self = weak.lock();
                          return self ? self->statistics().replaced : 0;
                        }};
  capture.frame_rate(&setup.rate_numerator, &setup.rate_denominator);
  if (setup.rate_numerator <= 0) {
    setup.rate_numerator = 30;
    setup.rate_denominator = 1;
  }
  return std::make_shared<Recorder>(setup, [weak = weak_from_this(), recording = ++recording_](int error) {
    // A film that is completed beside may outlive the camera.
    if (const auto self = weak.lock()) self->recording_ended(recording, error);
  });
}

/// A recording has ended by itself. Its thread, or the service thread.
void CameraUnit::recording_ended(int recording, int error) {
  with_slot([&](ViewfinderSlot& slot) { slot.set_notice(end_notice(error)); });
  {
    const std::lock_guard lock(state_mutex_);
    if (recording != recording_) return;  // the client has stopped it
    // Told to the client by the service thread: there it may stop the recording or close the camera.
    recording_error_ = error;
  }
  if (const auto running = capture()) running->wake();
}

/// Waits until a film has begun. A camera that goes meanwhile is not waited for. @return 0 or an errno value
int CameraUnit::wait_recording(Recorder& recorder, const Capture& capture) const {
  int error = ETIMEDOUT;
  const auto end = std::chrono::steady_clock::now() + recording_start;
  while (error == ETIMEDOUT && std::chrono::steady_clock::now() < end) {
    error = recorder.wait_started(start_turn);
    if (may_stall() && error == ETIMEDOUT && capture.silence() > recording_silence) break;
  }
  return error;
}

int CameraUnit::start_video(const char* filename, camera_viewfinder_callback_t video_callback,
                            camera_status_callback_t status_callback, void* arg) {
  if (filename == nullptr) return EINVAL;
  const std::lock_guard control(control_mutex_);
  std::shared_ptr<Capture> capture;
  {
    const std::lock_guard lock(state_mutex_);
    if (run_ == nullptr) return EINVAL;
    if (lost_ || capture_ == nullptr) return EIO;
    if (recorder_ != nullptr) return EALREADY;
    capture = capture_;
  }
  if (may_stall() && capture->silence() > recording_silence) return EIO;  // it is being started again, or will be
  const auto hold = std::make_shared<FilmHold>();
  const auto opening = Saving::begin([hold, path = std::string(filename)] { return hold->take(path); }, {});
  const int refused = config_.wait_for_film ? opening->wait() : opening->wait(disk_patience);
  if (refused != 0) return refused == EINPROGRESS ? ETIMEDOUT : refused;
  // Frames that come while an encoder is still being proven would have to wait for it, and be dropped.
  wait_prepared();
  with_slot([](ViewfinderSlot& slot) { slot.set_notice({}); });
  first_pair_ = no_pair;
  const std::shared_ptr<Recorder> recorder = make_recorder(filename, *capture);
  hold_ = hold;
  bool held = false;
  {
    const std::lock_guard lock(state_mutex_);
    recorder_ = recorder;
    video_client_ = {video_callback, status_callback, arg};
    held = video_held_;
    if (!held) begin_taking();
  }
  if (held) return 0;  // what goes wrong from here on is told as a recording's end
  const int error = wait_recording(*recorder, *capture);
  if (error == 0) return 0;
  end_recording();
  forget_recording();
  return error;
}

/// Lets the recording have frames. state_mutex_ is held.
void CameraUnit::begin_taking() {
  if (!exchange_) return;
  first_pair_ = exchange_->is_armed() ? FrameExchange::coming_pair() : 0;
  exchange_->set_wanted(true);
}

void CameraUnit::hold_video(bool hold) {
  const std::lock_guard lock(state_mutex_);
  if (std::exchange(video_held_, hold) && !hold && recorder_) begin_taking();
}

/// Ends a recording that takes no frames any more although they come: its disk hangs. Service thread.
void CameraUnit::watch_recording() {
  const std::shared_ptr<Recorder> recorder = this->recorder();
  if (!recorder) return;
  const auto now = std::chrono::steady_clock::now();
  const int recording = recording_;
  const std::uint64_t recorded = recorder->recorded();
  const std::uint64_t dropped = recorder->dropped();
  // Before the first frame an encoder may be on trial.
  if (progress_.recording != recording || recorded == 0 || progress_.recorded != recorded ||
      dropped == progress_.dropped) {
    progress_ = {recording, recorded, dropped, now};
  } else if (now - progress_.when > recording_hang) {
    progress_.when = now;
    std::fputs("recording ended: the storage does not answer\n", stderr);
    recording_ended(recording, ETIMEDOUT);
  }
}

/// Tells the client that its recording ended by itself. Service thread.
void CameraUnit::report_recording_error() {
  int error = recording_error_;
  if (error == 0) return;
  {
    // start_video may be about to return this error itself; it holds the lock while it is.
    const std::unique_lock control(control_mutex_, std::try_to_lock);
    if (control) error = recording_error_.exchange(0);
    if (!control || error == 0) return;
  }
  Client client;
  {
    const std::lock_guard lock(state_mutex_);
    client = video_client_.status != nullptr ? video_client_ : viewfinder_client_;
  }
  if (client.status != nullptr) {
    client.status(handle_, CAMERA_STATUS_VIDEO_FAILED, static_cast<std::uint16_t>(error), client.arg);
  }
}

/// Whether a recording may yet get a frame.
bool CameraUnit::expects_frames() const {
  return first_pair_ != no_pair && !lost_;
}

void CameraUnit::wait_first_frame() const {
  const std::shared_ptr<Recorder> recorder = this->recorder();
  if (recorder && expects_frames()) recorder->wait_taken(first_frame_patience);
}

/// Ends the recording, if there is one, and completes its film. control_mutex_ is held.
/// @return what ended it, 0, or EINPROGRESS for a film that is completed beside
int CameraUnit::end_recording() {
  const std::shared_ptr<Recorder> recorder = this->recorder();
  if (const auto exchange = this->exchange()) exchange->set_wanted(false);
  if (!recorder) {
    show_status({});
    return 0;
  }
  if (!saving_) {
    std::shared_ptr<ViewfinderSlot> slot;
    with_slot([&](ViewfinderSlot& of_unit) { slot = of_unit.shared_from_this(); });
    const bool frames_come = expects_frames();
    saving_ = Saving::begin(
        [recorder, frames_come, hold = std::exchange(hold_, {})] {
          if (frames_come) recorder->wait_taken(first_frame_patience);
          return recorder->stop();
        },
        [slot](int error) { end_saving(slot.get(), error); });
  }
  const int error = config_.wait_for_film ? saving_->wait() : saving_->wait(disk_patience);
  show_status({});
  if (error == EINPROGRESS && recording_error_ == 0) {
    with_slot([](ViewfinderSlot& slot) { slot.set_notice(saving_notice); });
    // It may be done since, with nobody to take the notice away.
    with_slot([&](ViewfinderSlot& slot) {
      if (const int late = saving_->wait(std::chrono::milliseconds(0)); late != EINPROGRESS) end_saving(&slot, late);
    });
  }
  return error;
}

/// The current recording is over, and what comes of it is no news any more. control_mutex_ is held.
void CameraUnit::forget_recording() {
  saving_.reset();
  const std::lock_guard lock(state_mutex_);
  ++recording_;
  recording_error_ = 0;  // the caller gets it
  if (recorder_) finished_ = std::move(recorder_);
  recorder_.reset();
}

int CameraUnit::stop_video() {
  const std::lock_guard control(control_mutex_);
  if (this->recorder() == nullptr) return EINVAL;
  const int error = end_recording();
  forget_recording();
  return error;
}

}  // namespace handset

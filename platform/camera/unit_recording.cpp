// A unit's recording: what is found out for it beforehand, its start, its end.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "platform/camera/encoders.h"
#include "platform/camera/unit.h"

namespace handset {
namespace {

constexpr std::chrono::milliseconds recording_start{5500};
/// A camera that has sent nothing for so long is not recorded from.
constexpr std::chrono::milliseconds recording_silence{1000};
constexpr std::chrono::milliseconds start_turn{50};
constexpr std::chrono::milliseconds preparation_patience{1500};
constexpr std::chrono::milliseconds preparation_long_patience{30000};  ///< of a client without a window

/// @return 0 when a path is a regular file that can be written, else an errno value
int check_writable(const char* path) {
  const int fd = open(path, O_WRONLY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return errno;
  struct stat status {};
  const bool regular = fstat(fd, &status) == 0 && S_ISREG(status.st_mode);
  close(fd);
  return regular ? 0 : EINVAL;
}

/// What the viewfinder says of a recording that has ended by itself.
std::string end_notice(int error) {
  if (error == ENOSPC) return "storage full, recording ended";
  if (error == ETIMEDOUT) return "recording ended: the encoder has stopped";
  return "recording ended: " + std::generic_category().message(error);
}

}  // namespace

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
  std::thread([preparation, size, frame_rate] {
    proven_video_encoder(size, frame_rate);
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
  const bool may_stall = !unpaced_ && !source_->may_stand_still();
  if (may_stall && capture->silence() > recording_silence) return EIO;  // it is being started again, or will be
  if (const int error = check_writable(filename)) return error;
  // Frames that come while an encoder is still being proven would have to wait for it, and be dropped.
  wait_prepared();

  Recorder::Setup setup{.path = filename,
                        .info = capture->picture(),
                        .rate_numerator = 0,
                        .rate_denominator = 1,
                        .microphone = microphone_for_recording(),
                        .wait_for_room = unpaced_,
                        .disk_margin = config_.disk_margin,
                        .show_status = [this](const std::string& text) { show_status(text); },
                        .lost_before = [this] { return statistics().replaced; }};
  capture->frame_rate(&setup.rate_numerator, &setup.rate_denominator);
  if (setup.rate_numerator <= 0) {
    setup.rate_numerator = 30;
    setup.rate_denominator = 1;
  }
  with_slot([](ViewfinderSlot& slot) { slot.set_notice({}); });
  const auto recorder = std::make_shared<Recorder>(setup, [this](int error) {
    with_slot([&](ViewfinderSlot& slot) { slot.set_notice(end_notice(error)); });
    // Told to the client by the service thread: there it may stop the recording or close the camera.
    recording_error_ = error;
    if (const auto running = this->capture()) running->wake();
  });
  {
    const std::lock_guard lock(state_mutex_);
    recorder_ = recorder;
    video_client_ = {video_callback, status_callback, arg};
    if (exchange_) exchange_->set_wanted(true);
  }
  // A camera that goes meanwhile is not waited for.
  int error = ETIMEDOUT;
  const auto end = std::chrono::steady_clock::now() + recording_start;
  while (error == ETIMEDOUT && std::chrono::steady_clock::now() < end) {
    error = recorder->wait_started(start_turn);
    if (may_stall && error == ETIMEDOUT && capture->silence() > recording_silence) break;
  }
  if (error == 0) return 0;
  end_recording();
  recording_error_ = 0;  // the caller gets it
  const std::lock_guard lock(state_mutex_);
  recorder_.reset();
  return error;
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
    client = video_client_;
  }
  if (client.status != nullptr) {
    client.status(handle_, CAMERA_STATUS_VIDEO_FAILED, static_cast<std::uint16_t>(error), client.arg);
  }
}

/// Completes the film, if there is one. control_mutex_ is held.
void CameraUnit::end_recording() {
  const std::shared_ptr<Recorder> recorder = this->recorder();
  if (const auto exchange = this->exchange()) exchange->set_wanted(false);
  if (recorder) recorder->stop();
  show_status({});
}

int CameraUnit::stop_video() {
  const std::lock_guard control(control_mutex_);
  const std::shared_ptr<Recorder> recorder = this->recorder();
  if (recorder == nullptr) return EINVAL;
  end_recording();
  recording_error_ = 0;  // the caller gets it
  const std::lock_guard lock(state_mutex_);
  finished_ = std::move(recorder_);
  return recorder->stop();
}

}  // namespace handset

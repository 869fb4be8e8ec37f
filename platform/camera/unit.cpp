#include "platform/camera/unit.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "platform/camera/encoders.h"
#include "platform/camera/microphone.h"

namespace handset {
namespace {

constexpr int zoom_maximum = 120;
constexpr std::chrono::milliseconds service_turn{100};
constexpr std::chrono::milliseconds clip_drain{5000};
constexpr std::chrono::milliseconds recording_start{4000};
constexpr std::chrono::milliseconds preparation_patience{1500};

/// What a scene mode does to the picture where the device has no such mode: a mild preset.
struct Look {
  double brightness, contrast, saturation;
};

Look look_of(camera_scenemode_t mode) {
  switch (mode) {
    case CAMERA_SCENE_BEACH_SNOW:
      return {-0.06, 0.06, 0.10};
    case CAMERA_SCENE_NIGHT:
      return {0.10, 0.04, -0.10};
    case CAMERA_SCENE_CLOSEUP:
      return {0.0, 0.08, 0.12};
    case CAMERA_SCENE_ACTION:
      return {0.02, 0.12, 0.04};
    default:
      return {0, 0, 0};
  }
}

bool known_scene(camera_scenemode_t mode) {
  return mode == CAMERA_SCENE_AUTO || mode == CAMERA_SCENE_CLOSEUP || mode == CAMERA_SCENE_ACTION ||
         mode == CAMERA_SCENE_BEACH_SNOW || mode == CAMERA_SCENE_NIGHT;
}

/// @return 0 when a path is a regular file that can be written, else an errno value
int check_writable(const char* path) {
  const int fd = open(path, O_WRONLY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return errno;
  struct stat status {};
  const bool regular = fstat(fd, &status) == 0 && S_ISREG(status.st_mode);
  close(fd);
  return regular ? 0 : EINVAL;
}

/// Writes one value into a stream's settings. @return 0, EINVAL or ENOTSUP
int set_number(StreamProperties* properties, int property, int value, bool stabilizes) {
  switch (property) {
    case CAMERA_IMGPROP_WIDTH:
    case CAMERA_IMGPROP_HEIGHT:
      if (value < 2 || value % 2 != 0) return EINVAL;
      (property == CAMERA_IMGPROP_WIDTH ? properties->width : properties->height) = value;
      return 0;
    case CAMERA_IMGPROP_FRAMERATE:
      if (value < 1 || value > 120) return EINVAL;
      properties->frame_rate = value;
      return 0;
    case CAMERA_IMGPROP_ROTATION:
      if (value != 0 && value != 90 && value != 180 && value != 270) return EINVAL;
      properties->rotation = value;
      return 0;
    case CAMERA_IMGPROP_STABILIZATION:
      if (!stabilizes) return ENOTSUP;
      if (value != 0 && value != 1) return EINVAL;
      properties->stabilization = value;
      return 0;
    default:
      return EINVAL;
  }
}

}  // namespace

CameraUnit::CameraUnit(camera_handle_t handle, camera_unit_t unit, std::uint32_t mode, Source source,
                       const CameraServiceConfig& config)
    : handle_(handle),
      unit_(unit),
      mode_(mode),
      source_(std::move(source)),
      config_(config),
      unpaced_(config.unpaced && source_.is_file_paced()) {}

CameraUnit::~CameraUnit() {
  stop_viewfinder();
}

bool CameraUnit::has_feature(int feature) const {
  const bool lens = unit_ != CAMERA_UNIT_DESKTOP;
  switch (feature) {
    case CAMERA_FEATURE_VIDEO:
      return true;
    case CAMERA_FEATURE_ZOOM:
    case CAMERA_FEATURE_FOCUS:
    case CAMERA_FEATURE_SHARED_ROTATION:
      return lens;
    case CAMERA_FEATURE_STABILIZATION:
      return lens && config_.stabilization;
    case CAMERA_FEATURE_VIDEOLIGHT:
      return unit_ == CAMERA_UNIT_REAR && config_.video_light;
    default:
      return false;
  }
}

int CameraUnit::set_properties(Stream stream, int property, std::va_list* values) {
  const std::lock_guard lock(state_mutex_);
  StreamProperties& target = stream == Stream::viewfinder ? viewfinder_ : video_;
  StreamProperties wanted = target;
  for (; property != CAMERA_IMGPROP_END; property = va_arg(*values, int)) {
    if (property == CAMERA_IMGPROP_WIN_GROUPID || property == CAMERA_IMGPROP_WIN_ID) {
      const char* text = va_arg(*values, const char*);
      if (stream != Stream::viewfinder || text == nullptr) return EINVAL;
      (property == CAMERA_IMGPROP_WIN_ID ? wanted.window_id : wanted.window_group) = text;
      continue;
    }
    const int error = set_number(&wanted, property, va_arg(*values, int), has_feature(CAMERA_FEATURE_STABILIZATION));
    if (error != 0) return error;
  }
  const bool reshapes = wanted.width != target.width || wanted.height != target.height ||
                        wanted.frame_rate != target.frame_rate || wanted.window_group != target.window_group ||
                        wanted.window_id != target.window_id;
  if (reshapes && capture_ != nullptr) return EBUSY;
  target = wanted;
  return 0;
}

int CameraUnit::get_properties(Stream stream, int property, std::va_list* values) const {
  const std::lock_guard lock(state_mutex_);
  const StreamProperties& source = stream == Stream::viewfinder ? viewfinder_ : video_;
  for (; property != CAMERA_IMGPROP_END; property = va_arg(*values, int)) {
    int* value = va_arg(*values, int*);
    if (value == nullptr) return EINVAL;
    switch (property) {
      case CAMERA_IMGPROP_FORMAT:
        *value = CAMERA_FRAMETYPE_NV12;
        break;
      case CAMERA_IMGPROP_WIDTH:
        *value = source.width;
        break;
      case CAMERA_IMGPROP_HEIGHT:
        *value = source.height;
        break;
      case CAMERA_IMGPROP_FRAMERATE:
        *value = source.frame_rate;
        break;
      case CAMERA_IMGPROP_ROTATION:
        *value = source.rotation;
        break;
      case CAMERA_IMGPROP_STABILIZATION:
        *value = source.stabilization;
        break;
      default:
        return EINVAL;
    }
  }
  return 0;
}

// --- viewfinder -------------------------------------------------------------------------------

/// The one size that both streams run in.
int CameraUnit::check_start(camera_res_t* size) const {
  const std::lock_guard lock(state_mutex_);
  if (capture_ != nullptr) return EALREADY;
  const bool video_set = video_.width != 0 && video_.height != 0;
  if (video_set && (video_.width != viewfinder_.width || video_.height != viewfinder_.height)) return EINVAL;
  *size = {static_cast<std::uint32_t>(viewfinder_.width), static_cast<std::uint32_t>(viewfinder_.height)};
  return possible_size(size->width, size->height) ? 0 : EINVAL;
}

int CameraUnit::start_viewfinder(camera_viewfinder_callback_t frame_callback, camera_status_callback_t status_callback,
                                 void* arg) {
  const std::lock_guard control(control_mutex_);
  camera_res_t size{};
  if (const int error = check_start(&size)) return error;
  int frame_rate = 0;
  {
    const std::lock_guard lock(state_mutex_);
    frame_rate = viewfinder_.frame_rate;
    viewfinder_client_ = {frame_callback, status_callback, arg};
    slot_ = viewfinder_slot(viewfinder_.window_group, viewfinder_.window_id);
    exchange_ = std::make_shared<FrameExchange>(unpaced_ ? FrameExchange::Pace::wait : FrameExchange::Pace::drop,
                                                [weak = weak_from_this()](const Frame& frame) {
                                                  // A pair may come back after the camera is closed.
                                                  if (const auto self = weak.lock()) self->publish(frame);
                                                });
  }
  lost_ = false;
  if (const int error = launch(size, frame_rate)) return error;
  apply_look();
  prepare(size, frame_rate);
  auto stop = std::make_shared<std::atomic<bool>>(false);
  {
    const std::lock_guard lock(state_mutex_);
    stop_ = stop;
  }
  service_thread_ = std::thread([self = shared_from_this(), stop] { self->serve(stop); });
  return 0;
}

/// Starts the capture and waits for its first frame; leaves nothing behind when there is none.
int CameraUnit::launch(camera_res_t size, int frame_rate) {
  const std::shared_ptr<FrameExchange> exchange = this->exchange();
  std::string why;
  std::shared_ptr<Capture> capture = Capture::start(
      {.source = &source_, .size = size, .frame_rate = frame_rate, .unpaced = unpaced_},
      [exchange](Frame frame) { exchange->offer(std::move(frame)); }, &why);
  int error = capture == nullptr ? EIO : 0;
  if (capture != nullptr) {
    const auto end = std::chrono::steady_clock::now() + camera_timeouts::first_frame;
    while (!capture->wait_first_frame(service_turn) && error == 0) {
      if (capture->poll(std::chrono::milliseconds(0)) != Capture::Event::none) {
        error = EIO;
        why = capture->failure().empty() ? "the source ended without a picture" : capture->failure();
      } else if (std::chrono::steady_clock::now() > end) {
        error = ETIMEDOUT;
        why = "the source gives no picture";
      }
    }
  }
  if (error != 0) {
    std::fprintf(stderr, "camera: %s\n", why.c_str());
    exchange->shut();
    capture.reset();
  }
  const std::lock_guard lock(state_mutex_);
  capture_ = capture;
  if (error != 0) {
    exchange_.reset();
    slot_.reset();
    return error;
  }
  return 0;
}

/// Proves an encoder and looks for a microphone, which the first recording should not have to wait for. On a thread
/// that nobody joins: a sound server that does not answer holds it up for half a minute.
void CameraUnit::prepare(camera_res_t size, int frame_rate) {
  const auto preparation = std::make_shared<Preparation>();
  {
    const std::lock_guard lock(state_mutex_);
    preparation_ = preparation;
  }
  const std::string microphone = unpaced_ || audio_encoder_description().empty() ? "none" : config_.microphone;
  std::thread([preparation, size, frame_rate, microphone] {
    proven_video_encoder(size, frame_rate);
    const bool sound = Microphone::available(microphone);
    const std::lock_guard lock(preparation->mutex);
    preparation->sound = sound;
    preparation->done = true;
    preparation->changed.notify_all();
  }).detach();
}

/// Waits a bounded time for what prepare() began. @param sound  whether there is a microphone that delivers
/// @return false when it is not through
bool CameraUnit::wait_prepared(bool* sound) const {
  std::shared_ptr<Preparation> preparation;
  {
    const std::lock_guard lock(state_mutex_);
    preparation = preparation_;
  }
  *sound = false;
  if (!preparation) return true;
  std::unique_lock lock(preparation->mutex);
  const bool through = preparation->changed.wait_for(lock, preparation_patience, [&] { return preparation->done; });
  *sound = preparation->sound;
  return through;
}

/// The microphone to record, or "none" when there is none or it does not answer in time.
std::string CameraUnit::microphone_for_recording() const {
  bool sound = false;
  if (!wait_prepared(&sound)) std::fputs("no sound: the microphone does not answer\n", stderr);
  return sound ? config_.microphone : "none";
}

int CameraUnit::stop_viewfinder() {
  std::shared_ptr<Capture> capture;
  std::thread service;
  StopFlag stop;
  {
    const std::lock_guard control(control_mutex_);
    const std::lock_guard lock(state_mutex_);
    capture = capture_;
    service.swap(service_thread_);
    stop = stop_;
  }
  if (capture == nullptr) return EINVAL;
  if (stop) *stop = true;
  const std::shared_ptr<FrameExchange> exchange = this->exchange();
  if (exchange) exchange->shut();
  capture->wake();
  if (service.joinable()) {
    if (service.get_id() == std::this_thread::get_id()) {
      service.detach();  // a status callback closes its own camera: the thread ends after it
    } else {
      service.join();
    }
  }
  capture->stop();
  // A process that ends while GStreamer is still being asked about encoders may abort.
  bool sound = false;
  wait_prepared(&sound);
  // The pair that is out still belongs in the film.
  if (exchange) exchange->wait_unused(camera_timeouts::pair_return);

  const std::lock_guard control(control_mutex_);
  if (exchange != this->exchange()) return 0;  // another thread has stopped it, and started it again
  end_recording();
  const std::lock_guard lock(state_mutex_);
  recorder_.reset();
  capture_.reset();
  exchange_.reset();
  if (slot_) slot_->clear();
  slot_.reset();
  return 0;
}

std::shared_ptr<FrameExchange> CameraUnit::exchange() const {
  const std::lock_guard lock(state_mutex_);
  return exchange_;
}

std::shared_ptr<Recorder> CameraUnit::recorder() const {
  const std::lock_guard lock(state_mutex_);
  return recorder_;
}

/// A finished frame on its way to screen and film. Filter thread, or streaming thread.
void CameraUnit::publish(const Frame& frame) {
  std::shared_ptr<ViewfinderSlot> slot;
  std::shared_ptr<Recorder> recorder;
  Client viewfinder;
  Client video;
  {
    const std::lock_guard lock(state_mutex_);
    slot = slot_;
    recorder = recorder_;
    viewfinder = viewfinder_client_;
    video = video_client_;
  }
  if (slot) slot->post(frame);
  if (viewfinder.frame != nullptr) call_with_descriptor(viewfinder, frame);
  if (recorder && recorder->push(frame) && video.frame != nullptr) call_with_descriptor(video, frame);
}

void CameraUnit::call_with_descriptor(const Client& client, const Frame& frame) const {
  GstVideoFrame mapped;
  if (!gst_video_frame_map(&mapped, frame.info.get(), frame.buffer.get(), GST_MAP_READ)) return;
  camera_buffer_t buffer = describe_frame(mapped, frame.timestamp);
  client.frame(handle_, &buffer, client.arg);
  gst_video_frame_unmap(&mapped);
}

// --- service thread ---------------------------------------------------------------------------

void CameraUnit::serve(const StopFlag& stop) {
  std::shared_ptr<Capture> capture;
  {
    const std::lock_guard lock(state_mutex_);
    capture = capture_;
  }
  // A file may stand still for long, and says itself when it fails.
  const bool may_stall = !unpaced_ && !source_.is_clip();
  for (bool running = true; running && !*stop;) {
    const Capture::Event event = capture->poll(service_turn);
    if (*stop) return;
    report_recording_error();
    running = false;
    if (event == Capture::Event::ended && unpaced_) {
      finish_clip(stop);
    } else if (event == Capture::Event::ended) {
      revoke("the source has ended", stop);
    } else if (event == Capture::Event::failed) {
      revoke(capture->failure(), stop);
    } else if (may_stall && capture->silence() > camera_timeouts::stalled) {
      revoke("the source gives no more pictures", stop);
    } else {
      running = true;
    }
  }
  // The film may have failed at its very end.
  for (; !*stop && recording_error_ != 0; std::this_thread::sleep_for(service_turn)) report_recording_error();
}

/// The source is lost: no more frames, the client is told, the recording is completed.
void CameraUnit::revoke(const std::string& why, const StopFlag& stop) {
  std::fprintf(stderr, "camera: %s\n", why.c_str());
  lost_ = true;
  std::shared_ptr<Capture> capture;
  Client client;
  {
    const std::lock_guard lock(state_mutex_);
    capture = capture_;
    client = viewfinder_client_;
  }
  const std::shared_ptr<FrameExchange> exchange = this->exchange();
  if (exchange) exchange->shut();
  if (capture) capture->stop();
  if (client.status != nullptr) client.status(handle_, CAMERA_STATUS_RESOURCES_REVOKED, 0, client.arg);
  if (*stop) return;  // whoever stops the viewfinder completes the film
  const std::lock_guard control(control_mutex_);
  end_recording();
}

/// An unpaced clip is through: when its last frame has been edited the film is complete.
void CameraUnit::finish_clip(const StopFlag& stop) {
  const std::shared_ptr<FrameExchange> exchange = this->exchange();
  if (!exchange || !exchange->wait_idle(clip_drain)) {
    revoke("the last picture does not come back", stop);
    return;
  }
  Client client;
  {
    const std::lock_guard control(control_mutex_);
    end_recording();
    const std::lock_guard lock(state_mutex_);
    client = video_client_;
  }
  const std::shared_ptr<Recorder> recorder = this->recorder();
  if (client.status != nullptr && recorder != nullptr && recorder->stop() == 0) {
    client.status(handle_, CAMERA_STATUS_VIDEO_FINISHED, 0, client.arg);
  }
}

// --- controls ---------------------------------------------------------------------------------

void CameraUnit::apply_look() {
  std::shared_ptr<Capture> capture;
  Look look{};
  int zoom = 0;
  {
    const std::lock_guard lock(state_mutex_);
    capture = capture_;
    look = look_of(scene_);
    if (light_) look.brightness += 0.08;
    zoom = zoom_;
  }
  if (!capture) return;
  capture->set_balance(look.brightness, look.contrast, look.saturation);
  capture->set_zoom(1 + zoom / 40.0);
}

int CameraUnit::set_scene_mode(camera_scenemode_t mode) {
  if (!known_scene(mode)) return EINVAL;
  if (unit_ == CAMERA_UNIT_DESKTOP && mode != CAMERA_SCENE_AUTO) return ENOTSUP;
  {
    const std::lock_guard lock(state_mutex_);
    scene_ = mode;
  }
  apply_look();
  return 0;
}

int CameraUnit::set_light(camera_videolightmode_t mode) {
  if (!has_feature(CAMERA_FEATURE_VIDEOLIGHT)) return ENOTSUP;
  if (mode != CAMERA_VIDEOLIGHT_OFF && mode != CAMERA_VIDEOLIGHT_ON) return EINVAL;
  {
    const std::lock_guard lock(state_mutex_);
    light_ = mode == CAMERA_VIDEOLIGHT_ON;
  }
  apply_look();
  return 0;
}

int CameraUnit::set_focus_mode(camera_focusmode_t mode) {
  if (!has_feature(CAMERA_FEATURE_FOCUS)) return ENOTSUP;
  const bool known = mode == CAMERA_FOCUSMODE_OFF || mode == CAMERA_FOCUSMODE_FIXED || mode == CAMERA_FOCUSMODE_AUTO ||
                     mode == CAMERA_FOCUSMODE_MACRO || mode == CAMERA_FOCUSMODE_CONTINUOUS_AUTO;
  return known ? 0 : EINVAL;
}

int CameraUnit::zoom_limits(int* minimum, int* maximum, bool* smooth) const {
  *minimum = 0;
  *maximum = has_feature(CAMERA_FEATURE_ZOOM) ? zoom_maximum : 0;
  *smooth = true;
  return 0;
}

int CameraUnit::set_zoom(int level) {
  if (!has_feature(CAMERA_FEATURE_ZOOM)) return ENOTSUP;
  if (level < 0 || level > zoom_maximum) return EINVAL;
  {
    const std::lock_guard lock(state_mutex_);
    zoom_ = level;
  }
  apply_look();
  return 0;
}

// --- recording --------------------------------------------------------------------------------

int CameraUnit::start_video(const char* filename, camera_viewfinder_callback_t video_callback,
                            camera_status_callback_t status_callback, void* arg) {
  if (filename == nullptr) return EINVAL;
  const std::lock_guard control(control_mutex_);
  std::shared_ptr<Capture> capture;
  {
    const std::lock_guard lock(state_mutex_);
    if (capture_ == nullptr) return EINVAL;
    if (lost_) return EIO;
    if (recorder_ != nullptr) return EALREADY;
    capture = capture_;
  }
  if (const int error = check_writable(filename)) return error;

  Recorder::Setup setup{.path = filename,
                        .info = capture->picture(),
                        .rate_numerator = 0,
                        .rate_denominator = 1,
                        .microphone = microphone_for_recording(),
                        .wait_for_room = unpaced_};
  capture->frame_rate(&setup.rate_numerator, &setup.rate_denominator);
  if (setup.rate_numerator <= 0) {
    setup.rate_numerator = 30;
    setup.rate_denominator = 1;
  }
  const auto recorder = std::make_shared<Recorder>(setup, [this, capture](int error) {
    // Told to the client by the service thread: there it may stop the recording or close the camera.
    recording_error_ = error;
    capture->wake();
  });
  {
    const std::lock_guard lock(state_mutex_);
    recorder_ = recorder;
    video_client_ = {video_callback, status_callback, arg};
    if (exchange_) exchange_->set_wanted(true);
  }
  const int error = recorder->wait_started(recording_start);
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

CameraStatistics CameraUnit::statistics() const {
  const std::shared_ptr<FrameExchange> exchange = this->exchange();
  std::shared_ptr<Recorder> recorder;
  std::shared_ptr<Capture> capture;
  {
    const std::lock_guard lock(state_mutex_);
    capture = capture_;
    recorder = recorder_ != nullptr ? recorder_ : finished_;
  }
  CameraStatistics statistics{};
  if (exchange) {
    statistics.arrived = exchange->arrived();
    statistics.replaced = exchange->replaced() + (capture ? capture->missed() : 0);
    statistics.edited = exchange->edited();
  }
  if (recorder) {
    statistics.recorded = recorder->recorded();
    statistics.not_recorded = recorder->dropped();
    statistics.recorded_ns = recorder->length();
  }
  return statistics;
}

}  // namespace handset

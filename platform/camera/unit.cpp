#include "platform/camera/unit.h"

#include <cerrno>
#include <cstdio>

namespace handset {
namespace {

constexpr std::chrono::milliseconds service_turn{100};
constexpr std::chrono::milliseconds clip_drain{5000};

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
  const bool of_viewfinder = stream == Stream::viewfinder;
  std::shared_ptr<ViewfinderFeed> feed;
  int rotation = 0;
  {
    const std::lock_guard lock(state_mutex_);
    StreamProperties& target = of_viewfinder ? viewfinder_ : video_;
    StreamProperties wanted = target;
    const StreamAbilities abilities{.window = of_viewfinder, .stabilizes = has_feature(CAMERA_FEATURE_STABILIZATION)};
    if (const int error = write_properties(&wanted, abilities, property, values)) return error;
    if (reshapes(target, wanted) && capture_ != nullptr) return EBUSY;
    target = wanted;
    feed = feed_;
    rotation = viewfinder_.rotation;
  }
  if (of_viewfinder && feed) feed->slot().set_rotation(rotation);
  if (!of_viewfinder) apply_stabilization();
  return 0;
}

int CameraUnit::get_properties(Stream stream, int property, std::va_list* values) const {
  const std::lock_guard lock(state_mutex_);
  return read_properties(stream == Stream::viewfinder ? viewfinder_ : video_, property, values);
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
    feed_ = std::make_shared<ViewfinderFeed>(viewfinder_slot(viewfinder_.window_group, viewfinder_.window_id));
    feed_->slot().set_rotation(viewfinder_.rotation);
    feed_->slot().set_notice({});
    feed_->slot().set_hint(source_.stands_in ? "No camera found: this is the built-in scene" : "");
    exchange_ = std::make_shared<FrameExchange>(unpaced_ ? FrameExchange::Pace::wait : FrameExchange::Pace::drop,
                                                [weak = weak_from_this()](const Frame& frame) {
                                                  // A pair may come back after the camera is closed.
                                                  if (const auto self = weak.lock()) self->publish(frame);
                                                });
  }
  lost_ = false;
  if (const int error = launch(size, frame_rate)) return error;
  apply_look();
  apply_stabilization();  // it may have been switched while the capture started
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
  bool stabilized = false;
  {
    const std::lock_guard lock(state_mutex_);
    stabilized = video_.stabilization != 0;
  }
  std::string why;
  std::shared_ptr<Capture> capture = Capture::start(
      {.source = &source_, .size = size, .frame_rate = frame_rate, .unpaced = unpaced_, .stabilized = stabilized},
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
    notify("the camera gives no picture");
    end_feed();
  }
  const std::lock_guard lock(state_mutex_);
  capture_ = capture;
  if (error != 0) exchange_.reset();
  return error;
}

/// Puts a line over the viewfinder, as long as there is one. Any thread.
void CameraUnit::notify(const std::string& text) {
  std::shared_ptr<ViewfinderFeed> feed;
  {
    const std::lock_guard lock(state_mutex_);
    feed = feed_;
  }
  if (feed) feed->slot().set_notice(text);
}

/// No more pictures on the screen from this run.
void CameraUnit::end_feed() {
  std::shared_ptr<ViewfinderFeed> feed;
  {
    const std::lock_guard lock(state_mutex_);
    feed = feed_;
  }
  if (feed) feed->end();
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
  end_feed();
  const std::lock_guard lock(state_mutex_);
  recorder_.reset();
  capture_.reset();
  exchange_.reset();
  feed_.reset();
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
  std::shared_ptr<ViewfinderFeed> feed;
  std::shared_ptr<Recorder> recorder;
  Client viewfinder;
  Client video;
  {
    const std::lock_guard lock(state_mutex_);
    feed = feed_;
    recorder = recorder_;
    viewfinder = viewfinder_client_;
    video = video_client_;
  }
  if (feed) feed->post(frame);
  if (viewfinder.frame != nullptr) call_with_descriptor(viewfinder, frame);
  if (recorder && recorder->push(frame) && video.frame != nullptr) call_with_descriptor(video, frame);
}

void CameraUnit::call_with_descriptor(const Client& client, const Frame& frame) const {
  GstVideoFrame mapped;
  if (!map_frame(frame, GST_MAP_READ, &mapped)) return;
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
  const bool may_stall = !unpaced_ && !source_.may_stand_still();
  for (bool running = true; running && !*stop;) {
    const Capture::Event event = capture->poll(service_turn);
    if (*stop) return;
    report_recording_error();
    running = false;
    if (source_.cast && source_.cast->ended()) {
      revoke("the desktop is no longer shared", stop);
    } else if (event == Capture::Event::ended && unpaced_) {
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
  notify("camera disconnected");
  end_feed();
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

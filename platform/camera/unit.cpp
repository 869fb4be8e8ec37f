#include "platform/camera/unit.h"

#include <cerrno>

#include "platform/camera/capture_start.h"
#include "platform/camera/long_wait.h"

namespace handset {
namespace {

/// A window must not stand still for a device that does not let go.
constexpr std::chrono::milliseconds device_stop{50};
constexpr std::chrono::milliseconds other_stop{5000};

}  // namespace

CameraUnit::CameraUnit(camera_handle_t handle, camera_unit_t unit, std::uint32_t mode, Source source,
                       const CameraServiceConfig& config)
    : handle_(handle),
      unit_(unit),
      mode_(mode),
      source_(std::make_shared<const Source>(std::move(source))),
      config_(config),
      unpaced_(config.unpaced && source_->is_file_paced()) {}

CameraUnit::~CameraUnit() {
  stop_viewfinder();
}

bool CameraUnit::has_feature(int feature) const {
  const bool lens = unit_ != CAMERA_UNIT_DESKTOP;
  switch (feature) {
    case CAMERA_FEATURE_VIDEO:
      return true;
    case CAMERA_FEATURE_FOCUS: {
      const std::shared_ptr<DeviceControls> device = controls();
      return device && device->can_focus();
    }
    case CAMERA_FEATURE_ZOOM:
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
    if (reshapes(target, wanted) && run_ != nullptr) return EBUSY;
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
  if (run_ != nullptr) return EALREADY;
  const bool video_set = video_.width != 0 && video_.height != 0;
  if (video_set && (video_.width != viewfinder_.width || video_.height != viewfinder_.height)) return EINVAL;
  *size = {static_cast<std::uint32_t>(viewfinder_.width), static_cast<std::uint32_t>(viewfinder_.height)};
  return possible_size(size->width, size->height) ? 0 : EINVAL;
}

/// Devices may take long, and so does painting the scene on a slow machine: a window does not wait for them.
bool CameraUnit::waits_for_picture() const {
  const bool may_follow = source_->kind == Source::Kind::device || source_->kind == Source::Kind::scene;
  return config_.wait_for_picture || !may_follow;
}

int CameraUnit::start_viewfinder(camera_viewfinder_callback_t frame_callback, camera_status_callback_t status_callback,
                                 void* arg) {
  const auto run = std::make_shared<Run>();
  {
    const std::lock_guard control(control_mutex_);
    camera_res_t size{};
    if (const int error = check_start(&size)) return error;
    const std::lock_guard lock(state_mutex_);
    viewfinder_client_ = {frame_callback, status_callback, arg};
    feed_ = std::make_shared<ViewfinderFeed>(viewfinder_slot(viewfinder_.window_group, viewfinder_.window_id));
    feed_->slot().set_rotation(viewfinder_.rotation);
    feed_->slot().set_notice({});
    feed_->slot().set_hint(source_->passed_over);
    exchange_ = std::make_shared<FrameExchange>(
        unpaced_ ? FrameExchange::Pace::wait : FrameExchange::Pace::drop,
        config_.edited_only ? FrameExchange::Unedited::drop : FrameExchange::Unedited::publish,
        [weak = weak_from_this()](const Frame& frame, std::uint64_t pair) {
          // A pair may come back after the camera is closed.
          if (const auto self = weak.lock()) self->publish(frame, pair);
        });
    lost_ = false;
    run_ = run;
    service_thread_ = std::thread([self = shared_from_this(), run] { self->serve(run); });
  }
  if (!waits_for_picture()) return 0;
  const auto settled = [&] {
    const std::lock_guard lock(run->mutex);
    return run->settled;
  };
  if (source_->kind == Source::Kind::device) {
    wait_long(settled);  // up to fifteen seconds, in which the program may be asked to end
    if (!settled()) settle(*run, ECANCELED);
  }
  std::unique_lock lock(run->mutex);
  run->changed.wait(lock, [&] { return run->settled; });
  const int error = run->error;
  lock.unlock();
  if (error != 0) stop_viewfinder();
  return error;
}

/// Changes what the screen shows besides the picture. Any thread.
void CameraUnit::with_slot(const std::function<void(ViewfinderSlot&)>& change) const {
  std::shared_ptr<ViewfinderFeed> feed;
  {
    const std::lock_guard lock(state_mutex_);
    feed = feed_;
  }
  if (feed) change(feed->slot());
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
  RunPtr run;
  std::shared_ptr<DeviceControls> controls;
  std::thread service;
  {
    const std::lock_guard control(control_mutex_);
    const std::lock_guard lock(state_mutex_);
    run = run_;
    service.swap(service_thread_);
  }
  if (run == nullptr) return EINVAL;
  run->stop = true;
  const std::shared_ptr<FrameExchange> exchange = this->exchange();
  if (exchange) exchange->shut();
  if (const auto running = capture()) running->wake();
  if (service.joinable()) {
    if (service.get_id() == std::this_thread::get_id()) {
      service.detach();  // a status callback closes its own camera: the thread ends after it
    } else {
      service.join();
    }
  }
  {
    const std::lock_guard lock(state_mutex_);
    controls.swap(controls_);
  }
  if (controls) controls->release();
  const bool device = source_->kind == Source::Kind::device;
  if (const auto last = capture()) {
    stop_capture(last, device && !config_.wait_for_picture ? device_stop : other_stop);
  }
  // A process that returns from main() while GStreamer is being asked about encoders may abort. The window's does not
  // return (end_process), and nobody waits in it.
  if (config_.wait_for_picture) wait_prepared();
  if (controls) controls->wait_released(device && !config_.wait_for_picture ? device_stop : camera_timeouts::put_back);
  // The pair that is out still belongs in the film.
  if (exchange) exchange->wait_unused(camera_timeouts::pair_return);

  const std::lock_guard control(control_mutex_);
  if (exchange != this->exchange()) return 0;  // another thread has stopped it, and started it again
  end_recording();
  forget_recording();
  end_feed();
  const std::lock_guard lock(state_mutex_);
  capture_.reset();
  exchange_.reset();
  feed_.reset();
  run_.reset();
  preparation_.reset();
  return 0;
}

std::shared_ptr<FrameExchange> CameraUnit::exchange() const {
  const std::lock_guard lock(state_mutex_);
  return exchange_;
}

std::shared_ptr<Capture> CameraUnit::capture() const {
  const std::lock_guard lock(state_mutex_);
  return capture_;
}

std::shared_ptr<Recorder> CameraUnit::recorder() const {
  const std::lock_guard lock(state_mutex_);
  return recorder_;
}

/// A finished frame on its way to screen and film. Filter thread, or streaming thread.
void CameraUnit::publish(const Frame& frame, std::uint64_t pair) {
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
  const bool belongs = pair >= first_pair_;
  if (recorder && belongs && recorder->push(frame) && video.frame != nullptr) call_with_descriptor(video, frame);
}

void CameraUnit::call_with_descriptor(const Client& client, const Frame& frame) const {
  GstVideoFrame mapped;
  if (!map_frame(frame, GST_MAP_READ, &mapped)) return;
  camera_buffer_t buffer = describe_frame(mapped, frame.timestamp);
  client.frame(handle_, &buffer, client.arg);
  gst_video_frame_unmap(&mapped);
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

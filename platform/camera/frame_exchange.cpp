#include "platform/camera/frame_exchange.h"

#include <atomic>
#include <cerrno>

namespace handset {

camera_buffer_t describe_frame(const GstVideoFrame& mapped, std::int64_t timestamp) {
  auto* luma = static_cast<std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&mapped, 0));
  auto* chroma = static_cast<std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&mapped, 1));
  const int height = GST_VIDEO_FRAME_HEIGHT(&mapped);
  const int chroma_stride = GST_VIDEO_FRAME_PLANE_STRIDE(&mapped, 1);
  return {
      .data = luma,
      .data_size = static_cast<std::uint64_t>(chroma - luma) + static_cast<std::uint64_t>(chroma_stride) * (height / 2),
      .metadata_size = 0,
      .timestamp = timestamp,
      .frametype = CAMERA_FRAMETYPE_NV12,
      .nv12 = {.height = static_cast<std::uint32_t>(height),
               .width = static_cast<std::uint32_t>(GST_VIDEO_FRAME_WIDTH(&mapped)),
               .stride = static_cast<std::uint32_t>(GST_VIDEO_FRAME_PLANE_STRIDE(&mapped, 0)),
               .uv_offset = chroma - luma,
               .uv_stride = chroma_stride},
      .pair = 0,
      .role = 0,
  };
}

namespace {

/// Shared by all exchanges, so that a descriptor of an earlier one never matches a later one's pair.
std::atomic<std::uint64_t> next_pair = 1;

}  // namespace

FrameExchange::FrameExchange(Pace pace, Unedited unedited, Publish publish)
    : pace_(pace), unedited_(unedited), publish_(std::move(publish)) {}

void FrameExchange::offer(Frame frame) {
  std::unique_lock lock(mutex_);
  ++arrived_;
  if (pace_ == Pace::wait) {
    changed_.wait(lock, [this] { return shut_ || (armed_ && wanted_ && state_ == State::idle); });
  }
  if (shut_) return;
  if (!armed_) {
    publish_as_is(lock, frame);
  } else if (state_ == State::idle) {
    announce(lock, std::move(frame));
  } else {
    if (waiting_) ++replaced_;
    waiting_ = std::move(frame);
  }
}

/// Hands an unedited frame to the consumers; leaves the lock held.
void FrameExchange::publish_as_is(std::unique_lock<std::mutex>& lock, const Frame& frame) {
  if (unedited_ == Unedited::drop) return;
  // A pair of an earlier key that is still out would arrive after this frame.
  if (state_ != State::idle) {
    ++replaced_;
    return;
  }
  state_ = State::publishing;
  lock.unlock();
  publish_(frame, 0);
  lock.lock();
  state_ = State::idle;
  changed_.notify_all();
}

/// Makes `frame` the pair in flight and sends its notice; leaves the lock released.
void FrameExchange::announce(std::unique_lock<std::mutex>& lock, Frame frame) {
  current_ = std::move(frame);
  state_ = State::announced;
  roles_back_ = 0;
  pair_ = next_pair++;
  const pulse_event_t event = event_;
  lock.unlock();
  // If the receiver is gone, it disarms its key or closes the camera; until then frames only replace each other.
  MsgDeliverEvent(event);
}

void FrameExchange::set_wanted(bool wanted) {
  const std::lock_guard lock(mutex_);
  wanted_ = wanted;
  changed_.notify_all();
}

int FrameExchange::enable(camera_eventmode_t mode, camera_eventkey_t* key, const pulse_event_t& event) {
  if (mode != CAMERA_EVENTMODE_READWRITE || event.notify != notify_pulse) return EINVAL;
  std::unique_lock lock(mutex_);
  if (armed_) return EBUSY;
  // After this call no unedited frame reaches a consumer, not even one already on its way.
  changed_.wait(lock, [this] { return shut_ || state_ != State::publishing; });
  if (shut_) return EIO;
  armed_ = true;
  event_ = event;
  *key = ++key_;
  changed_.notify_all();
  return 0;
}

int FrameExchange::disable(camera_eventkey_t key) {
  const std::lock_guard lock(mutex_);
  if (!armed_ || key != key_) return EBADF;
  armed_ = false;
  drop_announced();
  return 0;
}

void FrameExchange::drop_announced() {
  waiting_ = {};
  if (state_ == State::announced) {
    current_ = {};
    state_ = State::idle;
  }
  changed_.notify_all();
}

int FrameExchange::fetch(camera_eventkey_t key, camera_buffer_t* input, camera_buffer_t* output) {
  const std::lock_guard lock(mutex_);
  if (!armed_ || key != key_) return EBADF;
  if (state_ != State::announced) return EAGAIN;
  if (!map_frame(current_, GST_MAP_READWRITE, &mapped_)) {
    drop_announced();
    return EIO;
  }
  state_ = State::out;
  *input = describe_frame(mapped_, current_.timestamp);
  input->pair = pair_;
  *output = *input;
  output->role = 1;
  return 0;
}

int FrameExchange::give_back(const camera_buffer_t& buffer) {
  std::unique_lock lock(mutex_);
  const std::uint32_t bit = 1U << (buffer.role & 1U);
  if (state_ != State::out || buffer.pair != pair_ || buffer.role > 1 || (roles_back_ & bit) != 0) return EINVAL;
  roles_back_ |= bit;
  if (roles_back_ != 3U) return 0;

  ++edited_;
  gst_video_frame_unmap(&mapped_);
  // The pair stays in flight until it is published: frames reach the consumers in order.
  state_ = State::publishing;
  lock.unlock();
  publish_(current_, pair_);
  lock.lock();
  Frame done = std::move(current_);
  state_ = State::idle;
  changed_.notify_all();
  if (waiting_ && armed_ && !shut_) {
    announce(lock, std::move(waiting_));
  } else {
    lock.unlock();
  }
  return 0;
}

bool FrameExchange::is_armed() const {
  const std::lock_guard lock(mutex_);
  return armed_;
}

std::uint64_t FrameExchange::coming_pair() {
  return next_pair;
}

void FrameExchange::shut() {
  const std::lock_guard lock(mutex_);
  shut_ = true;
  drop_announced();
}

bool FrameExchange::wait_idle(std::chrono::milliseconds limit) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, limit, [this] { return state_ == State::idle; });
}

int FrameExchange::add_user(int count) {
  const std::lock_guard lock(mutex_);
  if (users_ + count < 0) return EINVAL;
  users_ += count;
  changed_.notify_all();
  return 0;
}

bool FrameExchange::wait_unused(std::chrono::milliseconds limit) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, limit, [this] { return state_ == State::idle && users_ == 0; });
}

std::uint64_t FrameExchange::arrived() const {
  const std::lock_guard lock(mutex_);
  return arrived_;
}

std::uint64_t FrameExchange::replaced() const {
  const std::lock_guard lock(mutex_);
  return replaced_;
}

std::uint64_t FrameExchange::edited() const {
  const std::lock_guard lock(mutex_);
  return edited_;
}

}  // namespace handset

#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>

#include "platform/camera/camera.h"
#include "platform/camera/frame.h"

namespace handset {

/// The descriptor of a mapped frame; pair and role are 0. Valid while the mapping is.
camera_buffer_t describe_frame(const GstVideoFrame& mapped, std::int64_t timestamp);

/// Hands frames from the streaming thread to whoever edits them, and on to the consumers.
///
/// One frame pair is in flight at a time. While it is announced or out, a paced exchange keeps the newest frame waiting
/// and counts each one it replaces; an unpaced one blocks the streaming thread instead. Without an armed event, frames
/// go to the consumers unchanged, or nowhere.
class FrameExchange {
 public:
  enum class Pace { drop, wait };
  enum class Unedited { publish, drop };  ///< what happens to frames while no event is armed
  /// Gets each finished frame, in order, with no lock held: on the thread that returned it, or on the streaming thread
  /// if no event is armed. Must not allocate or block.
  /// @param pair  grows from frame to frame; 0 for an unedited frame
  using Publish = std::function<void(const Frame&, std::uint64_t pair)>;

  FrameExchange(Pace pace, Unedited unedited, Publish publish);

  /// Takes a frame from the source. Streaming thread. An unpaced exchange returns once the frame is announced, or at
  /// once after shut().
  void offer(Frame frame);

  /// Whether consumers want frames; an unpaced exchange announces none until they do. Any thread.
  void set_wanted(bool wanted);

  // The frame events of camera.h. Any thread; results as there.
  int enable(camera_eventmode_t mode, camera_eventkey_t* key, const pulse_event_t& event);
  int disable(camera_eventkey_t key);
  int fetch(camera_eventkey_t key, camera_buffer_t* input, camera_buffer_t* output);
  int give_back(const camera_buffer_t& buffer);

  /// Whether an editor is there.
  bool is_armed() const;
  /// The pair that is announced next: what is set up before this call is in it, and in all that follow.
  static std::uint64_t coming_pair();

  /// No more frames: drops what is waiting, unblocks offer(), makes later calls no-ops.
  void shut();
  /// Waits until no pair is announced or out. @return false on timeout
  bool wait_idle(std::chrono::milliseconds limit);

  /// Counts the threads that declare use of the camera. @return EINVAL if more leave than came
  int add_user(int count);
  /// Waits until no pair is out and no user is left. @return false on timeout
  bool wait_unused(std::chrono::milliseconds limit);

  std::uint64_t arrived() const;   ///< frames that the source delivered
  std::uint64_t replaced() const;  ///< frames dropped because a newer one came first
  std::uint64_t edited() const;    ///< pairs fetched and returned

 private:
  enum class State { idle, announced, out, publishing };

  void publish_as_is(std::unique_lock<std::mutex>& lock, const Frame& frame);
  void announce(std::unique_lock<std::mutex>& lock, Frame frame);
  void drop_announced();

  const Pace pace_;
  const Unedited unedited_;
  const Publish publish_;

  /// Guards everything below. Held for bookkeeping and for mapping a frame; never while sending a pulse or publishing a
  /// frame.
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  State state_ = State::idle;
  Frame current_;
  Frame waiting_;
  GstVideoFrame mapped_{};
  std::uint64_t pair_ = 0;
  std::uint32_t roles_back_ = 0;  ///< one bit per returned descriptor
  bool armed_ = false;
  bool wanted_ = false;
  int users_ = 0;
  bool shut_ = false;
  camera_eventkey_t key_ = 0;
  pulse_event_t event_{};
  std::uint64_t arrived_ = 0;
  std::uint64_t replaced_ = 0;
  std::uint64_t edited_ = 0;
};

}  // namespace handset

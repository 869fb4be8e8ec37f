#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/camera/film.h"
#include "platform/camera/overload.h"
#include "platform/camera/sound_track.h"

namespace handset {

/// A recording: takes finished frames and brings them, with the microphone's sound, into a film, or
/// into several that follow each other without a gap where one would grow too long or too large.
class Recorder {
 public:
  struct Setup {
    std::string path;  ///< an existing file, which is overwritten
    std::shared_ptr<const GstVideoInfo> info;
    int rate_numerator;
    int rate_denominator;
    std::string microphone;                                       ///< none, or a setting as Microphone takes it
    bool wait_for_room;                                           ///< push() waits for the encoder instead of dropping
    std::chrono::nanoseconds part_length{std::chrono::hours{1}};  ///< the next file is begun then
    std::uint64_t part_bytes = 3'993U * 1024 * 1024;  ///< or when one is so large: FAT holds less than 4 GiB
    std::uint64_t disk_margin = 16U * 1024 * 1024;    ///< bytes that must stay free on the disk
    /// Told what a viewfinder is to say of the recording, empty for nothing, when that changes; on the recorder's
    /// thread. May be empty.
    std::function<void(const std::string& status)> show_status{};
    /// Frames that were lost on their way here so far. May be empty.
    std::function<std::uint64_t()> lost_before{};
  };
  /// Told once when the recording ends by itself, with an errno value; on the recorder's thread, after
  /// the file is complete.
  using Ended = std::function<void(int error)>;

  Recorder(Setup setup, Ended ended);
  /// Stops.
  ~Recorder();

  /// Takes a frame. One thread at a time; allocates nothing.
  /// @return false when it was dropped: the encoder is too far behind, or the recording has ended
  bool push(const Frame& frame);

  /// Waits until a frame has been taken. @return whether one has, by the end of the time or of the recording
  bool wait_taken(std::chrono::milliseconds limit);

  /// Waits until the film of the pushed frames has reached its file.
  /// @return 0, or an errno value: the film cannot be made, or no frame came in time
  int wait_started(std::chrono::milliseconds limit);

  /// Ends the recording: what was taken is encoded, the file completed. Any thread; later calls return
  /// the same. @return 0, or the errno value that ended it
  int stop();

  std::uint64_t recorded() const { return recorded_; }
  std::uint64_t dropped() const { return dropped_; }
  std::int64_t length() const { return length_; }  ///< nanoseconds

 private:
  struct Part {
    std::shared_ptr<Film> film;
    std::string path;
  };
  enum class Phase { waiting, filming, ended };
  static constexpr std::size_t queue_length = 10;

  void run();
  Frame next_frame(bool* stopping);
  void feed(const Frame& frame);
  bool begin_film(const std::string& path, const Frame& first);
  void look_after();
  bool disk_is_full() const;
  bool part_is_full(const Frame& next) const;
  void roll(const Frame& next);
  void keep_up();
  std::string status();
  void finish_part(Part part);
  void remove_part(const std::string& path) const;
  void show(const std::string& status);
  void fail(int error, const std::string& why);
  void conclude();

  const Setup setup_;
  const Ended ended_;

  /// Guards the queue, stopping_, taken_ and phase_; held for pointer moves only.
  std::mutex mutex_;
  std::condition_variable changed_;
  std::array<Frame, queue_length> queue_;
  std::size_t first_ = 0;
  std::size_t count_ = 0;
  bool stopping_ = false;
  bool taken_ = false;  ///< a frame was
  Phase phase_ = Phase::waiting;

  std::atomic<std::uint64_t> recorded_{0};
  std::atomic<std::uint64_t> dropped_{0};
  std::atomic<std::int64_t> length_{0};
  std::atomic<int> error_{0};

  // The recorder's thread.
  std::shared_ptr<Film> film_;
  std::string path_;                   ///< of the current film
  Part rolled_;                        ///< a film that still waits for its last sound
  std::int64_t start_ = 0;             ///< time 0 of the current film
  std::int64_t earlier_ = 0;           ///< length of the films before it
  std::unique_ptr<SoundTrack> sound_;  ///< null without sound
  std::string status_;                 ///< that was shown last
  OverloadWatch overload_{queue_length};
  LossWatch losses_;
  int films_ = 0;
  int turns_waited_ = 0;  ///< for the encoder to take the next frame
  std::chrono::steady_clock::time_point next_look_{};
  std::vector<std::thread> finishing_;  ///< films that a roll left to be completed
  std::atomic<int> part_error_{0};      ///< the first of theirs

  /// Guards joining thread_.
  std::mutex join_mutex_;
  std::thread thread_;
};

/// Creates `stem.mp4`, or with the first number that is free `stem_1.mp4`, `stem_2.mp4` …; never an existing
/// file. @param first_number 0 begins without a number
/// @return 0 with `path` and an open `fd`, or an errno value
int create_video_file(const std::string& stem, int first_number, std::string* path, int* fd);

}  // namespace handset

#pragma once

#include <gst/app/gstappsink.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "platform/camera/encoders.h"
#include "platform/camera/film_clock.h"
#include "platform/camera/film_file.h"
#include "platform/camera/frame.h"

namespace handset {

/// One MP4 file in the making: the encoder pipeline, fresh for every file.
///
/// The muxer writes fragments, so the file can be played at any moment, also after the process was killed; FilmFile
/// makes an ordinary MP4 of them at the end. Used from one thread at a time; only wait_ready's wake-ups and the writing
/// come from the pipeline's own threads.
class Film {
 public:
  struct Setup {
    std::string path;  ///< an existing file, which is overwritten
    std::shared_ptr<const GstVideoInfo> info;
    int rate_numerator;  ///< frames per second; a variable rate is told as the nominal one
    int rate_denominator;
    bool sound;
    std::int64_t start;  ///< CLOCK_MONOTONIC nanoseconds that become time 0
  };

  /// Builds and starts.
  /// @return null with `error` filled: no encoder, or the file cannot be written
  static std::unique_ptr<Film> start(const Setup& setup, std::string* error);
  ~Film();

  /// Waits until the pipeline takes another frame. @return false at the end of the time, or when it has failed
  bool wait_ready(std::chrono::milliseconds limit);
  /// Whether data has reached the file.
  bool in_file() const { return file_.has_head(); }
  /// Whether a picture has, which makes it a film.
  bool has_picture() const { return file_.has_picture(); }
  /// Bytes in the file so far.
  std::uint64_t bytes() const { return file_.bytes(); }
  /// Feeds a frame; its time is relative to Setup::start.
  void push_video(const Frame& frame);
  /// Feeds sound (audio_caps) that starts at a sample counted from Setup::start.
  void push_audio(BufferPtr block, std::uint64_t first_sample);

  /// Goes on with an encoder that costs less, from the next frame. @return false when there is none
  bool lighten();

  /// 0, or the errno value that ended the film: of the write that failed, else EIO.
  int check();
  /// Text for error().
  const std::string& failure() const { return failure_; }

  /// Completes the file. @return 0 or an errno value; ETIMEDOUT when the pipeline did not finish in time.
  /// After a failure the file holds what was written so far, and plays; it is empty if that was nothing. Any thread.
  int finish();

  std::int64_t length() const { return clock_.length(); }  ///< nanoseconds of picture fed so far

 private:
  explicit Film(const Setup& setup);
  bool build(std::string* error);
  GstFlowReturn write(GstAppSink* sink);
  int take_message(GstMessage* message);
  void set_ready(bool ready);

  const Setup setup_;
  ElementPtr pipeline_;
  ElementPtr video_;
  ElementPtr audio_;
  BusPtr bus_;
  FilmFile file_;  ///< the pipeline's thread writes it; finish() completes it when that has ended
  std::string failure_;
  camera_res_t size_{};
  int nominal_rate_ = 0;
  std::optional<VideoEncoder> encoder_;
  int error_ = 0;
  FilmClock clock_;

  /// Guards ready_, which the pipeline's threads set.
  std::mutex mutex_;
  std::condition_variable changed_;
  bool ready_ = true;
};

}  // namespace handset

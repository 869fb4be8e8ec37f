#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "platform/camera/frame.h"
#include "platform/camera/source.h"
#include "platform/camera/stabilizer.h"

namespace handset {

/// The capture pipeline of one running unit: source, crop, scale, colour; its frames are NV12,
/// full-range BT.601, of one size, upright, and nobody else holds their memory.
class Capture {
 public:
  struct Setup {
    std::shared_ptr<const Source> source;
    camera_res_t size;
    int frame_rate;
    bool unpaced;                          ///< a clip runs once, as fast as its frames are taken
    bool stabilized = false;               ///< as set_stabilized does it, from the first frame on
    int way = 0;                           ///< of Source::ways()
    std::shared_ptr<void> hold = nullptr;  ///< let go of when the capture has stopped
  };
  /// Runs on the streaming thread; may block to slow an unpaced source.
  using Deliver = std::function<void(Frame)>;

  /// Builds and starts. Returns before the first frame.
  /// @return null with `error` filled when the pipeline cannot be built or refuses to start
  static std::unique_ptr<Capture> start(Setup setup, Deliver deliver, std::string* error);
  ~Capture();

  /// What poll() found.
  enum class Event { none, ended, failed };
  /// Looks after the pipeline: errors, clip ends, loops. Waits up to `limit` for news. Service thread.
  Event poll(std::chrono::milliseconds limit);
  /// Ends a poll() that waits. Any thread.
  void wake();
  /// Why poll() said failed.
  const std::string& failure() const { return failure_; }

  /// Waits for the first frame. @return false when it has not come in time
  bool wait_first_frame(std::chrono::milliseconds limit);
  /// Geometry and colours of the frames; null before the first.
  std::shared_ptr<const GstVideoInfo> picture() const;
  /// Since the newest frame (or the start).
  std::chrono::nanoseconds silence() const;
  /// Whether nothing has come for that long although no picture is waiting for its time, or for being taken.
  bool is_starved(std::chrono::nanoseconds limit) const;

  /// Magnification about the centre, 1 or more. Any thread.
  void set_zoom(double factor);
  /// Exposure and colour preset; zeros cost nothing. Any thread.
  void set_balance(double brightness, double contrast, double saturation);
  /// Twice the light, see brighten.h; off costs nothing. Any thread.
  void set_brighten(bool on) { brighten_ = on; }
  /// Takes the shake out of the frames, for which a little around them is cropped. Holds from one of the next frames
  /// on, whose size stays the same; off, it costs nothing. Any thread.
  void set_stabilized(bool on);
  /// Frame rate as negotiated; 0/1 while unknown or variable.
  void frame_rate(int* numerator, int* denominator) const;

  /// Frames that a live source itself skipped: its frame numbers have gaps.
  std::uint64_t missed() const { return missed_; }
  /// Frames that had to be copied because somebody upstream still read them.
  std::uint64_t copied() const { return copied_; }

  /// Stops the streaming thread, and waits for the device. deliver() must not be blocked any more. Any thread.
  void stop();

 private:
  Capture(Setup setup, Deliver deliver);

  bool build(std::string* error);
  bool begin(std::string* error);
  void update_crop();
  GstFlowReturn take_sample();
  static GstPadProbeReturn on_buffer(GstPad* pad, GstPadProbeInfo* info, gpointer self);
  std::int64_t time_of(GstSample* sample);
  void count_missed(GstBuffer* frame);
  Frame make_exclusive(Frame frame);
  void ask_for_size();
  bool take_caps(GstCaps* caps);
  bool choose_view(Frame* frame);
  bool seek_to_start(bool flush);
  bool turn_had_picture();
  void stop_pipeline();
  void complete_times(GstBuffer* buffer);
  static GstPadProbeReturn on_output_event(GstPad* pad, GstPadProbeInfo* info, gpointer self);
  static GstPadProbeReturn on_input_event(GstPad* pad, GstPadProbeInfo* info, gpointer self);
  static GstFlowReturn on_new_sample(GstElement* sink, gpointer self);

  Setup setup_;
  const Deliver deliver_;
  ElementPtr pipeline_;
  ElementPtr crop_;
  ElementPtr shape_;  ///< caps that the converter has to meet
  ElementPtr balance_;
  ElementPtr sink_;
  BusPtr bus_;
  std::string failure_;

  // Service thread: turns of a clip.
  int empty_turns_ = 0;  ///< that brought no picture, in a row
  std::uint64_t taken_before_ = 0;

  /// Guards what follows, up to the streaming thread's own. Never held during a call into GStreamer
  /// that could wait for the streaming thread.
  mutable std::mutex mutex_;
  std::condition_variable arrived_;
  bool has_frame_ = false;
  std::int64_t last_frame_ = 0;
  int input_width_ = 0;
  int input_height_ = 0;
  double pixel_shape_ = 1;  ///< width by height of the input's pixels
  double zoom_ = 1;
  int rate_numerator_ = 0;
  int rate_denominator_ = 1;

  std::shared_ptr<const GstVideoInfo> info_;  ///< written by the streaming thread

  std::atomic<bool> brighten_{false};
  std::atomic<bool> stabilized_;  ///< as asked for
  std::atomic<std::uint64_t> missed_{0};
  std::atomic<std::uint64_t> copied_{0};
  std::atomic<std::uint64_t> taken_{0};
  std::atomic<bool> occupied_{false};  ///< a picture waits in the sink, or is being taken

  // Streaming thread.
  GstClockTime next_pts_ = 0;                  ///< of a clip's picture without a time
  GstClockTime frame_time_ = GST_SECOND / 30;  ///< of a clip's picture without a duration
  BufferPtr arriving_;                         ///< the frame behind the stand-in that is in the sink
  guint64 last_offset_ = GST_BUFFER_OFFSET_NONE;
  GstClockTime last_running_ = GST_CLOCK_TIME_NONE;  ///< of the newest picture
  GstClockTime last_duration_ = GST_CLOCK_TIME_NONE;
  bool limited_range_ = false;  ///< the converter leaves frames in the input's limited range
  CapsPtr caps_;
  std::shared_ptr<const GstVideoInfo> canvas_;  ///< of the buffers, while they are larger than the frames
  std::unique_ptr<Stabilizer> stabilizer_;      ///< while there is a canvas
};

/// The rectangle of an input that fills an output of another shape, magnified: pixels to cut off on
/// each side, even.
/// @param pixel_shape  width by height of the input's pixels; the output's are square
struct Crop {
  int left, right, top, bottom;
};
Crop crop_to_fill(int input_width, int input_height, unsigned output_width, unsigned output_height, double zoom,
                  double pixel_shape = 1);

/// Nanoseconds of CLOCK_MONOTONIC.
std::int64_t monotonic_now();

}  // namespace handset

#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "platform/camera/gst_ptr.h"

/// Controls every `fakemicrophone`, a GStreamer element that sounds like an audiotestsrc and can be made late, to fail
/// and to hang. A singleton, never destroyed, since microphones may be abandoned.
class FakeMicrophone {
 public:
  /// The one, ready to be used as "gst:fakemicrophone is-live=true".
  static FakeMicrophone& instance();

  /// Resets everything. Releases what hangs.
  void reset();
  void set_opening_time(int milliseconds);
  void set_broken(bool broken);
  void set_opening_hangs(bool hangs);
  void set_closing_hangs(bool hangs);

  /// How often one has begun to be opened, and to deliver.
  int opened() const;
  int delivering() const;
  int closed() const;
  /// Time of the last one's first block, CLOCK_MONOTONIC nanoseconds.
  std::int64_t delivering_since() const;
  /// Unplugs the one that is open.
  void unplug();
  void set_volume(double volume);

  /// Called by the elements. @return false to fail
  bool change(GstElement* element, GstStateChange transition);
  void changed(GstStateChange transition);
  void begin(std::int64_t first_block);

 private:
  mutable std::mutex mutex_;  ///< guards the rest
  std::condition_variable changed_;
  handset::ElementPtr element_;
  int opening_time_ = 0;
  bool broken_ = false;
  bool opening_hangs_ = false;
  bool closing_hangs_ = false;
  int opened_ = 0;
  int delivering_ = 0;
  int closed_ = 0;
  std::int64_t since_ = 0;
};

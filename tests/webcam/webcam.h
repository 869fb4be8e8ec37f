#pragma once

// A webcam that can be plugged in, filmed with, and be made to misbehave.

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/webcam/usbip.h"
#include "tests/webcam/uvc_device.h"

namespace webcam {

struct Setting {
  int port = 0;
  Identity identity;
  std::vector<Mode> modes;
  std::vector<Control> controls;
  /// Commands for Webcam::obey(), each with the number of a stream's frame before which it is carried out.
  std::vector<std::pair<int, std::string>> plan;
};

class Webcam {
 public:
  /// Not plugged in yet. @param journal  where every line about the host's doings goes
  Webcam(Setting setting, std::FILE* journal);
  ~Webcam();
  Webcam(const Webcam&) = delete;
  Webcam& operator=(const Webcam&) = delete;

  /// Carries out one command. Any thread.
  ///   plug, unplug
  ///   refuse          stalls the negotiation of every stream from now on; accept ends it
  ///   dead            accepts streams and sends nothing; alive ends it
  ///   late SECONDS    each stream's first frame comes this much later
  ///   stall SECONDS   sends nothing for so long, then goes on with the next number
  ///   broken N        damages every Nth frame: a packed one in its middle, an unpacked one is cut; 0 ends it
  ///   repeat N        sends every Nth frame twice; 0 ends it
  /// @return false for a word that is none of these, or a device that the controller refused
  bool obey(const std::string& command);

 private:
  using Clock = std::chrono::steady_clock;

  void note(const std::string& line);
  bool plug();
  void unplug();
  void run();
  void film(const Stream& stream, int start);
  bool still_runs(int start) const;
  bool wait_until(Clock::time_point when, int start);
  bool send_frame(const Bytes& frame, bool cut, int start);
  void follow_plan(int frame);
  Bytes damaged(Bytes frame, Format format) const;

  const Setting setting_;
  std::FILE* journal_;
  std::mutex journal_mutex_;
  UvcDevice device_;

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::shared_ptr<UsbLink> link_;  ///< guarded, as all below
  bool dead_ = false;
  double late_seconds_ = 0;
  Clock::time_point stalled_until_{};
  int broken_every_ = 0;
  int repeat_every_ = 0;
  bool ends_ = false;

  int number_ = 0;         ///< of the next frame; stream thread
  bool frame_id_ = false;  ///< toggles with each frame; stream thread
  std::thread thread_;
};

}  // namespace webcam

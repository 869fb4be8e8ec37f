#pragma once

// The webcam's half of the conversation over the control endpoint.

#include <condition_variable>
#include <cstdio>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "tests/webcam/usbip.h"
#include "tests/webcam/uvc.h"

namespace webcam {

/// What the host has asked for.
struct Stream {
  Format format;
  int width;
  int height;
  double rate;
};

/// Answers requests and remembers what they set. Each control that the host sets becomes a line of the journal:
/// "set NAME VALUE". Thread-safe.
class UvcDevice {
 public:
  /// @param note  writes a line into the journal; called with no lock held
  UvcDevice(Identity identity, const std::vector<Mode>& modes, std::vector<Control> controls,
            std::function<void(const std::string& line)> note);

  std::optional<Bytes> answer(const Setup& setup, const Bytes& data);

  /// Whether probe and commit are refused from now on.
  void refuse(bool refuses);
  /// The stream that is to run now and the number of its start, which grows with each; none when it is to stand still.
  std::optional<Stream> stream(int* start) const;
  /// The device was unplugged: nothing runs any more.
  void reset();

 private:
  std::optional<Bytes> descriptor(const Setup& setup) const;
  std::optional<Bytes> streaming_request(const Setup& setup, const Bytes& data);
  std::optional<Bytes> control_request(const Setup& setup, const Bytes& data);
  Bytes probe_answer() const;
  void negotiate(const Bytes& wish);
  void start();
  void stop();

  const Identity identity_;
  const std::vector<FormatGroup> formats_;
  const std::function<void(const std::string&)> note_;
  mutable std::mutex mutex_;
  std::vector<Control> controls_;  ///< guarded, as all below
  std::size_t format_ = 0;
  std::size_t mode_ = 0;
  std::size_t rate_ = 0;
  bool refuses_ = false;
  bool streams_ = false;
  int starts_ = 0;
};

}  // namespace webcam

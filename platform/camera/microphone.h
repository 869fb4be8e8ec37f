#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "platform/camera/gst_ptr.h"

namespace handset {

inline constexpr int audio_rate = 48000;
inline constexpr int audio_channels = 2;
/// Format of all sound in the service: 32-bit float, interleaved.
inline constexpr int audio_frame_bytes = audio_channels * static_cast<int>(sizeof(float));
inline constexpr char audio_caps[] = "audio/x-raw,format=F32LE,rate=48000,channels=2,layout=interleaved";

/// A running microphone.
class Microphone {
 public:
  /// Gets a block of sound and the time of its first sample, nanoseconds of CLOCK_MONOTONIC. Runs on
  /// the microphone's streaming thread.
  using Deliver = std::function<void(BufferPtr block, std::int64_t timestamp)>;

  /// Starts one. `kind` is default, none or tone.
  /// @return null for none, or where there is no microphone
  static std::unique_ptr<Microphone> start(const std::string& kind, const Deliver& deliver);
  /// Whether start() would find one; takes as long as a sound server takes to answer or refuse.
  static bool available(const std::string& kind);
  ~Microphone();

 private:
  explicit Microphone(Deliver deliver);
  static std::unique_ptr<Microphone> try_start(const std::string& source, Deliver deliver);
  GstFlowReturn take_sample();

  const Deliver deliver_;
  ElementPtr pipeline_;
  ElementPtr sink_;
};

}  // namespace handset

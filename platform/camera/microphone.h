#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <thread>

#include "platform/camera/gst_ptr.h"

namespace handset {

inline constexpr int audio_rate = 48000;
inline constexpr int audio_channels = 2;
/// Format of all sound in the service: 32-bit float, interleaved.
inline constexpr int audio_frame_bytes = audio_channels * static_cast<int>(sizeof(float));

/// Samples in a time.
constexpr std::int64_t samples_of(std::int64_t nanoseconds) {
  return nanoseconds * (audio_rate / 1000) / 1'000'000;
}
/// Samples in a block of sound.
inline std::int64_t samples_in(GstBuffer* block) {
  return static_cast<std::int64_t>(gst_buffer_get_size(block)) / audio_frame_bytes;
}
/// Some samples of a block, whose memory they share.
inline BufferPtr samples_from(GstBuffer* block, std::int64_t first, std::int64_t count) {
  return BufferPtr::adopt(gst_buffer_copy_region(block, GST_BUFFER_COPY_MEMORY,
                                                 static_cast<gsize>(first * audio_frame_bytes),
                                                 static_cast<gsize>(count * audio_frame_bytes)));
}
inline constexpr char audio_caps[] = "audio/x-raw,format=F32LE,rate=48000,channels=2,layout=interleaved";

/// A microphone that is on for as long as this lives, and comes back by itself when it was lost.
///
/// A thread of its own talks to the sound server, which may not answer for as long as it likes: nobody waits for it
/// here, and a thread that does not return in time is left behind with everything that it needs. Functions: any thread.
class Microphone {
 public:
  struct Block {
    BufferPtr buffer;        ///< audio_caps
    std::int64_t timestamp;  ///< of its first sample, nanoseconds of CLOCK_MONOTONIC; may be late by milliseconds
    bool broken;             ///< it does not follow the block before it
  };

  /// Begins to open it and returns at once.
  /// @param setting  one of
  ///   default           the sound server's default source, else ALSA's
  ///   tone              a test tone
  ///   gst:DESCRIPTION   a GStreamer bin description that ends in raw sound
  ///   NAME              a microphone as choose_microphone() finds it
  explicit Microphone(std::string setting);
  Microphone(const Microphone&) = delete;
  Microphone& operator=(const Microphone&) = delete;
  /// Closes; waits for that half a second at most since close() was called.
  ~Microphone();

  /// Asks the thread to let go of the device and returns at once. Nothing comes any more.
  void close();

  /// What has come since the last call. Ten seconds are kept.
  std::deque<Block> take();
  /// Waits for something to take. @return false at the end of the time
  bool wait(std::chrono::steady_clock::time_point end) const;
  /// Whether something is likely to come yet: it delivers, or has only just begun to be opened.
  bool expected() const;
  /// Why nothing comes; empty while it delivers.
  std::string trouble() const;

 private:
  struct Shared;

  const std::shared_ptr<Shared> shared_;
  std::thread thread_;
};

}  // namespace handset

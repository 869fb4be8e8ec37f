#include "platform/camera/sound_placer.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace handset {
namespace {

/// Samples that sound may be off its place: more is made up for at once.
constexpr double tolerance = audio_rate / 50.0;
/// How much sound waits for a picture that stands still: 23 MB.
constexpr std::int64_t longest_wait_ns = 60'000'000'000;
constexpr std::int64_t silence_block = 1024;

}  // namespace

SoundPlacer::SoundPlacer()
    : clock_(audio_rate),
      silence_(BufferPtr::adopt(gst_buffer_new_allocate(nullptr, silence_block * audio_frame_bytes, nullptr))) {
  gst_buffer_memset(silence_.get(), 0, 0, gst_buffer_get_size(silence_.get()));
}

void SoundPlacer::begin(std::int64_t start) {
  start_ = start;
  next_ = 0;
  end_ = std::numeric_limits<std::int64_t>::max();
  following_ = false;
}

void SoundPlacer::set_end(std::int64_t time) {
  end_ = samples_of(time);
}

void SoundPlacer::take(Microphone::Block block) {
  const SoundClock::Place place = clock_.next(block.timestamp, samples_in(block.buffer.get()), block.broken);
  waiting_.push_back({std::move(block.buffer), place});
  while (waiting_.back().place.time - waiting_.front().place.time > longest_wait_ns) waiting_.pop_front();
}

void SoundPlacer::place_until(std::int64_t time, const Push& push) {
  for (; !waiting_.empty() && waiting_.front().place.time - start_ < time; waiting_.pop_front()) {
    place(waiting_.front(), push);
  }
}

void SoundPlacer::fill_until(std::int64_t time, const Push& push) {
  fill(samples_of(time), push);
}

/// Silence up to a sample: one block for all of it, since there may be minutes, faster than they are encoded.
void SoundPlacer::fill(std::int64_t sample, const Push& push) {
  const std::int64_t last = std::min(sample, end_);
  while (next_ < last) {
    const std::int64_t count = std::min(silence_block, last - next_);
    push(samples_from(silence_.get(), 0, count), static_cast<std::uint64_t>(next_));
    next_ += count;
    following_ = false;
  }
}

/// Puts sound where its time says: a gap before it becomes silence, what overlaps is cut off. Blocks that follow each
/// other do so sample by sample, and are stretched towards their times.
void SoundPlacer::place(const Sound& sound, const Push& push) {
  const std::int64_t samples = samples_in(sound.buffer.get());
  const std::int64_t at = samples_of(sound.place.time - start_);
  const double late = static_cast<double>(at) - landing_;
  std::int64_t skipped = 0;
  if (following_ && sound.place.follows && std::fabs(late) <= tolerance) {
    resampler_.set_ratio(drift_.next(late / audio_rate, static_cast<double>(samples) / audio_rate));
  } else {
    fill(at, push);
    skipped = std::max<std::int64_t>(0, next_ - at);
    if (skipped >= samples) return;
    resampler_.begin();
    landing_ = static_cast<double>(next_);
    following_ = true;
  }
  landing_ += static_cast<double>(samples - skipped) * resampler_.ratio();
  const BufferPtr made = resampler_.next(sound.buffer.get(), skipped);
  if (!made) return;
  const std::int64_t count = std::min(samples_in(made.get()), end_ - next_);
  if (count <= 0) return;
  push(samples_from(made.get(), 0, count), static_cast<std::uint64_t>(next_));
  next_ += count;
}

}  // namespace handset

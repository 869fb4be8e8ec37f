#include "platform/camera/sound_track.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

#include "platform/camera/capture.h"

namespace handset {
namespace {

/// How far sound may lag the picture before silence takes its place, so that the muxer does not wait for it. Encoded
/// pictures wait meanwhile, which costs nothing but what a killed recording loses.
constexpr std::int64_t patience_ns = 1'000'000'000;
/// The same while no sound is expected; should the microphone come back, its blocks are not older than this.
constexpr std::int64_t idle_patience_ns = 250'000'000;
/// How long the end of a recording waits for its last sound.
constexpr std::chrono::milliseconds tail_patience{300};

float peak_of(GstBuffer* buffer) {
  GstMapInfo map;
  if (!gst_buffer_map(buffer, &map, GST_MAP_READ)) return 0;
  const auto* samples = reinterpret_cast<const float*>(map.data);
  float peak = 0;
  for (gsize i = 0; i < map.size / sizeof(float); ++i) peak = std::max(peak, std::fabs(samples[i]));
  gst_buffer_unmap(buffer, &map);
  return peak;
}

}  // namespace

SoundTrack::SoundTrack(const std::string& microphone) : microphone_(microphone), watch_(monotonic_now()) {}

void SoundTrack::begin(std::int64_t start) {
  start_ = film_start_ = start;
  full_first_ = film_first_ = 0;
  placer_.begin(start);
  begun_ = monotonic_now();
}

void SoundTrack::go_on(std::shared_ptr<Film> full, std::int64_t start) {
  full_first_ = std::exchange(film_first_, samples_of(start - start_));
  film_start_ = start;
  if (placer_.next_sample() < film_first_) full_ = std::move(full);
}

/// Nanoseconds of picture since start_.
std::int64_t SoundTrack::length(const Film& film) const {
  return film_start_ - start_ + film.length();
}

void SoundTrack::feed(Film& film) {
  for (Microphone::Block& block : microphone_.take()) {
    watch_.take(monotonic_now(), peak_of(block.buffer.get()));
    placer_.take(std::move(block));
  }
  // Sound does not run ahead of the picture. But the muxer begins when it has heard from both tracks, and a source that
  // stands still must not keep it waiting.
  std::int64_t reached = length(film);
  if (!film.in_file()) reached = std::max(reached, monotonic_now() - begun_);
  placer_.place_until(reached, into(film));
  placer_.fill_until(reached - (microphone_.expected() ? patience_ns : idle_patience_ns), into(film));
  judge();
}

void SoundTrack::complete(Film& film) {
  placer_.set_end(length(film));
  const auto last_moment = std::chrono::steady_clock::now() + tail_patience;
  feed(film);
  while (!placer_.at_end() && !placer_.has_waiting() && microphone_.expected() && microphone_.wait(last_moment)) {
    feed(film);
  }
  placer_.fill_until(length(film), into(film));
  if (!watch_.heard()) complain();
  microphone_.close();
}

/// Where the next samples go: to each film its own.
SoundPlacer::Push SoundTrack::into(Film& film) {
  return [this, &film](BufferPtr block, std::uint64_t first_sample) {
    const auto first = static_cast<std::int64_t>(first_sample);
    const std::int64_t count = samples_in(block.get());
    const std::int64_t before = std::clamp<std::int64_t>(film_first_ - first, 0, count);
    if (before > 0 && full_) {
      full_->push_audio(samples_from(block.get(), 0, before), static_cast<std::uint64_t>(first - full_first_));
      block = samples_from(block.get(), before, count - before);
    }
    if (first + before >= film_first_) full_.reset();
    if (count > before) film.push_audio(std::move(block), static_cast<std::uint64_t>(first + before - film_first_));
  };
}

void SoundTrack::judge() {
  const std::int64_t now = monotonic_now();
  verdict_ = watch_.judge(now);
  if (*status() != '\0' && watch_.without_sound(now) >= SoundWatch::silent_after) complain();
}

/// Says once why there is no sound.
void SoundTrack::complain() {
  if (std::exchange(complained_, true)) return;
  std::string why = microphone_.trouble();
  if (why.empty()) {
    why = verdict_ == SoundWatch::Verdict::missing ? "the microphone has stopped" : "the microphone gives only silence";
  }
  std::fprintf(stderr, "no sound: %s\n", why.c_str());
}

const char* SoundTrack::status() const {
  const bool none = verdict_ == SoundWatch::Verdict::missing || verdict_ == SoundWatch::Verdict::silent;
  return none ? "no sound" : "";
}

}  // namespace handset

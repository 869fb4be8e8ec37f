#include "tests/webcam/webcam.h"

#include <algorithm>
#include <cstring>
#include <sstream>

#include "tests/webcam/chart.h"

namespace webcam {
namespace {

using std::chrono::duration;
using std::chrono::milliseconds;

constexpr std::size_t header_bytes = 2;
constexpr std::uint8_t end_of_header = 0x80;
constexpr std::uint8_t end_of_frame = 0x02;
constexpr int look_around_ms = 20;
constexpr milliseconds most_behind{500};

/// A driver that has no request ready for so long misses the frame, as it would a real camera's.
constexpr int patience_ms = 500;

}  // namespace

Webcam::Webcam(Setting setting, std::FILE* journal)
    : setting_(std::move(setting)),
      journal_(journal),
      device_(setting_.identity, setting_.modes, setting_.controls, [this](const std::string& line) { note(line); }),
      thread_([this] { run(); }) {}

Webcam::~Webcam() {
  {
    const std::lock_guard lock(mutex_);
    ends_ = true;
  }
  thread_.join();
  unplug();
}

void Webcam::note(const std::string& line) {
  const std::lock_guard lock(journal_mutex_);
  std::fprintf(journal_, "%s\n", line.c_str());
  std::fflush(journal_);
}

bool Webcam::plug() {
  auto link = std::make_shared<UsbLink>(
      setting_.port, [this](const Setup& setup, const Bytes& data) { return device_.answer(setup, data); });
  if (!link->plugged()) return false;
  note("plugged");
  const std::lock_guard lock(mutex_);
  link_ = std::move(link);
  return true;
}

void Webcam::unplug() {
  std::shared_ptr<UsbLink> link;
  {
    const std::lock_guard lock(mutex_);
    link.swap(link_);
  }
  if (!link) return;
  link.reset();
  device_.reset();
  note("unplugged");
}

bool Webcam::obey(const std::string& command) {
  std::istringstream words(command);
  std::string word;
  double value = 0;
  words >> word >> value;
  if (word == "plug") return plug();
  if (word == "unplug") {
    unplug();
    return true;
  }
  if (word == "refuse" || word == "accept") {
    device_.refuse(word == "refuse");
    return true;
  }
  const std::lock_guard lock(mutex_);
  if (word == "dead" || word == "alive") {
    dead_ = word == "dead";
  } else if (word == "late") {
    late_seconds_ = value;
  } else if (word == "stall") {
    stalled_until_ = Clock::now() + std::chrono::duration_cast<Clock::duration>(duration<double>(value));
  } else if (word == "broken") {
    broken_every_ = static_cast<int>(value);
  } else if (word == "repeat") {
    repeat_every_ = static_cast<int>(value);
  } else {
    return false;
  }
  return true;
}

void Webcam::run() {
  int filmed = 0;
  for (;;) {
    {
      const std::lock_guard lock(mutex_);
      if (ends_) return;
    }
    int start = 0;
    const std::optional<Stream> stream = device_.stream(&start);
    if (stream && start != filmed) {
      film(*stream, start);
      filmed = start;
    } else {
      std::this_thread::sleep_for(milliseconds(look_around_ms));
    }
  }
}

bool Webcam::still_runs(int start) const {
  int now = 0;
  if (!device_.stream(&now) || now != start) return false;
  const std::lock_guard lock(mutex_);
  return !ends_ && link_ && link_->plugged();
}

/// @return false when the stream has ended meanwhile
bool Webcam::wait_until(Clock::time_point when, int start) {
  while (still_runs(start)) {
    const auto left = when - Clock::now();
    if (left <= Clock::duration::zero()) return true;
    std::this_thread::sleep_for(std::min<Clock::duration>(left, milliseconds(look_around_ms)));
  }
  return false;
}

void Webcam::follow_plan(int frame) {
  for (const auto& [when, command] : setting_.plan) {
    if (when != frame) continue;
    note("frame " + std::to_string(frame) + ": " + command);
    obey(command);
  }
}

Bytes Webcam::damaged(Bytes frame, Format format) const {
  const std::size_t middle = frame.size() / 2;
  if (format == Format::mjpeg || format == Format::h264) {
    std::fill(frame.begin() + static_cast<std::ptrdiff_t>(middle), frame.end(), std::uint8_t{0});
  } else {
    frame.resize(middle);
  }
  return frame;
}

void Webcam::film(const Stream& stream, int start) {
  PictureMaker maker(stream.format, stream.width, stream.height);
  const auto period = std::chrono::duration_cast<Clock::duration>(duration<double>(1 / stream.rate));
  Clock::time_point due = Clock::now();
  {
    const std::lock_guard lock(mutex_);
    due += std::chrono::duration_cast<Clock::duration>(duration<double>(late_seconds_));
  }
  int sent = 0;
  int behind = 0;
  for (int count = 0;; ++count) {
    follow_plan(count);
    if (!wait_until(due, start)) break;
    bool dead = false;
    Clock::time_point stalled;
    int broken = 0;
    int repeat = 0;
    {
      const std::lock_guard lock(mutex_);
      dead = dead_;
      stalled = stalled_until_;
      broken = broken_every_;
      repeat = repeat_every_;
    }
    if (!wait_until(stalled, start)) break;
    // A process that was not given the time catches up; what a stall has cost is gone.
    const auto now = Clock::now();
    if (now - due > period) ++behind;
    if (stalled > due || now - due > most_behind) due = now;
    due += period;
    if (dead) continue;
    const Bytes& whole = maker.frame(setting_.port << chart_port_shift | number_);
    const bool damage = broken > 0 && count % broken == broken - 1;
    if (!send_frame(damage ? damaged(whole, stream.format) : whole, damage, start)) continue;
    ++sent;
    const bool again = repeat > 0 && count % repeat == repeat - 1;
    if (!again) number_ = (number_ + 1) % chart_numbers;
  }
  note("sent " + std::to_string(sent) + " frames, behind " + std::to_string(behind));
}

/// Sends a frame as payloads of one transfer each. An uncut frame that no request was ready for keeps its number.
bool Webcam::send_frame(const Bytes& frame, bool cut, int start) {
  std::shared_ptr<UsbLink> link;
  {
    const std::lock_guard lock(mutex_);
    link = link_;
  }
  if (!link) return false;
  frame_id_ = !frame_id_;
  Bytes payload;
  payload.reserve(payload_bytes);
  const std::size_t room = payload_bytes - header_bytes;
  for (std::size_t offset = 0; offset < frame.size(); offset += room) {
    const std::size_t size = std::min(room, frame.size() - offset);
    const bool last = offset + size == frame.size();
    payload = {header_bytes,
               static_cast<std::uint8_t>(end_of_header | (last ? end_of_frame : 0) | (frame_id_ ? 1 : 0))};
    payload.insert(payload.end(), frame.begin() + static_cast<std::ptrdiff_t>(offset),
                   frame.begin() + static_cast<std::ptrdiff_t>(offset + size));
    int waited = 0;
    while (!link->send(payload.data(), payload.size(), look_around_ms)) {
      waited += look_around_ms;
      if (waited >= patience_ms || !still_runs(start)) return cut;
    }
  }
  return true;
}

}  // namespace webcam

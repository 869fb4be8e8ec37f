#include "platform/camera/recorder.h"

#include <fcntl.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>
#include <utility>

#include "platform/camera/camera_config.h"

namespace handset {
namespace {

constexpr std::chrono::milliseconds turn{50};  ///< the thread looks after things at least this often
constexpr std::chrono::seconds look_period{1};

}  // namespace

int create_video_file(const std::string& stem, int first_number, std::string* path, int* fd) {
  for (int number = first_number; number < 10000; ++number) {
    *path = stem + (number > 0 ? "_" + std::to_string(number) : "") + ".mp4";
    *fd = open(path->c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (*fd >= 0) return 0;
    if (errno != EEXIST) return errno;
  }
  return EEXIST;
}

Recorder::Recorder(Setup setup, Ended ended) : setup_(std::move(setup)), ended_(std::move(ended)) {
  // The microphone takes its time to open: it begins before the first frame is there.
  try {
    if (setup_.microphone != "none") sound_ = std::make_unique<SoundTrack>(setup_.microphone);
  } catch (const std::system_error& problem) {
    std::fprintf(stderr, "no sound: %s\n", problem.code().message().c_str());
  }
  try {
    thread_ = std::thread([this] { run(); });
  } catch (const std::system_error& problem) {
    fail(problem.code().value(), "no thread: " + problem.code().message());
    phase_ = Phase::ended;
  }
}

Recorder::~Recorder() {
  stop();
}

bool Recorder::push(const Frame& frame) {
  std::unique_lock lock(mutex_);
  if (setup_.wait_for_room) {
    changed_.wait(lock, [this] { return count_ < queue_length || stopping_ || phase_ == Phase::ended; });
  }
  if (stopping_ || phase_ == Phase::ended) return false;
  if (count_ == queue_length) {
    ++dropped_;
    return false;
  }
  queue_[(first_ + count_++) % queue_length] = frame.share();
  taken_ = true;
  changed_.notify_all();
  return true;
}

bool Recorder::wait_taken(std::chrono::milliseconds limit) {
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, limit, [this] { return taken_ || stopping_ || phase_ == Phase::ended; });
  return taken_;
}

int Recorder::wait_started(std::chrono::milliseconds limit) {
  std::unique_lock lock(mutex_);
  if (!changed_.wait_for(lock, limit, [this] { return phase_ != Phase::waiting; })) return ETIMEDOUT;
  return phase_ == Phase::filming ? 0 : error_.load();
}

int Recorder::stop() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
    changed_.notify_all();
  }
  const std::lock_guard lock(join_mutex_);
  if (thread_.joinable()) thread_.join();
  return error_;
}

void Recorder::run() {
  for (bool stopping = false; !stopping && error_ == 0;) {
    const Frame frame = next_frame(&stopping);
    if (frame) feed(frame);
    if (film_) {
      if (sound_) {
        sound_->feed(*film_);
        if (rolled_.film && sound_->reached_film()) finish_part(std::exchange(rolled_, {}));
      }
      show(status());
      look_after();
    }
  }
  conclude();
}

/// Waits a turn for a frame that the film is ready to take. @param stopping set when there will be none
Frame Recorder::next_frame(bool* stopping) {
  if (film_ && !film_->wait_ready(turn)) {
    if (++turns_waited_ * turn > camera_timeouts::finalise) fail(ETIMEDOUT, "the encoder has stopped");
    return {};
  }
  turns_waited_ = 0;
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, turn, [this] { return count_ > 0 || stopping_; });
  if (count_ == 0) {
    *stopping = stopping_;
    return {};
  }
  Frame frame = std::move(queue_[first_]);
  first_ = (first_ + 1) % queue_length;
  --count_;
  changed_.notify_all();
  return frame;
}

void Recorder::feed(const Frame& frame) {
  if (!film_) {
    if (!begin_film(setup_.path, frame)) return;
    if (sound_) sound_->begin(start_);
  } else if (part_is_full(frame)) {
    roll(frame);
    if (!film_) return;
  }
  keep_up();
  film_->push_video(frame);
  ++recorded_;
  length_ = earlier_ + film_->length();
}

bool Recorder::begin_film(const std::string& path, const Frame& first) {
  std::string why;
  film_ = Film::start({.path = path,
                       .info = setup_.info,
                       .rate_numerator = setup_.rate_numerator,
                       .rate_denominator = setup_.rate_denominator,
                       .sound = sound_ != nullptr,
                       .start = first.timestamp},
                      &why);
  if (!film_) {
    fail(EIO, why);
    return false;
  }
  start_ = first.timestamp;
  path_ = path;
  ++films_;
  return true;
}

bool Recorder::part_is_full(const Frame& next) const {
  // Two films at a time are enough: the one before waits for its last sound, a second at most.
  if (rolled_.film) return false;
  return next.timestamp - start_ >= setup_.part_length.count() || film_->bytes() >= setup_.part_bytes;
}

/// Goes on in a new file, and leaves the full one to be completed aside once its sound is there.
void Recorder::roll(const Frame& next) {
  const std::size_t end = setup_.path.rfind(".mp4");
  std::string path;
  int fd = -1;
  if (const int error = create_video_file(setup_.path.substr(0, end), films_, &path, &fd)) {
    fail(error, std::string("cannot create the next file: ") + std::strerror(error));
    return;
  }
  close(fd);
  Part full{std::move(film_), path_};
  earlier_ += next.timestamp - start_;
  if (!begin_film(path, next)) {
    unlink(path.c_str());
    film_ = std::move(full.film);  // is completed with its sound
    return;
  }
  if (sound_) {
    sound_->go_on(full.film, next.timestamp);
    rolled_ = std::move(full);
  } else {
    finish_part(std::move(full));
  }
}

/// Completes a film on a thread of its own. One without a picture is no part.
void Recorder::finish_part(Part part) {
  const auto finish = [this, part] {
    const int error = part.film->finish();
    int none = 0;
    if (error != 0) part_error_.compare_exchange_strong(none, error);
    if (!part.film->has_picture()) remove_part(part.path);
  };
  try {
    finishing_.emplace_back(finish);
  } catch (const std::system_error&) {
    finish();
  }
}

/// The first part's file belongs to whoever made it, and stays, empty.
void Recorder::remove_part(const std::string& path) const {
  if (path != setup_.path) unlink(path.c_str());
}

/// Once a turn: errors. Once a second: room on the disk.
void Recorder::look_after() {
  if (film_->in_file()) {
    const std::lock_guard lock(mutex_);
    if (phase_ == Phase::waiting) phase_ = Phase::filming;
    changed_.notify_all();
  }
  if (const int error = film_->check()) {
    fail(error, film_->failure());
    return;
  }
  if (const int error = part_error_) {
    fail(error, std::string("an earlier part: ") + std::strerror(error));
    return;
  }
  const auto now = std::chrono::steady_clock::now();
  if (now < next_look_) return;
  next_look_ = now + look_period;
  if (disk_is_full()) fail(ENOSPC, std::strerror(ENOSPC));
}

bool Recorder::disk_is_full() const {
  struct statvfs disk {};
  if (statvfs(setup_.path.c_str(), &disk) != 0) return false;
  return static_cast<std::uint64_t>(disk.f_bavail) * disk.f_frsize < setup_.disk_margin;
}

/// Where frames wait because the encoder is too slow, it does less from this frame on.
void Recorder::keep_up() {
  std::size_t waiting = 0;
  {
    const std::lock_guard lock(mutex_);
    waiting = count_;
  }
  if (setup_.wait_for_room || !overload_.must_lighten(waiting)) return;
  if (film_->lighten()) std::fputs("recording: the encoder is too slow, the picture gets coarser\n", stderr);
}

std::string Recorder::status() {
  const std::uint64_t lost = dropped_ + (setup_.lost_before ? setup_.lost_before() : 0);
  if (losses_.losing(lost, LossWatch::Clock::now())) return dropping_text;
  return sound_ ? sound_->status() : "";
}

void Recorder::show(const std::string& status) {
  if (status == status_) return;
  status_ = status;
  if (setup_.show_status) setup_.show_status(status);
}

void Recorder::fail(int error, const std::string& why) {
  error_ = error;
  std::fprintf(stderr, "recording ended: %s\n", why.c_str());
}

void Recorder::conclude() {
  if (film_) {
    if (sound_) sound_->complete(*film_);
    // After a full disk the margin left on it is for this; after the film's own failure it only lets go.
    if (rolled_.film) finish_part(std::exchange(rolled_, {}));
    const int error = film_->finish();
    if (error != 0 && error_ == 0) fail(error, film_->failure());
    if (!film_->has_picture()) remove_part(path_);
    film_.reset();
  }
  for (std::thread& thread : finishing_) thread.join();
  if (part_error_ != 0 && error_ == 0) fail(part_error_, std::string("an earlier part: ") + std::strerror(part_error_));
  sound_.reset();
  show({});
  {
    const std::lock_guard lock(mutex_);
    phase_ = Phase::ended;
    for (Frame& frame : queue_) frame = {};
    count_ = 0;
    changed_.notify_all();
  }
  if (error_ != 0 && ended_) ended_(error_);
}

}  // namespace handset

#include "platform/camera/film_file.h"

#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platform/camera/camera_roll.h"

namespace handset {
namespace {

using mp4::box_type;

constexpr std::uint64_t page = 4096;
constexpr std::size_t vectors_at_once = 256;

/// A buffer's memory while it is written.
struct Mapped {
  GstMapInfo info{};
  GstBuffer* buffer = nullptr;  ///< null when its memory cannot be read
  explicit Mapped(GstBuffer* b) : buffer(gst_buffer_map(b, &info, GST_MAP_READ) ? b : nullptr) {}
  Mapped(Mapped&& other) noexcept : info(other.info), buffer(std::exchange(other.buffer, nullptr)) {}
  Mapped& operator=(Mapped&&) = delete;
  ~Mapped() {
    if (buffer != nullptr) gst_buffer_unmap(buffer, &info);
  }
  mp4::View bytes() const { return {info.data, info.size}; }
};

/// Writes all of it. @return 0 or an errno value
int write_all(int fd, std::vector<iovec> parts, std::uint64_t offset) {
  for (std::size_t first = 0; first < parts.size();) {
    const auto count = static_cast<int>(std::min(vectors_at_once, parts.size() - first));
    ssize_t written = pwritev(fd, &parts[first], count, static_cast<off_t>(offset));
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return written < 0 ? errno : EIO;
    offset += static_cast<std::uint64_t>(written);
    for (; first < parts.size() && static_cast<std::size_t>(written) >= parts[first].iov_len; ++first) {
      written -= static_cast<ssize_t>(parts[first].iov_len);
    }
    if (written == 0) continue;
    parts[first].iov_base = static_cast<char*>(parts[first].iov_base) + written;
    parts[first].iov_len -= static_cast<std::size_t>(written);
  }
  return 0;
}

}  // namespace

FilmFile::~FilmFile() {
  if (fd_ >= 0) close(fd_);
}

int FilmFile::open(const std::string& path, std::chrono::milliseconds period) {
  path_ = path;
  period_ = period;
  fd_ = ::open(path.c_str(), O_RDWR | O_TRUNC | O_CLOEXEC);
  if (fd_ < 0) return error_ = errno;
  hold_film(fd_);
  return 0;
}

int FilmFile::append(BufferPtr bytes) {
  if (error_ != 0 || fd_ < 0) return error_;
  const gsize size = gst_buffer_get_size(bytes.get());
  if (size == 0) return 0;
  int error = 0;
  if (box_left_ == 0) {
    const Mapped mapped(bytes.get());
    mp4::Header header;
    if (mapped.buffer == nullptr || !mp4::read_header(mapped.bytes(), &header)) return error_ = EIO;
    box_ = header.type;
    box_left_ = header.size;
  }
  if (size > box_left_) return error_ = EIO;
  box_left_ -= size;
  pending_bytes_ += size;
  pending_.push_back(std::move(bytes));
  if (box_left_ == 0) error = take_box();
  if (error != 0) error_ = error;
  return error;
}

/// A box is whole: remembers what it says, and writes it when a player can do something with it.
int FilmFile::take_box() {
  const bool known =
      box_ == box_type("ftyp") || box_ == box_type("moov") || box_ == box_type("moof") || box_ == box_type("mdat");
  const bool repeated = has_head() && (box_ == box_type("ftyp") || box_ == box_type("moov"));
  if (!known || repeated) {
    pending_.clear();
    pending_bytes_ = 0;
    return 0;
  }
  if (box_ == box_type("ftyp")) head_ = pending_bytes_;
  if (box_ == box_type("moov") || box_ == box_type("moof")) {
    moof_.clear();
    for (const BufferPtr& part : pending_) {
      const Mapped mapped(part.get());
      moof_.insert(moof_.end(), mapped.info.data, mapped.info.data + mapped.info.size);
    }
    if (box_ == box_type("moof")) return 0;  // is written with its media
    if (moof_.size() < head_) return EIO;
    moof_.erase(moof_.begin(), moof_.begin() + static_cast<std::ptrdiff_t>(head_));
    if (index_.set_head(moof_) != 0) return EIO;
  }
  if (box_ == box_type("ftyp")) return 0;
  if (const int error = write_pending()) return error;
  if (box_ == box_type("moov")) return mark_mp4(fd_);
  if (index_.add_fragment(moof_, bytes_ - pending_bytes_, bytes_) != 0) return EIO;
  pending_bytes_ = 0;
  has_picture_ = index_.has_picture();
  const auto now = std::chrono::steady_clock::now();
  if (now < next_sync_) return 0;
  next_sync_ = now + period_;
  return force();
}

/// Writes what is pending, or nothing of it.
int FilmFile::write_pending() {
  std::vector<Mapped> mapped;
  std::vector<iovec> parts;
  for (const BufferPtr& part : pending_) {
    mapped.emplace_back(part.get());
    parts.push_back({mapped.back().info.data, mapped.back().info.size});
  }
  const int error = write_all(fd_, std::move(parts), bytes_);
  mapped.clear();
  pending_.clear();
  if (error == 0) {
    bytes_ += pending_bytes_;
  } else if (ftruncate(fd_, static_cast<off_t>(bytes_)) != 0) {
    return error;  // a part of a fragment stays behind, which players pass over
  }
  if (box_ == box_type("moov")) pending_bytes_ = 0;
  return error;
}

int FilmFile::force() {
  if (fdatasync(fd_) != 0) return errno;
  forced_ += (bytes_ + page - 1) / page * page - synced_ / page * page;
  synced_ = bytes_;
  // Some folders may be searched, but not opened: the film is worth more than their entry.
  if (!std::exchange(folder_synced_, true)) sync_folder_of(path_);
  return 0;
}

int FilmFile::complete() {
  pending_.clear();
  int error = error_;
  if (fd_ >= 0 && has_picture_) {
    const int closing = close_mp4(fd_, head_, bytes_, index_);
    if (error == 0) error = closing;
    if (closing == 0) forced_ += index_.moov().size() + 2 * page + (bytes_ - synced_);
  } else if (fd_ >= 0) {
    // A head without a picture is no film.
    if (ftruncate(fd_, 0) != 0 && error == 0) error = errno;
  }
  if (fd_ >= 0 && close(std::exchange(fd_, -1)) != 0 && error == 0) error = errno;
  error_ = error;
  return error;
}

}  // namespace handset

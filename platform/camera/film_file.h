#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/camera/gst_ptr.h"
#include "platform/camera/mp4_index.h"

namespace handset {

/// The file that a muxer's fragments go to: an MP4 that plays at every moment, and is an ordinary one in the end.
///
/// Each fragment is written as a whole once it is there, so that a killed process leaves whole ones, and is forced to
/// the disk soon after. append() and complete() on one thread at a time; the rest on any.
class FilmFile {
 public:
  /// How long what was written may stay off the disk.
  static constexpr std::chrono::milliseconds sync_period{400};

  FilmFile() = default;
  FilmFile(const FilmFile&) = delete;
  FilmFile& operator=(const FilmFile&) = delete;
  /// Leaves the file as it is.
  ~FilmFile();

  /// Opens an existing file and empties it. @param period  zero forces every fragment at once @return 0 or an errno
  /// value
  int open(const std::string& path, std::chrono::milliseconds period = sync_period);

  /// Takes the muxer's next bytes; they begin with a box where one begins. @return 0, or the errno value of the first
  /// failure, and nothing more is written then
  int append(BufferPtr bytes);

  /// Gives the film its index and closes the file. After a failure it holds the fragments that were written whole, with
  /// an index if there is room for one. @return 0, or the errno value of the first failure
  int complete();

  int error() const { return error_; }
  bool has_head() const { return bytes_ > 0; }       ///< a player can open it
  bool has_picture() const { return has_picture_; }  ///< and see something in it
  std::uint64_t bytes() const { return bytes_; }     ///< written so far, in whole fragments
  std::uint64_t forced() const { return forced_; }   ///< bytes given to the disk, counted in its pages

 private:
  int take_box();
  int write_pending();
  int force();

  int fd_ = -1;
  std::string path_;
  std::chrono::milliseconds period_{};
  Mp4Index index_;
  std::uint64_t head_ = 0;  ///< where `moov` begins
  mp4::Bytes moof_;
  std::vector<BufferPtr> pending_;  ///< what belongs to the box or fragment in the making
  std::uint64_t pending_bytes_ = 0;
  std::uint32_t box_ = 0;       ///< type of the box in the making
  std::uint64_t box_left_ = 0;  ///< bytes that it lacks
  std::uint64_t synced_ = 0;    ///< bytes that are on the disk
  bool folder_synced_ = false;
  std::chrono::steady_clock::time_point next_sync_{};

  std::atomic<int> error_{0};
  std::atomic<std::uint64_t> bytes_{0};
  std::atomic<std::uint64_t> forced_{0};
  std::atomic<bool> has_picture_{false};
};

}  // namespace handset

#include "platform/camera/camera_roll.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <regex>
#include <utility>

namespace handset {
namespace {

namespace fs = std::filesystem;

constexpr int most_in_a_second = 1000;
constexpr char longest_end[] = "-999_9999.mp4";
/// A younger empty film may be one that is about to begin.
constexpr std::time_t birth = 60;

/// fcntl on the whole file. @return 0 or an errno value
int lock_whole(int fd, short type) {
  struct flock whole {};
  whole.l_type = type;
  whole.l_whence = SEEK_SET;
  return fcntl(fd, F_OFD_SETLK, &whole) == 0 ? 0 : errno;
}

bool is_roll_name(const std::string& name) {
  static const std::regex pattern(R"(VID_\d{8}_\d{6}(-\d{1,3})?(_\d{1,4})?\.mp4)");
  return std::regex_match(name, pattern);
}

/// A copy that earlier versions made while they completed a film: ".NAME.part".
bool is_hidden_copy(const std::string& name) {
  constexpr std::string_view end = ".part";
  return name.starts_with('.') && name.ends_with(end) && is_roll_name(name.substr(1, name.size() - 1 - end.size()));
}

bool is_old(int fd) {
  struct stat file {};
  return fstat(fd, &file) == 0 && file.st_nlink == 1 && std::time(nullptr) - file.st_mtime > birth;
}

/// Room for a head without pictures.
constexpr off_t least_film = 16'384;

off_t size_of(int fd) {
  struct stat file {};
  return fstat(fd, &file) == 0 ? file.st_size : least_film;
}

/// Where a lock may not reach another computer's programs, which may be writing.
bool is_shared(int fd) {
  struct statfs disk {};
  if (fstatfs(fd, &disk) != 0) return true;
  constexpr std::uint32_t cifs = 0xFF534D42;
  constexpr std::uint32_t smb2 = 0xFE534D42;
  const auto type = static_cast<std::uint32_t>(disk.f_type);
  return type == NFS_SUPER_MAGIC || type == FUSE_SUPER_MAGIC || type == V9FS_MAGIC || type == cifs || type == smb2;
}

/// Paths in a folder; those before an error where reading it fails.
std::vector<fs::path> paths_in(const fs::path& folder) {
  std::vector<fs::path> paths;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    paths.push_back(entry->path());
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

/// An open regular file; nothing else is opened, however it is named.
class RollFile {
 public:
  explicit RollFile(const std::string& path) : fd_(open(path.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC)) {
    struct stat file {};
    if (fd_ >= 0 && (fstat(fd_, &file) != 0 || !S_ISREG(file.st_mode))) close(std::exchange(fd_, -1));
  }
  RollFile(const RollFile&) = delete;
  RollFile& operator=(const RollFile&) = delete;
  ~RollFile() {
    if (fd_ >= 0) close(fd_);
  }
  int fd() const { return fd_; }

 private:
  int fd_;
};

void tidy(const fs::path& path, const CompleteFilm& complete, RollFindings* findings) {
  const std::string name = path.filename().string();
  const bool hidden = is_hidden_copy(name);
  if (!hidden && !is_roll_name(name)) return;
  const RollFile film(path.string());
  if (film.fd() < 0 || !claim_film(film.fd())) return;
  const bool old = is_old(film.fd());
  if (hidden || (old && size_of(film.fd()) == 0)) {
    findings->removed += unlink(path.c_str()) == 0;
    return;
  }
  if (!old && is_shared(film.fd())) return;
  bool was_cut_off = false;
  const int error = complete(path.string(), &was_cut_off);
  if (error == 0 && was_cut_off) findings->completed.push_back(name);
  if (error == ENODATA && old && size_of(film.fd()) < least_film) findings->removed += unlink(path.c_str()) == 0;
}

}  // namespace

int create_roll_film(const std::string& folder, std::size_t room, std::string* path, int* fd) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) return error.value();
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  char time[32];
  if (localtime_r(&now, &local) == nullptr || std::strftime(time, sizeof time, "/VID_%Y%m%d_%H%M%S", &local) == 0)
    return EIO;
  const std::string stem = folder + time;
  if (stem.size() + sizeof longest_end > room) return ENAMETOOLONG;
  for (int number = 1; number < most_in_a_second; ++number) {
    *path = stem + (number > 1 ? "-" + std::to_string(number) : "") + ".mp4";
    *fd = open(path->c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (*fd >= 0) return 0;
    if (errno != EEXIST) return errno;
  }
  return EEXIST;
}

std::vector<std::string> film_parts(const std::string& path) {
  std::vector<std::string> parts{path};
  const fs::path first(path);
  if (!is_roll_name(first.filename().string())) return parts;
  const std::string stem = first.stem().string() + "_";
  std::vector<std::pair<int, std::string>> later;
  std::error_code error;
  for (const fs::path& part : paths_in(first.parent_path())) {
    const std::string name = part.filename().string();
    if (!name.starts_with(stem) || !is_roll_name(name)) continue;
    if (fs::is_regular_file(part, error) && fs::file_size(part, error) > 0 && !error)
      later.emplace_back(std::atoi(name.c_str() + stem.size()), part.string());
  }
  std::sort(later.begin(), later.end());
  for (auto& [number, part] : later) parts.push_back(std::move(part));
  return parts;
}

void hold_film(int fd) {
  lock_whole(fd, F_RDLCK);
}

bool claim_film(int fd) {
  const int error = lock_whole(fd, F_WRLCK);
  return error != EAGAIN && error != EACCES;
}

RollFindings tidy_camera_roll(const std::string& folder, const CompleteFilm& complete) {
  RollFindings findings;
  for (const fs::path& path : paths_in(folder)) {
    try {
      tidy(path, complete, &findings);
    } catch (const std::exception& problem) {  // a damaged film may ask for more memory than there is
      std::fprintf(stderr, "%s: %s\n", path.c_str(), problem.what());
    }
  }
  return findings;
}

}  // namespace handset

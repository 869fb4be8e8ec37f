// Films on the disk: closing one, and completing one that was cut off.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>

#include "platform/camera/mp4_index.h"

namespace handset {
namespace {

using mp4::append_number;
using mp4::box_type;
using mp4::Bytes;
using mp4::Header;

constexpr std::uint64_t largest_head = 1U << 20;
constexpr std::uint64_t largest_fragment_index = 1U << 24;

/// In a file's type, behind the size, "ftyp" and the major brand.
constexpr std::uint64_t mark_at = 12;
const Bytes mark = {0, 'm', 'o', 'v'};

struct File {
  int fd = -1;
  ~File() {
    if (fd >= 0) close(fd);
  }
};

int write_at(int fd, const Bytes& bytes, std::uint64_t offset) {
  for (std::size_t done = 0; done < bytes.size();) {
    const ssize_t written = pwrite(fd, bytes.data() + done, bytes.size() - done, static_cast<off_t>(offset + done));
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return written < 0 ? errno : EIO;
    done += static_cast<std::size_t>(written);
  }
  return 0;
}

bool read_at(int fd, std::uint64_t offset, std::size_t size, Bytes* bytes) {
  bytes->resize(size);
  for (std::size_t done = 0; done < size;) {
    const ssize_t got = pread(fd, bytes->data() + done, size - done, static_cast<off_t>(offset + done));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    done += static_cast<std::size_t>(got);
  }
  return true;
}

/// Reads the header at `offset`. @return false where no whole box stands
bool read_box(int fd, std::uint64_t offset, std::uint64_t length, Header* header) {
  if (offset >= length || length - offset < 8) return false;
  Bytes start;
  return read_at(fd, offset, static_cast<std::size_t>(std::min<std::uint64_t>(16, length - offset)), &start) &&
         mp4::read_header(start, header) && header->size <= length - offset;
}

/// Whether the media begins with what was written there: a disk that lost it gives zeros.
bool has_content(int fd, std::uint64_t media, const Header& header) {
  Bytes start;
  if (header.size < header.length + 8 || !read_at(fd, media + header.length, 8, &start)) return false;
  return std::any_of(start.begin(), start.end(), [](std::uint8_t byte) { return byte != 0; });
}

/// Adds all whole fragments from `offset` on. @return where the last one ends
std::uint64_t scan_fragments(int fd, std::uint64_t offset, std::uint64_t length, Mp4Index* index) {
  std::uint64_t end = offset;
  Header moof;
  Header mdat;
  Bytes bytes;
  while (read_box(fd, end, length, &moof) && moof.type == box_type("moof") && moof.size <= largest_fragment_index) {
    const std::uint64_t media = end + moof.size;
    if (!read_box(fd, media, length, &mdat) || mdat.type != box_type("mdat") || !has_content(fd, media, mdat)) break;
    if (!read_at(fd, end, static_cast<std::size_t>(moof.size), &bytes)) break;
    if (index->add_fragment(bytes, end, media + mdat.size) != 0) break;
    end = media + mdat.size;
  }
  return end;
}

}  // namespace

int sync_folder_of(const std::string& path) {
  const std::filesystem::path folder = std::filesystem::path(path).parent_path();
  const File entry{open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
  if (entry.fd < 0) return errno;
  // Some file systems cannot sync a folder, and say EINVAL: they have nothing to be flushed.
  return fsync(entry.fd) == 0 || errno == EINVAL ? 0 : errno;
}

int mark_mp4(int fd) {
  return write_at(fd, mark, mark_at);
}

int close_mp4(int fd, std::uint64_t head, std::uint64_t end, const Mp4Index& index) {
  const Bytes moov = index.moov();
  // Players of the film in fragments pass over the index: it stands in a box of its own, whose header becomes media
  // too.
  Bytes hidden;
  append_number(&hidden, moov.size() + 8, 4);
  append_number(&hidden, box_type("free"), 4);
  hidden.insert(hidden.end(), moov.begin(), moov.end());
  int error = ftruncate(fd, static_cast<off_t>(end)) == 0 ? write_at(fd, hidden, end) : errno;
  if (error == 0 && fdatasync(fd) != 0) error = errno;
  if (error != 0) {
    if (ftruncate(fd, static_cast<off_t>(end)) != 0) return error;  // the film plays with it as well
    return error;
  }
  Bytes media;
  append_number(&media, 1, 4);
  append_number(&media, box_type("mdat"), 4);
  append_number(&media, end + 8 - head, 8);
  // Within a sector: all of it reaches the disk, or nothing.
  error = write_at(fd, media, head);
  return error == 0 && fdatasync(fd) != 0 ? errno : error;
}

int complete_mp4(const std::string& path, bool* was_cut_off) {
  *was_cut_off = false;
  const File file{open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC)};
  struct stat status {};
  if (file.fd < 0 || fstat(file.fd, &status) != 0) return errno;
  if (!S_ISREG(status.st_mode)) return EINVAL;
  const auto length = static_cast<std::uint64_t>(status.st_size);
  if (length == 0) return ENODATA;
  Header type;
  Header head;
  if (!read_box(file.fd, 0, length, &type) || type.type != box_type("ftyp") || type.size > 496) return EINVAL;
  Bytes marked;
  if (!read_at(file.fd, mark_at, mark.size(), &marked) || marked != mark) return EINVAL;
  // Cut off within the head: there can be no picture.
  if (!read_box(file.fd, type.size, length, &head)) return length < largest_head ? ENODATA : EINVAL;
  if (head.type == box_type("mdat")) {
    Header index;
    const bool whole = read_box(file.fd, type.size + head.size, length, &index) && index.type == box_type("moov");
    return whole ? 0 : EINVAL;
  }
  Bytes moov;
  Mp4Index index;
  if (head.type != box_type("moov") || head.size > largest_head ||
      !read_at(file.fd, type.size, static_cast<std::size_t>(head.size), &moov) || index.set_head(moov) != 0)
    return EINVAL;
  const std::uint64_t end = scan_fragments(file.fd, type.size + head.size, length, &index);
  if (!index.has_picture()) return ENODATA;
  *was_cut_off = true;
  return close_mp4(file.fd, type.size, end, index);
}

}  // namespace handset

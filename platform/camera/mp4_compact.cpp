#include "platform/camera/mp4_compact.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <utility>
#include <vector>

namespace handset {
namespace {

// Boxes of ISO/IEC 14496-12: a 32-bit size, a type, and with size 1 a 64-bit size behind them.

constexpr std::uint64_t largest_index = 1U << 30;

struct File {
  int fd = -1;
  ~File() {
    if (fd >= 0) close(fd);
  }
};

struct Box {
  std::uint64_t offset;
  std::uint64_t size;
  std::uint64_t header;
  char type[5];

  bool is(const char* name) const { return std::strcmp(type, name) == 0; }
};

std::uint64_t read_number(const std::uint8_t* data, int bytes) {
  std::uint64_t value = 0;
  for (int i = 0; i < bytes; ++i) value = value << 8 | data[i];
  return value;
}

void write_number(std::uint8_t* data, int bytes, std::uint64_t value) {
  for (int i = bytes - 1; i >= 0; --i, value >>= 8) data[i] = static_cast<std::uint8_t>(value);
}

/// Reads a box header from at most `room` bytes that begin at `data`. @return false when it makes no sense
bool parse_header(const std::uint8_t* data, std::uint64_t room, Box* box) {
  if (room < 8) return false;
  box->size = read_number(data, 4);
  box->header = 8;
  std::memcpy(box->type, data + 4, 4);
  box->type[4] = '\0';
  if (box->size == 1) {
    if (room < 16) return false;
    box->size = read_number(data + 8, 8);
    box->header = 16;
  }
  if (box->size == 0) box->size = room;
  return box->size >= box->header && box->size <= room;
}

bool list_boxes(int fd, std::uint64_t length, std::vector<Box>* boxes) {
  for (std::uint64_t offset = 0; offset < length;) {
    std::uint8_t header[16] = {};
    const ssize_t got = pread(fd, header, sizeof header, static_cast<off_t>(offset));
    Box box{};
    if (got < 8 || (got < 16 && read_number(header, 4) == 1)) return false;
    if (!parse_header(header, length - offset, &box)) return false;
    box.offset = offset;
    boxes->push_back(box);
    offset += box.size;
  }
  return true;
}

/// Moves every chunk offset below a container box by `delta` toward the front.
bool shift_chunks(std::uint8_t* data, std::uint64_t size, std::uint64_t delta) {
  for (std::uint64_t offset = 0; offset < size;) {
    Box box{};
    if (!parse_header(data + offset, size - offset, &box)) return false;
    std::uint8_t* content = data + offset + box.header;
    const std::uint64_t room = box.size - box.header;
    if (box.is("trak") || box.is("mdia") || box.is("minf") || box.is("stbl")) {
      if (!shift_chunks(content, room, delta)) return false;
    } else if (box.is("stco") || box.is("co64")) {
      const int width = box.is("stco") ? 4 : 8;
      const std::uint64_t count = room >= 8 ? read_number(content + 4, 4) : 0;
      if (room < 8 || count > (room - 8) / static_cast<std::uint64_t>(width)) return false;
      for (std::uint64_t i = 0; i < count; ++i) {
        std::uint8_t* entry = content + 8 + i * static_cast<std::uint64_t>(width);
        const std::uint64_t chunk = read_number(entry, width);
        if (chunk < delta) return false;
        write_number(entry, width, chunk - delta);
      }
    }
    offset += box.size;
  }
  return true;
}

int copy_range(int from, std::uint64_t offset, std::uint64_t size, int to) {
  auto position = static_cast<off64_t>(offset);
  std::vector<char> block;
  while (size > 0) {
    ssize_t moved = -1;
    if (block.empty()) {
      moved = copy_file_range(from, &position, to, nullptr, size, 0);
      // Not every file system does it: then through memory.
      if (moved <= 0) block.resize(1U << 20);
      if (moved <= 0) continue;
    } else {
      moved = pread(from, block.data(), std::min<std::uint64_t>(size, block.size()), position);
      if (moved < 0 && errno == EINTR) continue;
      if (moved <= 0) return moved < 0 ? errno : EIO;
      moved = write(to, block.data(), static_cast<std::size_t>(moved));
      if (moved < 0) return errno;
      position += moved;
    }
    size -= static_cast<std::uint64_t>(moved);
  }
  return 0;
}

int copy_box(int from, const Box& box, int to) {
  return copy_range(from, box.offset, box.size, to);
}

/// Writes type, index and media to `to`, one after the other.
int write_compact(int from, const Box& type, const Box& index, const Box& media, int to) {
  std::vector<std::uint8_t> moov(index.size);
  if (pread(from, moov.data(), moov.size(), static_cast<off_t>(index.offset)) != static_cast<ssize_t>(moov.size()))
    return EIO;
  const std::uint64_t delta = media.offset - type.size - index.size;
  if (!shift_chunks(moov.data() + index.header, moov.size() - index.header, delta)) return EINVAL;
  if (const int error = copy_box(from, type, to)) return error;
  for (std::size_t done = 0; done < moov.size();) {
    const ssize_t written = write(to, moov.data() + done, moov.size() - done);
    if (written < 0) return errno;
    done += static_cast<std::size_t>(written);
  }
  return copy_box(from, media, to);
}

/// Makes what was renamed in a folder outlast a power cut. @return 0 or an errno value
int sync_folder(const std::filesystem::path& folder) {
  const File entry{open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
  if (entry.fd < 0) return errno;
  // Some file systems cannot sync a folder, and say EINVAL: they have nothing to be flushed.
  return fsync(entry.fd) == 0 || errno == EINVAL ? 0 : errno;
}

const Box* only_box(const std::vector<Box>& boxes, const char* type) {
  const auto matches = [type](const Box& box) { return box.is(type); };
  const auto found = std::find_if(boxes.begin(), boxes.end(), matches);
  return found != boxes.end() && std::count_if(boxes.begin(), boxes.end(), matches) == 1 ? &*found : nullptr;
}

}  // namespace

int compact_mp4(const std::string& path) {
  const File source{open(path.c_str(), O_RDONLY | O_CLOEXEC)};
  struct stat status {};
  if (source.fd < 0 || fstat(source.fd, &status) != 0) return errno;
  const auto length = static_cast<std::uint64_t>(status.st_size);
  std::vector<Box> boxes;
  if (!list_boxes(source.fd, length, &boxes)) return EINVAL;
  const Box* type = only_box(boxes, "ftyp");
  const Box* index = only_box(boxes, "moov");
  const Box* media = only_box(boxes, "mdat");
  if (type == nullptr || index == nullptr || media == nullptr || index->size > largest_index) return EINVAL;
  std::uint64_t spare = 0;
  for (const Box& box : boxes) {
    if (box.is("free")) spare += box.size;
  }
  const std::uint64_t needed = type->size + index->size + media->size;
  if (needed + spare != length || type->offset != 0 || media->offset < index->offset) return EINVAL;
  if (spare * 20 < length) return 0;

  struct statvfs disk {};
  if (fstatvfs(source.fd, &disk) == 0 && disk.f_bavail * disk.f_frsize < 2 * needed) return ENOSPC;
  const std::filesystem::path whole(path);
  const std::string fresh = (whole.parent_path() / ("." + whole.filename().string() + ".part")).string();
  int error = 0;
  unlink(fresh.c_str());  // left by a process that was killed here
  {
    File target{open(fresh.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, status.st_mode & 0777)};
    if (target.fd < 0) return errno;
    error = write_compact(source.fd, *type, *index, *media, target.fd);
    // The film that it replaces is on the disk already: the copy must be there before it takes the name.
    if (error == 0 && fsync(target.fd) != 0) error = errno;
    if (close(std::exchange(target.fd, -1)) != 0 && error == 0) error = errno;
  }
  if (error == 0 && rename(fresh.c_str(), path.c_str()) != 0) error = errno;
  if (error != 0) {
    unlink(fresh.c_str());
    return error;
  }
  return sync_folder(whole.parent_path());
}

}  // namespace handset

#include "app/preferences.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "camera/scene.h"
#include "engine/overlay_loader.h"
#include "engine/stamp.h"
#include "engine/stamp_layout.h"

static_assert(prefs_text_size == overlay_path_size);

namespace {

constexpr int logo_position_count = 7;
constexpr int stamp_position_count = 5;

int index_or(std::int32_t index, int count, int otherwise) {
  return index >= 0 && index < count ? index : otherwise;
}

void terminate(char (&text)[prefs_text_size]) {
  text[prefs_text_size - 1] = '\0';
}

/// Reads what there is of a record: the fields that a short file lacks keep the defaults.
/// @return false when there is no file, or it cannot be read
bool read_record(const char* path, PrefsRecord* record) {
  std::FILE* file = std::fopen(path, "re");
  if (file == nullptr) return false;
  PrefsRecord read{};
  const std::size_t size = std::fread(&read, 1, sizeof read, file);
  const int error = std::ferror(file) != 0 ? errno : 0;
  std::fclose(file);
  if (error != 0) {
    std::fprintf(stderr, "cannot read %s: %s\n", path, std::strerror(error));
    return false;
  }
  *record = default_settings();
  if (size < sizeof read) {
    std::fprintf(stderr, "%s is shorter than %zu bytes, the defaults are used for the rest\n", path, sizeof read);
  }
  // Half a path is none, and half a number neither.
  if (size >= prefs_text_size) std::memcpy(record, &read, size - size % sizeof(std::int32_t));
  return true;
}

/// Renaming asks only for the directory's permission; a file that is protected itself is to stay.
/// @return false with errno set
bool may_replace(const char* path) {
  return faccessat(AT_FDCWD, path, W_OK, AT_EACCESS) == 0 || errno == ENOENT;
}

/// Writes a record through to the disk. @return false with errno set
bool write_record(const char* path, int flags, const PrefsRecord& record) {
  const int file = open(path, O_WRONLY | O_CLOEXEC | flags, 0666);
  if (file < 0) return false;
  const ssize_t written = write(file, &record, sizeof record);
  const bool whole = written == ssize_t{sizeof record} && ftruncate(file, sizeof record) == 0 && fsync(file) == 0;
  int error = errno;
  if (written >= 0 && written < ssize_t{sizeof record}) {  // full: the next byte says why
    const auto* bytes = reinterpret_cast<const char*>(&record);
    error = write(file, bytes + written, sizeof record - static_cast<std::size_t>(written)) < 0 ? errno : EIO;
  }
  close(file);
  errno = error;
  return whole;
}

/// What a link leads to; a path that leads nowhere is itself.
std::string resolved(const char* path) {
  char* const real = realpath(path, nullptr);
  const std::string result = real != nullptr ? real : path;
  std::free(real);
  return result;
}

/// In the same directory, or the renaming would not be one step. Written through to the disk before it takes the old
/// file's name, or a power cut could leave that name with nothing in it.
/// @return false with errno set
bool replace_record(const std::string& path, const PrefsRecord& record) {
  const std::string fresh = path + ".new";
  if (write_record(fresh.c_str(), O_CREAT | O_TRUNC, record) && std::rename(fresh.c_str(), path.c_str()) == 0)
    return true;
  const int error = errno;
  unlink(fresh.c_str());
  errno = error;
  return false;
}

/// A folder in which nothing can be made may hold a file that can be written.
bool folder_is_closed(int error) {
  return error == EACCES || error == EPERM || error == EROFS;
}

}  // namespace

PrefsRecord default_settings() {
  PrefsRecord record{};
  record.rearResolutionIndex = -1;
  record.spare13a = 13;
  record.spare13b = 13;
  record.sceneIndex = scene_auto;
  record.includeLogo = 1;
  record.logoOriginalColor = 1;
  record.shutterSound = 1;
  return record;
}

int read_settings(const char* path, PrefsRecord* record) {
  if (!read_record(path, record)) {
    *record = default_settings();
    save_settings(path, *record);
    return 0;
  }
  terminate(record->lastVideoPath);
  terminate(record->overlayPath);
  return 1;
}

void save_settings(const char* path, const PrefsRecord& record) {
  const std::string file = resolved(path);
  if (may_replace(file.c_str())) {
    if (replace_record(file, record)) return;
    if (folder_is_closed(errno) && write_record(file.c_str(), 0, record)) return;
  }
  std::perror("error saving prefs: ");
}

void fill_texture_titles(char (&titles)[texture_row_count][menu_text_size]) {
  for (int row = 0; row < texture_row_count; ++row) {
    std::snprintf(titles[row], menu_text_size, "%s", texture_row_names[row]);
  }
}

int scene_index(const PrefsRecord& record) {
  return scene_or_auto(record.sceneIndex);
}

int logo_position(const PrefsRecord& record) {
  return index_or(record.logoPosition, logo_position_count, 0);
}

int time_format(const PrefsRecord& record) {
  return index_or(record.timeFormat, stamp_format_count, 0);
}

int time_color(const PrefsRecord& record) {
  return index_or(record.timeColor, stamp_color_count, 0);
}

int time_position(const PrefsRecord& record) {
  return index_or(record.timePosition, stamp_position_count, stamp_position_count - 1);
}

#include "app/preferences.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
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

int index_or_first(std::int32_t index, int count) {
  return index >= 0 && index < count ? index : 0;
}

void terminate(char (&text)[prefs_text_size]) {
  text[prefs_text_size - 1] = '\0';
}

void report_unusable(const char* path, int error) {
  if (error != 0) {
    std::fprintf(stderr, "cannot read %s: %s\n", path, std::strerror(error));
  } else {
    std::fprintf(stderr, "%s is shorter than %zu bytes, the defaults are used\n", path, sizeof(PrefsRecord));
  }
}

bool read_record(const char* path, PrefsRecord* record) {
  std::FILE* file = std::fopen(path, "re");
  if (file == nullptr) return false;
  const bool whole = std::fread(record, sizeof *record, 1, file) == 1;
  const int error = std::ferror(file) != 0 ? errno : 0;
  std::fclose(file);
  if (!whole) report_unusable(path, error);
  return whole;
}

/// Renaming asks only for the directory's permission; a file that is protected itself is to stay.
/// @return false with errno set
bool may_replace(const char* path) {
  return faccessat(AT_FDCWD, path, W_OK, AT_EACCESS) == 0 || errno == ENOENT;
}

/// @return false with errno set
bool write_record(const char* path, const PrefsRecord& record) {
  std::FILE* file = std::fopen(path, "we");
  if (file == nullptr) return false;
  const bool written =
      std::fwrite(&record, sizeof record, 1, file) == 1 && std::fflush(file) == 0 && fsync(fileno(file)) == 0;
  const int error = errno;
  std::fclose(file);
  errno = error;
  return written;
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
  // In the same directory, or the renaming would not be one step. Written through to the disk before it takes the
  // old file's name, or a power cut could leave that name with nothing in it.
  const std::string fresh = std::string(path) + ".new";
  if (may_replace(path) && write_record(fresh.c_str(), record) && std::rename(fresh.c_str(), path) == 0) return;
  const int error = errno;
  unlink(fresh.c_str());
  errno = error;
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
  return index_or_first(record.logoPosition, logo_position_count);
}

int time_format(const PrefsRecord& record) {
  return index_or_first(record.timeFormat, stamp_format_count);
}

int time_color(const PrefsRecord& record) {
  return index_or_first(record.timeColor, stamp_color_count);
}

int time_position(const PrefsRecord& record) {
  return index_or_first(record.timePosition, stamp_position_count);
}

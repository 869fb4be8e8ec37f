#include "platform/camera/control_journal.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace handset {
namespace {

constexpr char header[] = "camera controls 1";

/// 64-bit FNV-1a in hexadecimal: a file name that is stable across builds.
std::string hash_of(const std::string& text) {
  std::uint64_t hash = 0xCBF29CE484222325U;
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
  char name[17];
  std::snprintf(name, sizeof name, "%016llx", static_cast<unsigned long long>(hash));
  return name;
}

std::string in_one_line(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

void sync_folder(const std::string& folder) {
  const int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  fsync(fd);
  close(fd);
}

bool write_through(const std::string& path, const std::string& text) {
  std::FILE* file = std::fopen(path.c_str(), "we");
  if (file == nullptr) return false;
  const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size() && std::fflush(file) == 0 &&
                       fsync(fileno(file)) == 0;
  return std::fclose(file) == 0 && written;
}

}  // namespace

ControlJournal::ControlJournal(const std::string& folder, const std::string& identity)
    : folder_(folder),
      identity_(in_one_line(identity)),
      path_(folder.empty() ? std::string() : folder + "/" + hash_of(identity_)) {}

std::vector<ControlSetting> ControlJournal::load() const {
  std::vector<ControlSetting> settings;
  std::ifstream file(path_);
  std::string line;
  if (path_.empty() || !std::getline(file, line) || line != header) return settings;
  if (!std::getline(file, line) || line != identity_) return settings;
  while (std::getline(file, line)) {
    std::istringstream fields(line);
    ControlSetting setting{};
    if (!(fields >> setting.id >> setting.value) || fields.rdbuf()->in_avail() != 0) return {};
    settings.push_back(setting);
  }
  return settings;
}

void ControlJournal::save(const std::vector<ControlSetting>& settings) const {
  if (path_.empty()) return;
  std::error_code ignored;
  if (settings.empty()) {
    std::filesystem::remove(path_, ignored);
    return;
  }
  std::string text = std::string(header) + "\n" + identity_ + "\n";
  for (const ControlSetting& setting : settings) {
    text += std::to_string(setting.id) + " " + std::to_string(setting.value) + "\n";
  }
  std::filesystem::create_directories(folder_, ignored);
  const std::string fresh = path_ + ".new";
  if (write_through(fresh, text)) std::filesystem::rename(fresh, path_, ignored);
  std::filesystem::remove(fresh, ignored);  // if that failed
  sync_folder(folder_);
}

}  // namespace handset

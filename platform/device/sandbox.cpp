#include "platform/device/sandbox.h"

#include <glib.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

std::string special_dir(GUserDirectory which, const char* fallback) {
  const char* path = g_get_user_special_dir(which);
  // Without a user-dirs file some systems return the home folder itself.
  if (path != nullptr && std::strcmp(path, g_get_home_dir()) != 0) return path;
  return std::string(g_get_home_dir()) + "/" + fallback;
}

int report(const char* what, const std::string& path, int error) {
  std::fprintf(stderr, "cannot %s %s: %s\n", what, path.c_str(), std::strerror(error));
  return error;
}

int make_dirs(const std::string& path) {
  std::error_code error;
  fs::create_directories(path, error);
  return error ? report("create", path, error.value()) : 0;
}

int make_link(const std::string& target, const std::string& link) {
  std::error_code error;
  const fs::file_status status = fs::symlink_status(link, error);
  if (fs::is_symlink(status)) {
    if (fs::read_symlink(link, error) == target) return 0;
    fs::remove(link, error);
  } else if (fs::exists(status)) {
    return 0;
  }
  fs::create_directory_symlink(target, link, error);
  return error ? report("link", link, error.value()) : 0;
}

/// Preserves a file in the user's home that libraries look for there unless the environment names it.
void keep_from_home(const char* variable, const char* name) {
  const char* home = std::getenv("HOME");
  if (home == nullptr || *home == '\0') return;
  const std::string path = std::string(home) + '/' + name;
  if (access(path.c_str(), R_OK) == 0) setenv(variable, path.c_str(), 0);
}

}  // namespace

const UserDirs& user_dirs() {
  static const UserDirs dirs = {
      .config = g_get_user_config_dir(),
      .data = g_get_user_data_dir(),
      .cache = g_get_user_cache_dir(),
      .state = g_get_user_state_dir(),
      .pictures = special_dir(G_USER_DIRECTORY_PICTURES, "Pictures"),
      .videos = special_dir(G_USER_DIRECTORY_VIDEOS, "Videos"),
  };
  return dirs;
}

std::string camera_roll_dir() {
  return user_dirs().videos + "/Camera";
}

std::string find_package_dir() {
  std::error_code error;
  const fs::path program = fs::read_symlink("/proc/self/exe", error).parent_path();
  for (const char* place : {"../package", "../share/morvane"}) {
    const fs::path package = fs::weakly_canonical(program / place, error);
    if (!error && fs::is_directory(package / "native", error)) return package.string();
  }
  return {};
}

int prepare_sandbox(const UserDirs& dirs, const std::string& package_dir, std::string* root) {
  *root = dirs.data + "/morvane";
  const std::string pictures = dirs.pictures + "/Camera";
  for (const std::string& path : {*root + "/data", *root + "/shared", pictures}) {
    if (const int error = make_dirs(path)) return error;
  }
  if (const int error = make_link(package_dir, *root + "/app")) return error;
  return make_link(pictures, *root + "/shared/camera");
}

int enter_sandbox(const std::string& package_dir) {
  const UserDirs& dirs = user_dirs();
  std::string root;
  if (const int error = prepare_sandbox(dirs, package_dir, &root)) return error;
  if (chdir(root.c_str()) != 0) return report("enter", root, errno);
  setenv("XDG_CONFIG_HOME", dirs.config.c_str(), 1);
  setenv("XDG_DATA_HOME", dirs.data.c_str(), 1);
  setenv("XDG_CACHE_HOME", dirs.cache.c_str(), 1);
  setenv("XDG_STATE_HOME", dirs.state.c_str(), 1);
  // Without these, X11 servers and session managers may reject the program.
  keep_from_home("XAUTHORITY", ".Xauthority");
  keep_from_home("ICEAUTHORITY", ".ICEauthority");
  setenv("HOME", (root + "/data").c_str(), 1);
  return 0;
}

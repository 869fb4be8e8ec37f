#include "platform/camera/camera_node.h"

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

#include "platform/camera/node_scan.h"

namespace handset {
namespace {

constexpr std::chrono::milliseconds question_limit{200};

/// The program using a node, as far as this user may see it; empty if none.
std::string user_of(const std::string& node) {
  const std::vector<std::string> holders = holders_of(node);
  const auto user = std::find_if_not(holders.begin(), holders.end(), is_media_server);
  return user != holders.end() ? *user : "";
}

}  // namespace

bool node_exists(const std::string& node) {
  struct stat file {};
  return stat(node.c_str(), &file) == 0;
}

std::string access_advice(const std::string& node) {
  if (node_exists("/.flatpak-info")) return "allow the camera in the desktop's privacy settings";
  struct stat file {};
  if (stat(node.c_str(), &file) != 0 || (file.st_mode & S_IRGRP) == 0 || file.st_gid == 0) return {};
  const group* owner = getgrgid(file.st_gid);
  return owner != nullptr ? "join the group \"" + std::string(owner->gr_name) + "\" and log in again" : "";
}

CameraTrouble trouble_of_node(const std::string& node, bool ask, std::string* detail) {
  detail->clear();
  if (node.empty()) return CameraTrouble::none;
  if (!node_exists(node)) return CameraTrouble::gone;
  if (access(node.c_str(), R_OK | W_OK) != 0) {
    *detail = access_advice(node);
    return CameraTrouble::no_access;
  }
  const bool busy = ask && ask_within(question_limit, false, [node] { return node_is_busy(node); });
  if (!busy) return CameraTrouble::none;
  *detail = user_of(node);
  return CameraTrouble::busy;
}

}  // namespace handset

#include "platform/camera/camera_trouble.h"

#include <cerrno>
#include <map>
#include <mutex>

namespace handset {
namespace {

struct Failure {
  CameraTrouble trouble;
  std::chrono::steady_clock::time_point when;
};

struct Failures {
  std::mutex mutex;
  std::map<std::string, Failure> by_identity;
};

Failures& failures() {
  static Failures* const instance = new Failures;  // never destroyed: service threads may outlive main()
  return *instance;
}

const char* reason(CameraTrouble trouble) {
  switch (trouble) {
    case CameraTrouble::none:
    case CameraTrouble::searching:
      break;
    case CameraTrouble::no_access:
      return "no access";
    case CameraTrouble::busy:
      return "in use by another program";
    case CameraTrouble::no_picture:
      return "sends no picture";
    case CameraTrouble::gone:
      return "disconnected";
    case CameraTrouble::formats:
      return "only formats that cannot be shown";
  }
  return "";
}

}  // namespace

std::string explain(CameraTrouble trouble, const std::string& label, const std::string& detail) {
  if (trouble == CameraTrouble::none) return {};
  if (trouble == CameraTrouble::searching) return "Looking for cameras";
  return (label.empty() ? "Camera" : label) + ": " + reason(trouble) + (detail.empty() ? "" : " (" + detail + ")");
}

int error_of(CameraTrouble trouble) {
  switch (trouble) {
    case CameraTrouble::none:
      break;
    case CameraTrouble::no_access:
      return EACCES;
    case CameraTrouble::busy:
      return EBUSY;
    case CameraTrouble::no_picture:
      return EIO;
    case CameraTrouble::gone:
    case CameraTrouble::searching:
      return ENODEV;
    case CameraTrouble::formats:
      return ENOTSUP;
  }
  return 0;
}

void note_camera_failure(const std::string& identity, CameraTrouble trouble) {
  if (trouble == CameraTrouble::none) return clear_camera_failure(identity);
  Failures& all = failures();
  const std::lock_guard lock(all.mutex);
  all.by_identity.insert_or_assign(identity, Failure{trouble, std::chrono::steady_clock::now()});
}

void clear_camera_failure(const std::string& identity) {
  Failures& all = failures();
  const std::lock_guard lock(all.mutex);
  all.by_identity.erase(identity);
}

CameraTrouble recent_camera_failure(const std::string& identity) {
  Failures& all = failures();
  const std::lock_guard lock(all.mutex);
  const auto found = all.by_identity.find(identity);
  if (found == all.by_identity.end()) return CameraTrouble::none;
  if (std::chrono::steady_clock::now() - found->second.when <= failure_memory) return found->second.trouble;
  all.by_identity.erase(found);
  return CameraTrouble::none;
}

}  // namespace handset

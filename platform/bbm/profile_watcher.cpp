#include "platform/bbm/profile_watcher.h"

#include <QFileInfo>
#include <chrono>

#include "platform/device/profile.h"

namespace handset {

using namespace std::chrono_literals;

ProfileWatcher::ProfileWatcher(QObject* parent)
    : QObject(parent), file_(QString::fromStdString(device_profile_path())) {
  settle_.setSingleShot(true);
  settle_.setInterval(100ms);
  connect(&settle_, &QTimer::timeout, this, &ProfileWatcher::changed);
  const auto start = [this] {
    watch();
    settle_.start();
  };
  connect(&watcher_, &QFileSystemWatcher::fileChanged, this, start);
  connect(&watcher_, &QFileSystemWatcher::directoryChanged, this, start);
  watch();
}

void ProfileWatcher::watch() {
  const QString folder = QFileInfo(file_).path();
  const QString above = QFileInfo(folder).path();
  for (const QString& path : {file_, folder}) {
    if (QFileInfo::exists(path)) watcher_.addPath(path);
  }
  // Settings of all programs change in there: do not watch it longer than necessary.
  if (!QFileInfo::exists(folder) && QFileInfo::exists(above)) {
    watcher_.addPath(above);
  } else {
    watcher_.removePath(above);
  }
}

}  // namespace handset

#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>

namespace handset {

/// Tells when the file of the device profile has been changed, created, replaced or removed. UI thread.
class ProfileWatcher : public QObject {
  Q_OBJECT

 public:
  explicit ProfileWatcher(QObject* parent = nullptr);

 Q_SIGNALS:
  /// A moment after the last of the changes that come together, so that no half-written file is read.
  void changed();

 private:
  /// A file that is not there cannot be watched, its folder can; the same holds for that folder.
  void watch();

  QString file_;
  QFileSystemWatcher watcher_;
  QTimer settle_;
};

}  // namespace handset

#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>

namespace handset {

/// Signals when the device profile's file is changed, created, replaced or removed. UI thread.
class ProfileWatcher : public QObject {
  Q_OBJECT

 public:
  explicit ProfileWatcher(QObject* parent = nullptr);

 Q_SIGNALS:
  /// Emitted shortly after the last of a burst of changes, so that no half-written file is read.
  void changed();

 private:
  /// A missing file cannot be watched, but its folder can; likewise for a missing folder.
  void watch();

  QString file_;
  QFileSystemWatcher watcher_;
  QTimer settle_;
};

}  // namespace handset

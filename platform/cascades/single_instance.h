#pragma once

#include <QLocalServer>
#include <QObject>
#include <memory>

class QLockFile;

namespace handset {

/// Lets one process per user and sandbox run; later ones ask it to come to the front. What a killed process left behind
/// is no obstacle. It may outlive the application, for what is to be finished before the next one runs. UI thread.
class SingleInstance : public QObject {
  Q_OBJECT

 public:
  /// Decides at once, or after some three seconds where another process holds the place and does not answer; waits for
  /// one that is about to end, twenty seconds at the most.
  /// @param sandbox  the sandbox's path
  explicit SingleInstance(const QString& sandbox, QObject* parent = nullptr);
  ~SingleInstance() override;

  /// This process has the place. Otherwise another one has been told, and this one should end with status 0.
  bool is_first() const { return first_; }

 Q_SIGNALS:
  /// Another process was started.
  void activation_requested();

 private:
  void take_place(const QString& socket);
  void answer();

  // The lock is let go last: the next one in its place must not lose its socket to this one's end.
  std::unique_ptr<QLockFile> lock_;
  QLocalServer server_;
  bool first_ = false;
};

}  // namespace handset

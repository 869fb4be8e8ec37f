#pragma once

#include <QLocalServer>
#include <QObject>
#include <memory>

class QLockFile;

namespace handset {

/// Lets one process per user and sandbox run; later ones ask it to come to the front. Leftovers of a killed process do
/// not get in the way. May outlive the application, for work that must finish before the next instance runs. UI thread.
class SingleInstance : public QObject {
  Q_OBJECT

 public:
  /// Decides at once, or after about three seconds if the holder does not answer; waits at most twenty seconds for one
  /// that is about to end.
  /// @param sandbox  the sandbox's path
  explicit SingleInstance(const QString& sandbox, QObject* parent = nullptr);
  ~SingleInstance() override;

  /// Whether this process is the instance. Otherwise the other one has been told, and this one should exit with status
  /// 0.
  bool is_first() const { return first_; }

 Q_SIGNALS:
  /// Another process was started.
  void activation_requested();

 private:
  void take_place(const QString& socket);
  void answer();

  // The lock is released last: the next instance must not lose its socket when this one ends.
  std::unique_ptr<QLockFile> lock_;
  QLocalServer server_;
  bool first_ = false;
};

}  // namespace handset

#pragma once

#include <QObject>
#include <optional>

namespace handset {

/// Asks the desktop not to dim the screen: org.freedesktop.ScreenSaver on the session bus. Best effort: without a bus,
/// or if refused, nothing happens. The desktop drops the request when this process ends. UI thread.
class KeepAwake : public QObject {
  Q_OBJECT

 public:
  using QObject::QObject;
  ~KeepAwake() override;
  /// Returns at once.
  void set(bool awake);

 private:
  void release();

  bool wanted_ = false;
  bool asked_ = false;  ///< a reply is pending
  std::optional<uint> cookie_;
};

}  // namespace handset

#pragma once

#include <QObject>
#include <optional>

namespace handset {

/// Asks the desktop not to dim the screen: org.freedesktop.ScreenSaver on the session bus. Best effort: without a bus,
/// or with a refusal, nothing happens. The desktop forgets the request when this process ends. UI thread.
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
  bool asked_ = false;  ///< an answer is on its way
  std::optional<uint> cookie_;
};

}  // namespace handset

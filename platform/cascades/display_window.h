#pragma once

#include <QQuickWindow>

namespace handset {

/// The desktop window around the handset's display, handling the keys that belong to the handset and not to a control.
/// Closing it ends the event loop. UI thread.
class DisplayWindow : public QQuickWindow {
  Q_OBJECT

 public:
  DisplayWindow();

  /// Resizes the window to the display's shape, at most as large as the desktop; leaves a maximized one alone.
  void reshape(QSize display);
  void bring_to_front();

 Q_SIGNALS:
  /// Emitted when nothing on the display could go back.
  void backUnused();

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  bool handset_key(QKeyEvent* event);
};

}  // namespace handset

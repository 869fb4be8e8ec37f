#pragma once

#include <QQuickWindow>

namespace handset {

/// The desktop window around the handset's display, with the keys that are the handset's and not a control's. Closing
/// it ends the event loop. UI thread.
class DisplayWindow : public QQuickWindow {
  Q_OBJECT

 public:
  DisplayWindow();

  /// Grown or shrunk to the display's shape, at most as large as the desktop; left alone where it is maximized.
  void reshape(QSize display);
  void bring_to_front();

 Q_SIGNALS:
  /// Nothing on the display had anything to go back from.
  void backUnused();

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  bool handset_key(QKeyEvent* event);
};

}  // namespace handset

#include "platform/cascades/display_window.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QInputMethodQueryEvent>
#include <QKeyEvent>
#include <QQuickItem>
#include <QScreen>

#include "platform/cascades/orientation.h"
#include "platform/cascades/stage.h"
#include "platform/cascades/window_geometry.h"

namespace handset {

namespace {

constexpr QSize least_size(160, 160);

/// In a text field, Ctrl and an arrow move by a word.
bool is_text_field(QObject* focused) {
  if (!focused) return false;
  QInputMethodQueryEvent query(Qt::ImEnabled);
  QCoreApplication::sendEvent(focused, &query);
  return query.value(Qt::ImEnabled).toBool();
}

void turn(int degrees) {
  auto* support = bb::cascades::OrientationSupport::instance();
  support->turnTo((support->displayDirection() + degrees + 360) % 360);
}

}  // namespace

DisplayWindow::DisplayWindow() {
  setColor(Qt::black);
  setMinimumSize(least_size);
}

void DisplayWindow::reshape(QSize display) {
  if (windowStates() & (Qt::WindowMaximized | Qt::WindowFullScreen)) return;
  resize(reshaped_window_size(size(), display, screen()->availableSize()));
}

void DisplayWindow::bring_to_front() {
  if (windowStates() & Qt::WindowMinimized) setWindowStates(windowStates() & ~Qt::WindowMinimized);
  show();
  raise();
  requestActivate();
}

void DisplayWindow::keyPressEvent(QKeyEvent* event) {
  if (handset_key(event)) return event->accept();
  QQuickWindow::keyPressEvent(event);
  if (event->isAccepted() || (event->key() != Qt::Key_Escape && event->key() != Qt::Key_Back)) return;
  event->accept();
  if (!Stage::instance()->go_back()) Q_EMIT backUnused();
}

bool DisplayWindow::handset_key(QKeyEvent* event) {
  Stage* stage = Stage::instance();
  if (event->key() == Qt::Key_F10 && event->modifiers() == Qt::NoModifier) {
    stage->set_menu_open(!stage->menu_open());
    return true;
  }
  if ((event->modifiers() & ~Qt::KeypadModifier) != Qt::ControlModifier) return false;
  switch (event->key()) {
    case Qt::Key_Q:
      QCoreApplication::exit(0);
      return true;
    case Qt::Key_Left:
    case Qt::Key_Right:
      if (is_text_field(activeFocusItem())) return false;
      turn(event->key() == Qt::Key_Right ? 90 : -90);
      return true;
    default:
      return false;
  }
}

void DisplayWindow::closeEvent(QCloseEvent* event) {
  QQuickWindow::closeEvent(event);
  QCoreApplication::exit(0);
}

}  // namespace handset

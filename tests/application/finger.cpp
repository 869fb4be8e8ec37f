#include "tests/application/finger.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QQuickWindow>
#include <QWheelEvent>
#include <functional>

#include "platform/cascades/application.h"

namespace finger {

namespace {

constexpr int wheel_step = 120;

QQuickWindow* window() {
  return bb::cascades::Application::instance()->desktopWindow();
}

QPointF middle(const QQuickItem* item) {
  return item->mapToScene({item->width() / 2, item->height() / 2});
}

bool tappable(const QQuickItem* item) {
  const bool kind =
      item->inherits("QQuickAbstractButton") || item->inherits("QQuickMouseArea") || item->inherits("QQuickSlider");
  const QRectF inside(QPointF(0, 0), window()->size());
  return kind && item->isVisible() && item->isEnabled() && item->width() > 0 && inside.contains(middle(item));
}

/// In the order in which they are drawn, those in front last.
void collect(QQuickItem* item, std::vector<QQuickItem*>* found) {
  if (tappable(item)) found->push_back(item);
  QList<QQuickItem*> children = item->childItems();
  std::stable_sort(children.begin(), children.end(),
                   [](const QQuickItem* left, const QQuickItem* right) { return left->z() < right->z(); });
  for (QQuickItem* const child : children) collect(child, found);
}

void send_mouse(QEvent::Type type, QPointF point, Qt::MouseButtons held) {
  QMouseEvent event(type, point, window()->mapToGlobal(point), Qt::LeftButton, held, Qt::NoModifier);
  QCoreApplication::sendEvent(window(), &event);
}

}  // namespace

std::vector<QQuickItem*> targets() {
  std::vector<QQuickItem*> found;
  collect(window()->contentItem(), &found);
  return found;
}

QQuickItem* button(const QString& text) {
  const std::vector<QQuickItem*> found = targets();
  const auto last = std::find_if(found.rbegin(), found.rend(),
                                 [&](const QQuickItem* item) { return item->property("text").toString() == text; });
  return last == found.rend() ? nullptr : *last;
}

void tap(QPointF point) {
  send_mouse(QEvent::MouseButtonPress, point, Qt::LeftButton);
  send_mouse(QEvent::MouseButtonRelease, point, Qt::NoButton);
}

void tap(QQuickItem* item) {
  tap(middle(item));
}

void pinch(QPointF point, int steps) {
  QWheelEvent event(point, window()->mapToGlobal(point), {}, {0, steps * wheel_step}, Qt::NoButton, Qt::ControlModifier,
                    Qt::NoScrollPhase, false);
  QCoreApplication::sendEvent(window(), &event);
}

void type(Qt::Key key, Qt::KeyboardModifiers modifiers) {
  for (const QEvent::Type kind : {QEvent::KeyPress, QEvent::KeyRelease}) {
    const bool letter = modifiers == Qt::NoModifier && key >= Qt::Key_Space && key <= Qt::Key_AsciiTilde;
    QKeyEvent event(kind, key, modifiers, letter ? QString(QChar(key)).toLower() : QString());
    QCoreApplication::sendEvent(window(), &event);
  }
}

}  // namespace finger

#include "platform/cascades/shield.h"

#include <QHoverEvent>
#include <QMouseEvent>
#include <QTouchEvent>
#include <QWheelEvent>

namespace bb::cascades {

Shield::Shield(QQuickItem* parent) : QQuickItem(parent) {
  setAcceptedMouseButtons(Qt::AllButtons);
  setAcceptTouchEvents(true);
  setAcceptHoverEvents(true);
}

void Shield::mousePressEvent(QMouseEvent* event) {
  event->accept();
  Q_EMIT tapped();
}

void Shield::touchEvent(QTouchEvent* event) {
  event->accept();
  if (event->type() == QEvent::TouchBegin) Q_EMIT tapped();
}

void Shield::wheelEvent(QWheelEvent* event) {
  event->accept();
}

void Shield::hoverEnterEvent(QHoverEvent* event) {
  event->accept();
}

void Shield::hoverMoveEvent(QHoverEvent* event) {
  event->accept();
}

}  // namespace bb::cascades

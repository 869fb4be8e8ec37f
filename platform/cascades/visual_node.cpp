#include "platform/cascades/visual_node.h"

#include "platform/cascades/gesture_recognizer.h"
#include "platform/cascades/gestures.h"

namespace bb::cascades {

VisualNode::VisualNode(QQuickItem* parent) : QQuickItem(parent) {}

Control::Control(QQuickItem* parent) : VisualNode(parent) {}

void Control::setPreferredWidth(float width) {
  if (preferred_width_ == width) return;
  preferred_width_ = width;
  setImplicitWidth(width);
  Q_EMIT preferredWidthChanged();
}

void Control::setPreferredHeight(float height) {
  if (preferred_height_ == height) return;
  preferred_height_ = height;
  setImplicitHeight(height);
  Q_EMIT preferredHeightChanged();
}

void Control::addGestureHandler(GestureHandler* handler) {
  if (!handler) return;
  handler->setParent(this);
  if (!gestures_) gestures_ = new GestureRecognizer(this);
}

void Control::take_mouse(QMouseEvent* event) {
  if (gestures_) {
    gestures_->mouse(event);
  } else {
    event->ignore();
  }
}

void Control::cancel_gestures() {
  if (gestures_) gestures_->cancel();
}

void Control::mousePressEvent(QMouseEvent* event) {
  take_mouse(event);
}

void Control::mouseMoveEvent(QMouseEvent* event) {
  take_mouse(event);
}

void Control::mouseReleaseEvent(QMouseEvent* event) {
  take_mouse(event);
}

void Control::mouseUngrabEvent() {
  cancel_gestures();
}

void Control::touchEvent(QTouchEvent* event) {
  if (gestures_) {
    gestures_->touch(event);
  } else {
    event->ignore();
  }
}

void Control::touchUngrabEvent() {
  cancel_gestures();
}

void Control::wheelEvent(QWheelEvent* event) {
  if (gestures_) {
    gestures_->wheel(event);
  } else {
    event->ignore();
  }
}

void Control::itemChange(ItemChange change, const ItemChangeData& data) {
  const bool unseen = (change == ItemVisibleHasChanged || change == ItemEnabledHasChanged) && !data.boolValue;
  if (unseen || (change == ItemSceneChange && !data.window)) cancel_gestures();
  VisualNode::itemChange(change, data);
}

}  // namespace bb::cascades

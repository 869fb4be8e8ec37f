#include "platform/cascades/gesture_recognizer.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QQuickWindow>
#include <QStyleHints>
#include <QTouchEvent>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "platform/cascades/gestures.h"

namespace bb::cascades {

namespace {

constexpr int wheel_pause_ms = 400;
// Slightly more than a tenth: counting tenths in single precision must find every notch.
constexpr qreal ratio_per_notch = 0.1001;
constexpr qreal units_per_notch = 120;
// Touching fingers are still a distance apart: keeps ratios finite and above 0.
constexpr qreal least_distance = 1;
constexpr qreal least_ratio = 0.1;

template <typename Handler>
QList<Handler*> handlers(const QObject* control) {
  return control->findChildren<Handler*>(Qt::FindDirectChildrenOnly);
}

/// Emits a signal of every handler; any of them may delete others.
template <typename Handler, typename... Arguments>
void emit_all(const QObject* control, void (Handler::*signal)(Arguments...), Arguments... arguments) {
  const QList<Handler*> now = handlers<Handler>(control);
  const QList<QPointer<Handler>> alive(now.begin(), now.end());
  for (const QPointer<Handler>& handler : alive) {
    if (handler) Q_EMIT(handler.data()->*signal)(arguments...);
  }
}

/// A handler on top may follow the pointer without having grabbed it yet: it takes precedence.
bool taken_on_top(const QPointerEvent* event) {
  for (const QEventPoint& point : event->points()) {
    if (!event->passiveGrabbers(point).isEmpty()) return true;
  }
  return false;
}

qreal distance(QPointF a, QPointF b) {
  return std::max(std::hypot(a.x() - b.x(), a.y() - b.y()), least_distance);
}

}  // namespace

GestureRecognizer::GestureRecognizer(QQuickItem* control) : QObject(control), control_(control) {
  control->setAcceptedMouseButtons(Qt::LeftButton);
  control->setAcceptTouchEvents(true);
  wheel_pause_.setSingleShot(true);
  wheel_pause_.setInterval(wheel_pause_ms);
  connect(&wheel_pause_, &QTimer::timeout, this, &GestureRecognizer::end_pinch);
}

void GestureRecognizer::mouse(QMouseEvent* event) {
  switch (event->type()) {
    case QEvent::MouseButtonPress:
      if (taken_on_top(event) || handlers<TapHandler>(control_).isEmpty()) return event->ignore();
      begin_tap(event->scenePosition());
      break;
    case QEvent::MouseMove:
      if (!near_press(event->scenePosition())) tapping_ = false;
      break;
    case QEvent::MouseButtonRelease:
      end_tap(event->scenePosition(), event->position());
      break;
    default:
      event->ignore();
  }
}

void GestureRecognizer::touch(QTouchEvent* event) {
  if (event->type() == QEvent::TouchCancel) return cancel();
  if (event->type() == QEvent::TouchBegin && taken_on_top(event)) return event->ignore();
  const bool alone = fingers_.size() <= 1 && event->pointCount() == 1;
  for (const QEventPoint& point : event->points()) {
    if (point.state() == QEventPoint::Released) {
      fingers_.remove(point.id());
    } else {
      fingers_.insert(point.id(), point.position());
    }
  }
  if (!alone) {
    tapping_ = false;
    return update_touch_pinch();
  }
  const QEventPoint& finger = event->point(0);
  if (finger.state() == QEventPoint::Pressed) begin_tap(finger.scenePosition());
  if (!near_press(finger.scenePosition())) tapping_ = false;
  if (finger.state() == QEventPoint::Released) end_tap(finger.scenePosition(), finger.position());
}

void GestureRecognizer::wheel(QWheelEvent* event) {
  const int units = event->angleDelta().y();
  const bool pinch = event->modifiers().testFlag(Qt::ControlModifier) && units != 0 &&
                     !handlers<PinchHandler>(control_).isEmpty() && !(pinching_ && !by_wheel_);
  if (!pinch) return event->ignore();
  tapping_ = false;
  const qreal change = ratio_per_notch * units / units_per_notch;
  // Fingers meet or a wheel keeps turning: continue in a new pinch.
  if (pinching_ && ratio_ + change < least_ratio) end_pinch();
  if (!pinching_) {
    by_wheel_ = true;
    watched_ = control_->window();
    if (watched_) watched_->installEventFilter(this);
    begin_pinch(event->position());
    // Handlers measure from the first update, which fingers send before they have moved.
    update_pinch(1, event->position());
  }
  wheel_pause_.start();
  update_pinch(std::max(least_ratio, ratio_ + change), event->position());
}

bool GestureRecognizer::eventFilter(QObject* window, QEvent* event) {
  const bool let_go = event->type() == QEvent::KeyRelease && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Control;
  if (by_wheel_ && (let_go || event->type() == QEvent::FocusOut)) end_pinch();
  return QObject::eventFilter(window, event);
}

void GestureRecognizer::cancel() {
  tapping_ = false;
  fingers_.clear();
  if (!pinching_) return;
  stop_pinch();
  emit_all(control_, &PinchHandler::pinchCancelled);
}

bool GestureRecognizer::near_press(QPointF scene) const {
  return (scene - pressed_at_).manhattanLength() < QGuiApplication::styleHints()->startDragDistance();
}

void GestureRecognizer::begin_tap(QPointF scene) {
  tapping_ = true;
  pressed_at_ = scene;
}

void GestureRecognizer::end_tap(QPointF scene, QPointF local) {
  const bool tapped = tapping_ && near_press(scene) && control_->contains(local);
  tapping_ = false;
  if (!tapped) return;
  TapEvent event(local);
  emit_all(control_, &TapHandler::tapped, &event);
}

std::pair<int, int> GestureRecognizer::fingers() const {
  return std::minmax(fingers_.cbegin().key(), std::next(fingers_.cbegin()).key());
}

void GestureRecognizer::update_touch_pinch() {
  if (by_wheel_) end_pinch();
  if (fingers_.size() != 2) {
    if (pinching_ && fingers_.size() < 2) end_pinch();
    return;
  }
  const QPointF one = fingers_.cbegin().value();
  const QPointF other = std::next(fingers_.cbegin()).value();
  const QPointF middle = (one + other) / 2;
  if (pinching_) {
    const std::pair<int, int> pair = fingers();
    // Replacing a lifted finger by another changes nothing by itself.
    if (pair != pair_) first_distance_ = distance(one, other) / ratio_;
    pair_ = pair;
    const qreal ratio = distance(one, other) / first_distance_;
    // An event that brings a new finger arrives twice.
    if (ratio != ratio_ || middle != middle_) update_pinch(ratio, middle);
    return;
  }
  if (handlers<PinchHandler>(control_).isEmpty()) return;
  first_distance_ = distance(one, other);
  pair_ = fingers();
  control_->setKeepTouchGrab(true);
  begin_pinch(middle);
}

void GestureRecognizer::begin_pinch(QPointF middle) {
  pinching_ = true;
  ratio_ = 1;
  middle_ = middle;
  PinchEvent event(1, middle);
  emit_all(control_, &PinchHandler::pinchStarted, &event);
}

void GestureRecognizer::update_pinch(qreal ratio, QPointF middle) {
  ratio_ = ratio;
  middle_ = middle;
  PinchEvent event(static_cast<float>(ratio), middle);
  emit_all(control_, &PinchHandler::pinchUpdated, &event);
}

void GestureRecognizer::stop_pinch() {
  pinching_ = by_wheel_ = false;
  wheel_pause_.stop();
  control_->setKeepTouchGrab(false);
  if (watched_) watched_->removeEventFilter(this);
}

void GestureRecognizer::end_pinch() {
  if (!pinching_) return;
  stop_pinch();
  PinchEvent event(static_cast<float>(ratio_), middle_);
  emit_all(control_, &PinchHandler::pinchEnded, &event);
}

}  // namespace bb::cascades

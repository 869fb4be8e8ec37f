#pragma once

// Taps and pinches on a control. A pinch is two fingers, or Ctrl and the mouse wheel.

#include <QObject>
#include <QPointF>

namespace bb::cascades {

class TapEvent : public QObject {
  Q_OBJECT

 public:
  explicit TapEvent(QPointF position) : position_(position) {}
  /// Within the control; pixels of the display.
  float localX() const { return static_cast<float>(position_.x()); }
  float localY() const { return static_cast<float>(position_.y()); }

 private:
  QPointF position_;
};

class PinchEvent : public QObject {
  Q_OBJECT

 public:
  PinchEvent(float ratio, QPointF middle) : ratio_(ratio), middle_(middle) {}
  /// Distance of the fingers in terms of their distance at the pinch's start.
  float pinchRatio() const { return ratio_; }
  float midPointX() const { return static_cast<float>(middle_.x()); }
  float midPointY() const { return static_cast<float>(middle_.y()); }

 private:
  float ratio_;
  QPointF middle_;
};

/// A control's addGestureHandler attaches it.
class GestureHandler : public QObject {
  Q_OBJECT

 public:
  explicit GestureHandler(QObject* parent = nullptr) : QObject(parent) {}
};

class TapHandler : public GestureHandler {
  Q_OBJECT

 public:
  explicit TapHandler(QObject* parent = nullptr) : GestureHandler(parent) {}

 Q_SIGNALS:
  void tapped(bb::cascades::TapEvent* event);
};

/// The first signal of a pinch is pinchStarted, the last one pinchEnded or pinchCancelled.
class PinchHandler : public GestureHandler {
  Q_OBJECT

 public:
  explicit PinchHandler(QObject* parent = nullptr) : GestureHandler(parent) {}

 Q_SIGNALS:
  void pinchStarted(bb::cascades::PinchEvent* event);
  void pinchUpdated(bb::cascades::PinchEvent* event);
  void pinchEnded(bb::cascades::PinchEvent* event);
  void pinchCancelled();
};

}  // namespace bb::cascades

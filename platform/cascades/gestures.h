#pragma once

// Taps and pinches on a control. A pinch is two fingers, or Ctrl and the mouse wheel.

#include <QObject>
#include <QPointF>

namespace bb::cascades {

class TapEvent : public QObject {
  Q_OBJECT

 public:
  explicit TapEvent(QPointF position) : position_(position) {}
  /// Within the control; display pixels.
  float localX() const { return static_cast<float>(position_.x()); }
  float localY() const { return static_cast<float>(position_.y()); }

 private:
  QPointF position_;
};

class PinchEvent : public QObject {
  Q_OBJECT

 public:
  PinchEvent(float ratio, QPointF middle) : ratio_(ratio), middle_(middle) {}
  /// Distance of the fingers relative to the start of the pinch.
  float pinchRatio() const { return ratio_; }
  float midPointX() const { return static_cast<float>(middle_.x()); }
  float midPointY() const { return static_cast<float>(middle_.y()); }

 private:
  float ratio_;
  QPointF middle_;
};

/// Attached by a control's addGestureHandler.
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

/// A pinch starts with pinchStarted and ends with pinchEnded or pinchCancelled.
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

#pragma once

#include <QHash>
#include <QObject>
#include <QPointF>
#include <QPointer>
#include <QQuickItem>
#include <QTimer>
#include <utility>

class QMouseEvent;
class QTouchEvent;
class QWheelEvent;

namespace bb::cascades {

/// Turns the pointer events of one control into signals of its child gesture handlers. UI thread.
class GestureRecognizer : public QObject {
 public:
  /// Becomes the control's child and accepts left clicks and touches from then on.
  explicit GestureRecognizer(QQuickItem* control);

  // The events as the control gets them; those that are not part of a gesture are ignored, so that they reach what is
  // beneath.
  void mouse(QMouseEvent* event);
  void touch(QTouchEvent* event);
  void wheel(QWheelEvent* event);
  /// Another item has grabbed the pointer, or the control is no longer visible.
  void cancel();

 protected:
  bool eventFilter(QObject* window, QEvent* event) override;

 private:
  void begin_tap(QPointF scene);
  void end_tap(QPointF scene, QPointF local);
  std::pair<int, int> fingers() const;
  void update_touch_pinch();
  void begin_pinch(QPointF middle);
  void update_pinch(qreal ratio, QPointF middle);
  void stop_pinch();
  void end_pinch();
  bool near_press(QPointF scene) const;

  QQuickItem* control_;
  bool tapping_ = false;
  QPointF pressed_at_;  ///< scene coordinates; where the tap began

  bool pinching_ = false;
  qreal ratio_ = 1;
  QPointF middle_;
  QHash<int, QPointF> fingers_;  ///< by point id, in the control's coordinates
  std::pair<int, int> pair_;     ///< point ids of the two that pinch
  qreal first_distance_ = 1;     ///< of the pair, or its equivalent for a later pair

  bool by_wheel_ = false;  ///< the pinch comes from Ctrl and the wheel
  QTimer wheel_pause_;
  QPointer<QObject> watched_;  ///< the window, whose key events tell when Ctrl is released
};

}  // namespace bb::cascades

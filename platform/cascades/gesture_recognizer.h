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

/// Turns the pointer events of one control into the signals of the gesture handlers that are its children. UI thread.
class GestureRecognizer : public QObject {
 public:
  /// The control's child. It accepts left clicks and touches from then on.
  explicit GestureRecognizer(QQuickItem* control);

  // The events as the control gets them; those that are no part of a gesture are ignored, so that they go on to what is
  // beneath.
  void mouse(QMouseEvent* event);
  void touch(QTouchEvent* event);
  void wheel(QWheelEvent* event);
  /// Somebody else has taken the pointer, or the control cannot be seen any more.
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
  QPointF pressed_at_;  ///< scene; where the tap began

  bool pinching_ = false;
  qreal ratio_ = 1;
  QPointF middle_;
  QHash<int, QPointF> fingers_;  ///< on the control, by point id; control's coordinates
  std::pair<int, int> pair_;     ///< point ids of the two that pinch
  qreal first_distance_ = 1;     ///< of the pair, or what that of a later pair would have been

  bool by_wheel_ = false;  ///< the pinch is one of Ctrl and the wheel
  QTimer wheel_pause_;
  QPointer<QObject> watched_;  ///< the window, whose keys say when Ctrl is let go
};

}  // namespace bb::cascades

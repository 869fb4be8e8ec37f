#pragma once

#include <QQuickItem>

namespace bb::cascades {

/// Takes every click, touch, turn of the wheel and hover, so that nothing beneath sees it.
class Shield : public QQuickItem {
  Q_OBJECT

 public:
  explicit Shield(QQuickItem* parent = nullptr);

 Q_SIGNALS:
  /// Clicked or touched.
  void tapped();

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void touchEvent(QTouchEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void hoverEnterEvent(QHoverEvent* event) override;
  void hoverMoveEvent(QHoverEvent* event) override;
};

}  // namespace bb::cascades

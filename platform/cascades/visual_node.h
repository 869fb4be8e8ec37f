#pragma once

// Common base of all visible controls. They are Qt Quick items: state and interface are here in C++, the look is in a
// QML document of the same name under qml/. Everything in this folder is for the UI thread.

#include <QQuickItem>

namespace bb::cascades {

class GestureHandler;
class GestureRecognizer;

/// A node of the scene. Visibility is QQuickItem's: isVisible() is also false while an enclosing node is hidden.
class VisualNode : public QQuickItem {
  Q_OBJECT

 public:
  explicit VisualNode(QQuickItem* parent = nullptr);
};

class Control : public VisualNode {
  Q_OBJECT
  Q_PROPERTY(float preferredWidth READ preferredWidth WRITE setPreferredWidth NOTIFY preferredWidthChanged)
  Q_PROPERTY(float preferredHeight READ preferredHeight WRITE setPreferredHeight NOTIFY preferredHeightChanged)

 public:
  explicit Control(QQuickItem* parent = nullptr);

  /// Display pixels; 0 if not set: the control fills the available space.
  float preferredWidth() const { return preferred_width_; }
  void setPreferredWidth(float width);
  float preferredHeight() const { return preferred_height_; }
  void setPreferredHeight(float height);

  /// The handler becomes this control's child and sees what happens on the control unless something on top takes it.
  void addGestureHandler(GestureHandler* handler);

 Q_SIGNALS:
  void preferredWidthChanged();
  void preferredHeightChanged();

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseUngrabEvent() override;
  void touchEvent(QTouchEvent* event) override;
  void touchUngrabEvent() override;
  void wheelEvent(QWheelEvent* event) override;
  void itemChange(ItemChange change, const ItemChangeData& data) override;

 private:
  void take_mouse(QMouseEvent* event);
  void cancel_gestures();

  GestureRecognizer* gestures_ = nullptr;  ///< a child; null before the first handler
  float preferred_width_ = 0;
  float preferred_height_ = 0;
};

}  // namespace bb::cascades

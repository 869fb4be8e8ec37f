#pragma once

// The rounded background of what stands over the camera's picture.

#include <QColor>
#include <QPainter>
#include <QQuickPaintedItem>

namespace bb::cascades {

/// A translucent shape with round ends, painted as a whole: the software renderer assembles a rounded Rectangle from
/// pieces whose seams show in a scaled window.
class Pill : public QQuickPaintedItem {
  Q_OBJECT
  Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)

 public:
  explicit Pill(QQuickItem* parent = nullptr) : QQuickPaintedItem(parent) { setAntialiasing(true); }

  QColor color() const { return color_; }
  void setColor(const QColor& color) {
    if (color == color_) return;
    color_ = color;
    update();
    Q_EMIT colorChanged();
  }

  void paint(QPainter* painter) override {
    painter->setPen(Qt::NoPen);
    painter->setBrush(color_);
    painter->drawRoundedRect(boundingRect(), height() / 2, height() / 2);
  }

 Q_SIGNALS:
  void colorChanged();

 private:
  QColor color_;
};

}  // namespace bb::cascades

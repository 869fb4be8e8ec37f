#include "platform/cascades/animation.h"

#include <QMatrix4x4>

namespace bb::cascades {

/// A separate translation, so that the item's position remains up to its layout. Owned by the item.
class TranslateTransition::Offset : public QQuickTransform {
 public:
  explicit Offset(QQuickItem* item) : QQuickTransform(item) { appendToItem(item); }
  void move(float x, float y) {
    x_ = x;
    y_ = y;
    update();
  }
  void applyTo(QMatrix4x4* matrix) const override { matrix->translate(x_, y_); }

 private:
  float x_ = 0;
  float y_ = 0;
};

TranslateTransition::TranslateTransition(QObject* parent) : QObject(parent) {
  animation_.setStartValue(1.0F);
  animation_.setEndValue(0.0F);
  animation_.setEasingCurve(QEasingCurve::OutCubic);
  connect(&animation_, &QVariantAnimation::valueChanged, this, [this](const QVariant& rest) {
    if (offset_) offset_->move(from_x_ * rest.toFloat(), from_y_ * rest.toFloat());
  });
  connect(&animation_, &QVariantAnimation::finished, this, &TranslateTransition::finish);
}

TranslateTransition::~TranslateTransition() {
  delete offset_.data();
}

void TranslateTransition::setTarget(QQuickItem* target) {
  if (target_ == target) return;
  target_ = target;
  Q_EMIT targetChanged();
}

void TranslateTransition::play() {
  animation_.stop();
  delete offset_.data();
  QQuickItem* item = target_ ? target_.data() : qobject_cast<QQuickItem*>(parent());
  if (!item || duration_ <= 0) return finish();
  offset_ = new Offset(item);
  offset_->move(from_x_, from_y_);
  animation_.setDuration(duration_);
  animation_.start();
}

void TranslateTransition::finish() {
  delete offset_.data();
  Q_EMIT ended();
}

}  // namespace bb::cascades

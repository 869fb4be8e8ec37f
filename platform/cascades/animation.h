#pragma once

#include <QEasingCurve>
#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QVariantAnimation>

namespace bb::cascades {

/// Moves its target, or the item around it in the document, from an offset to its place. Pixels, milliseconds.
class TranslateTransition : public QObject {
  Q_OBJECT
  Q_PROPERTY(QQuickItem* target READ target WRITE setTarget NOTIFY targetChanged)
  Q_PROPERTY(float fromX MEMBER from_x_ NOTIFY fromChanged)
  Q_PROPERTY(float fromY MEMBER from_y_ NOTIFY fromChanged)
  Q_PROPERTY(int duration MEMBER duration_ NOTIFY durationChanged)

 public:
  explicit TranslateTransition(QObject* parent = nullptr);
  ~TranslateTransition() override;

  QQuickItem* target() const { return target_; }
  void setTarget(QQuickItem* target);
  /// Restarts if running. Ends at once without a target or a duration.
  Q_INVOKABLE void play();

 Q_SIGNALS:
  void targetChanged();
  void fromChanged();
  void durationChanged();
  void ended();

 private:
  class Offset;
  void finish();

  QPointer<QQuickItem> target_;
  float from_x_ = 0;
  float from_y_ = 0;
  int duration_ = 200;
  QVariantAnimation animation_;
  QPointer<Offset> offset_;  ///< the moving item's transform; present only while it moves
};

}  // namespace bb::cascades

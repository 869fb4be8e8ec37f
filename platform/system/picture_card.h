#pragma once

#include <QImage>
#include <QQuickItem>

#include "platform/system/card.h"

namespace handset {

/// Shows a picture, read and decoded on its own thread.
class PictureCard : public Card {
  Q_OBJECT
  Q_PROPERTY(QImage image READ image NOTIFY imageChanged)

 public:
  PictureCard(const QString& path, QObject* parent);
  /// At most `max_side` pixels wide and high; null until loaded.
  QImage image() const { return image_; }

  static constexpr int max_side = 2560;

 Q_SIGNALS:
  void imageChanged();

 private:
  void take(const QImage& image);
  QImage image_;
};

/// Draws an image whole, centered, in proportion and as large as the item allows.
class PictureView : public QQuickItem {
  Q_OBJECT
  Q_PROPERTY(QImage image READ image WRITE setImage NOTIFY imageChanged)

 public:
  explicit PictureView(QQuickItem* parent = nullptr);
  QImage image() const { return image_; }
  void setImage(const QImage& image);

 Q_SIGNALS:
  void imageChanged();

 protected:
  QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData* data) override;
  void geometryChange(const QRectF& geometry, const QRectF& old) override;

 private:
  QImage image_;
  bool new_image_ = false;
};

}  // namespace handset

#include "platform/system/picture_card.h"

#include <QFile>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QPromise>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QThreadPool>

#include "platform/picture/read_picture.h"

namespace handset {

namespace {

QImage read_bounded(const QString& path) {
  QImage image = read_picture(QFile::encodeName(path).constData(), Upright::yes);
  constexpr int side = PictureCard::max_side;
  if (image.width() <= side && image.height() <= side) return image;
  return image.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

QString reason_for_nothing(const QString& path) {
  const QFileInfo file(path);
  if (!file.exists()) return QStringLiteral("there is no such file");
  if (!file.isFile()) return QStringLiteral("it is no file");
  if (!file.isReadable()) return QStringLiteral("it may not be read");
  return QStringLiteral("it is no PNG, JPEG, BMP or GIF picture, is damaged or too large");
}

}  // namespace

PictureCard::PictureCard(const QString& path, QObject* parent) : Card(QStringLiteral("PictureCard.qml"), path, parent) {
  // A watcher forgets its future if the card is destroyed first; Qt 6.4's QFuture::then() must not lose its context.
  auto* const watcher = new QFutureWatcher<QImage>(this);
  connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher] { take(watcher->result()); });
  const auto promise = std::make_shared<QPromise<QImage>>();
  watcher->setFuture(promise->future());
  QThreadPool::globalInstance()->start([promise, path] {
    promise->start();
    promise->addResult(read_bounded(path));
    promise->finish();
  });
}

void PictureCard::take(const QImage& image) {
  if (image.isNull()) {
    set_message(QStringLiteral("This picture cannot be shown: %1.").arg(reason_for_nothing(path())));
    return;
  }
  image_ = image;
  Q_EMIT imageChanged();
}

PictureView::PictureView(QQuickItem* parent) : QQuickItem(parent) {
  setFlag(ItemHasContents);
}

void PictureView::setImage(const QImage& image) {
  image_ = image;
  new_image_ = true;
  update();
  Q_EMIT imageChanged();
}

QSGNode* PictureView::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
  auto* node = static_cast<QSGImageNode*>(old);
  if (image_.isNull() || size().isEmpty()) {
    delete node;
    return nullptr;
  }
  if (node == nullptr) {
    node = window()->createImageNode();
    node->setOwnsTexture(true);
    node->setFiltering(QSGTexture::Linear);
    node->setMipmapFiltering(QSGTexture::Linear);
    new_image_ = true;
  }
  if (std::exchange(new_image_, false))
    node->setTexture(window()->createTextureFromImage(image_, QQuickWindow::TextureHasMipmaps));
  const QSizeF shown = QSizeF(image_.size()).scaled(size(), Qt::KeepAspectRatio);
  node->setRect(QRectF(QPointF((width() - shown.width()) / 2, (height() - shown.height()) / 2), shown));
  return node;
}

void PictureView::geometryChange(const QRectF& geometry, const QRectF& old) {
  QQuickItem::geometryChange(geometry, old);
  update();
}

}  // namespace handset

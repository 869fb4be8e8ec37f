#include "platform/cascades/viewfinder_node.h"

#include <QQuickWindow>
#include <QSGTexture>

namespace handset {
namespace {

constexpr QColor ground_colour(11, 12, 14);

}

ViewfinderNode::ViewfinderNode(QQuickWindow* window) : window_(window), ground_(window->createRectangleNode()) {
  ground_->setColor(ground_colour);
  appendChildNode(ground_);
  for (QSGTransformNode*& place : places_) {
    place = new QSGTransformNode;
    place->setFlag(QSGNode::OwnedByParent);
    appendChildNode(place);
  }
}

void ViewfinderNode::set_ground(const QRectF& area) {
  if (ground_->rect() != area) ground_->setRect(area);
}

void ViewfinderNode::set_image(Layer layer, const QImage& image, const QRectF& area, bool smooth) {
  QSGImageNode*& node = images_[layer];
  if (image.isNull()) {
    delete node;  // removes itself from its parent
    node = nullptr;
    return;
  }
  QSGTexture* texture = window_->createTextureFromImage(
      image, image.hasAlphaChannel() ? QQuickWindow::TextureHasAlphaChannel : QQuickWindow::TextureIsOpaque);
  if (texture == nullptr) return;
  const bool fresh = node == nullptr;
  if (fresh) {
    node = window_->createImageNode();
    node->setOwnsTexture(true);
  }
  node->setTexture(texture);
  node->setFiltering(smooth ? QSGTexture::Linear : QSGTexture::Nearest);
  node->setSourceRect(QRectF(QPointF(0, 0), QSizeF(image.size())));
  node->setRect(area);
  if (fresh) places_[layer]->appendChildNode(node);
}

void ViewfinderNode::move_image(Layer layer, const QRectF& area) {
  if (images_[layer] != nullptr && images_[layer]->rect() != area) images_[layer]->setRect(area);
}

}  // namespace handset

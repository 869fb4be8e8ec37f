#pragma once

// A viewfinder in the scene graph: plain rectangles and images, which the software renderer also draws.

#include <QImage>
#include <QSGImageNode>
#include <QSGRectangleNode>
#include <array>

class QQuickWindow;

namespace handset {

/// Render thread, while the UI thread waits.
class ViewfinderNode : public QSGNode {
 public:
  enum Layer { backdrop, picture, notice, hint, layer_count };

  explicit ViewfinderNode(QQuickWindow* window);

  /// The dark background beneath everything.
  void set_ground(const QRectF& area);
  /// Shows an image in a layer, in item coordinates; a null image removes the layer.
  /// @param smooth whether to filter; not for images that match the display's pixels
  void set_image(Layer layer, const QImage& image, const QRectF& area, bool smooth);
  /// Moves a layer's content.
  void move_image(Layer layer, const QRectF& area);
  bool has_image(Layer layer) const { return images_[layer] != nullptr; }

 private:
  QQuickWindow* const window_;
  QSGRectangleNode* ground_;
  /// Keep the layers in order. Transform nodes, since the software renderer loses the position of children added later
  /// to a plain node.
  std::array<QSGTransformNode*, layer_count> places_;
  std::array<QSGImageNode*, layer_count> images_{};
};

}  // namespace handset

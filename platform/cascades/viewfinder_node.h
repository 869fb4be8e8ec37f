#pragma once

// What the scene graph shows of a viewfinder: plain rectangles and images, which the software renderer draws as well.

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

  /// The dark ground under everything.
  void set_ground(const QRectF& area);
  /// Shows an image in a layer, in coordinates of the item; a null image takes the layer away.
  /// @param smooth  filtered; not for one whose pixels meet the display's
  void set_image(Layer layer, const QImage& image, const QRectF& area, bool smooth);
  /// Moves what a layer shows.
  void move_image(Layer layer, const QRectF& area);
  bool has_image(Layer layer) const { return images_[layer] != nullptr; }

 private:
  QQuickWindow* const window_;
  QSGRectangleNode* ground_;
  /// Keep the layers in order. Transform nodes, since the software renderer forgets where a plain node's later children
  /// are.
  std::array<QSGTransformNode*, layer_count> places_;
  std::array<QSGImageNode*, layer_count> images_{};
};

}  // namespace handset

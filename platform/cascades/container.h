#pragma once

#include "platform/cascades/visual_node.h"

namespace bb::cascades {

/// Holds controls. Paddings are pixels of the display.
class Container : public Control {
  Q_OBJECT
  Q_PROPERTY(float topPadding READ topPadding WRITE setTopPadding NOTIFY topPaddingChanged)

 public:
  explicit Container(QQuickItem* parent = nullptr);

  float topPadding() const { return top_padding_; }
  void setTopPadding(float padding);

  /// Adds a control behind those that are there in the order of children, that is on top of them. It becomes a child.
  void add(Control* control);

 Q_SIGNALS:
  void topPaddingChanged();

 private:
  float top_padding_ = 0;
};

}  // namespace bb::cascades

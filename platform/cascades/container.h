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

  /// Appends a control to the children, on top of the others. It becomes a child.
  void add(Control* control);

 Q_SIGNALS:
  void topPaddingChanged();

 private:
  float top_padding_ = 0;
};

}  // namespace bb::cascades

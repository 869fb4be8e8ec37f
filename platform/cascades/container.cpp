#include "platform/cascades/container.h"

namespace bb::cascades {

Container::Container(QQuickItem* parent) : Control(parent) {}

void Container::setTopPadding(float padding) {
  if (top_padding_ == padding) return;
  top_padding_ = padding;
  Q_EMIT topPaddingChanged();
}

void Container::add(Control* control) {
  if (!control) return;
  control->setParent(this);
  control->setParentItem(this);
}

}  // namespace bb::cascades

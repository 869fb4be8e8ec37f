#include "platform/cascades/menu.h"

namespace bb::cascades {

void AbstractActionItem::setTitle(const QString& title) {
  if (title_ == title) return;
  title_ = title;
  Q_EMIT titleChanged();
}

void AbstractActionItem::setImageSource(const QUrl& source) {
  if (image_source_ == source) return;
  image_source_ = source;
  Q_EMIT imageSourceChanged();
}

void AbstractActionItem::setEnabled(bool enabled) {
  if (enabled_ == enabled) return;
  enabled_ = enabled;
  Q_EMIT enabledChanged();
}

void Menu::addAction(ActionItem* item) {
  if (!item || actions_.contains(item)) return;
  item->setParent(this);
  actions_.append(item);
  connect(item, &QObject::destroyed, this, [this, item] {
    actions_.removeOne(item);
    Q_EMIT actionsChanged();
  });
  Q_EMIT actionsChanged();
}

Menu::~Menu() {
  // Before this object is a mere QObject to which its items would report their end.
  for (ActionItem* item : std::as_const(actions_)) item->disconnect(this);
}

QList<QObject*> Menu::actionObjects() const {
  return {actions_.begin(), actions_.end()};
}

}  // namespace bb::cascades

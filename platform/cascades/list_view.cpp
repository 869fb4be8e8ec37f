#include "platform/cascades/list_view.h"

namespace bb::cascades {

ListView::ListView(QQuickItem* parent) : Control(parent) {}

void ListView::setDataModel(DataModel* model) {
  if (data_model_ == model) return;
  if (data_model_) data_model_->disconnect(this);
  data_model_ = model;
  clearSelection();
  // A removed row cannot stay selected.
  if (model) connect(model, &QAbstractItemModel::modelReset, this, &ListView::clearSelection);
  Q_EMIT dataModelChanged();
}

void ListView::select(const QVariantList& indexPath) {
  if (selected_ == indexPath) return;
  selected_ = indexPath;
  Q_EMIT selectionChanged();
}

void ListView::clearSelection() {
  select({});
}

}  // namespace bb::cascades

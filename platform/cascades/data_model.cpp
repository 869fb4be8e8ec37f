#include "platform/cascades/data_model.h"

namespace bb::cascades {

void GroupDataModel::clear() {
  beginResetModel();
  items_.clear();
  endResetModel();
}

void GroupDataModel::insert(const QVariantMap& item) {
  const int row = size();
  beginInsertRows({}, row, row);
  items_.append(item);
  endInsertRows();
}

QVariant GroupDataModel::data(const QVariantList& indexPath) const {
  if (indexPath.size() != 1) return {};
  bool is_number = false;
  const int row = indexPath.front().toInt(&is_number);
  return is_number && row >= 0 && row < size() ? QVariant(items_.at(row)) : QVariant();
}

int GroupDataModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : size();
}

QVariant GroupDataModel::data(const QModelIndex& index, int role) const {
  return role == item_role && index.isValid() && index.row() < size() ? QVariant(items_.at(index.row())) : QVariant();
}

QHash<int, QByteArray> GroupDataModel::roleNames() const {
  return {{item_role, "item"}};
}

}  // namespace bb::cascades

#pragma once

#include <QtQml/qqmlregistration.h>
#include <QAbstractListModel>
#include <QVariantList>
#include <QVariantMap>

namespace bb::cascades {

class ItemGrouping {
  Q_GADGET

 public:
  enum Type { None = 0, ByFirstChar = 1, ByFullValue = 2 };
  Q_ENUM(Type)
};

/// What a list view shows. Items are identified by index path.
class DataModel : public QAbstractListModel {
  Q_OBJECT

 public:
  using QAbstractListModel::data;
  explicit DataModel(QObject* parent = nullptr) : QAbstractListModel(parent) {}
  /// The item, or an invalid value if none.
  Q_INVOKABLE virtual QVariant data(const QVariantList& indexPath) const = 0;
};

/// Maps in insertion order: this handset does no grouping. An index path has one element, the row. To a view each row
/// is one role, "item".
class GroupDataModel : public DataModel {
  Q_OBJECT

 public:
  enum Role { item_role = Qt::UserRole };

  explicit GroupDataModel(QObject* parent = nullptr) : DataModel(parent) {}

  ItemGrouping::Type grouping() const { return grouping_; }
  void setGrouping(ItemGrouping::Type grouping) { grouping_ = grouping; }
  Q_INVOKABLE void clear();
  Q_INVOKABLE void insert(const QVariantMap& item);
  Q_INVOKABLE int size() const { return static_cast<int>(items_.size()); }

  using DataModel::data;
  QVariant data(const QVariantList& indexPath) const override;
  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

 private:
  ItemGrouping::Type grouping_ = ItemGrouping::ByFirstChar;
  QVector<QVariantMap> items_;
};

}  // namespace bb::cascades

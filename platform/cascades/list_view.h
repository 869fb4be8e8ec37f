#pragma once

#include "platform/cascades/data_model.h"
#include "platform/cascades/visual_node.h"

namespace bb::cascades {

/// A list of rows with an icon and a title, from the keys "image" and "title" of the model's maps.
class ListView : public Control {
  Q_OBJECT
  Q_PROPERTY(bb::cascades::DataModel* dataModel READ dataModel WRITE setDataModel NOTIFY dataModelChanged)
  Q_PROPERTY(QVariantList selected READ selected NOTIFY selectionChanged)

 public:
  explicit ListView(QQuickItem* parent = nullptr);

  DataModel* dataModel() const { return data_model_; }
  void setDataModel(DataModel* model);

  /// Index path of the selected row; empty if none.
  QVariantList selected() const { return selected_; }
  Q_INVOKABLE void select(const QVariantList& indexPath);
  Q_INVOKABLE void clearSelection();

 Q_SIGNALS:
  void dataModelChanged();
  void selectionChanged();
  /// The user has chosen a row; it is already selected.
  void triggered(const QVariantList& indexPath);

 private:
  QPointer<DataModel> data_model_;
  QVariantList selected_;
};

}  // namespace bb::cascades

#pragma once

#include <QDir>
#include <QObject>
#include <QUrl>
#include <QVariantList>

namespace handset {

/// The in-window file picker: the folders and files of one folder, as a card on the stage. UI thread.
class PickerCard : public QObject {
  Q_OBJECT
  Q_PROPERTY(QUrl document READ document CONSTANT)
  Q_PROPERTY(QString title READ title CONSTANT)
  Q_PROPERTY(QString folder READ folder NOTIFY folderChanged)
  Q_PROPERTY(QVariantList rows READ rows NOTIFY folderChanged)
  Q_PROPERTY(int first READ first NOTIFY folderChanged)

 public:
  /// Opens itself on the stage.
  /// @param patterns of the files to show, case-insensitive; pictures get thumbnails
  PickerCard(const QString& title, const QString& folder, const QStringList& patterns, QObject* parent);
  /// Leaves the stage.
  ~PickerCard() override;

  QUrl document() const;
  QString title() const { return title_; }
  QString folder() const { return folder_.absolutePath(); }
  /// The way up if there is one, the folders, the files: maps of "name" and "icon" (an image URL).
  QVariantList rows() const { return rows_; }
  /// The initial row: the folder just left, or the first file or folder; -1 if none.
  int first() const { return first_; }

  /// Enters a folder or picks a file. Ignores an invalid row.
  Q_INVOKABLE void choose(int row);
  Q_INVOKABLE void goUp();
  Q_INVOKABLE void close();

 Q_SIGNALS:
  void folderChanged();
  void picked(const QString& path);
  /// Closed by the user or replaced by another card.
  void closed();

 private:
  void enter(const QString& folder, const QString& from = {});

  const QString title_;
  const QStringList patterns_;
  QDir folder_;
  QFileInfoList entries_;
  QVariantList rows_;
  int first_ = -1;
};

}  // namespace handset

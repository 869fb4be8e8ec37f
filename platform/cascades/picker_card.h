#pragma once

#include <QDir>
#include <QObject>
#include <QUrl>
#include <QVariantList>

namespace handset {

/// The file picker that is drawn in the window: folders and files of one folder, as a card on the stage. UI thread.
class PickerCard : public QObject {
  Q_OBJECT
  Q_PROPERTY(QUrl document READ document CONSTANT)
  Q_PROPERTY(QString title READ title CONSTANT)
  Q_PROPERTY(QString folder READ folder NOTIFY folderChanged)
  Q_PROPERTY(QVariantList rows READ rows NOTIFY folderChanged)
  Q_PROPERTY(int first READ first NOTIFY folderChanged)

 public:
  /// Opens itself on the stage.
  /// @param patterns  of the files that are shown, in any case; pictures are shown as they look
  PickerCard(const QString& title, const QString& folder, const QStringList& patterns, QObject* parent);
  /// Leaves the stage.
  ~PickerCard() override;

  QUrl document() const;
  QString title() const { return title_; }
  QString folder() const { return folder_.absolutePath(); }
  /// The way up where there is one, the folders, the files: maps of "name" and "icon" (an image URL).
  QVariantList rows() const { return rows_; }
  /// The row to begin with: the folder that one comes from, or the first file or folder. -1 where there is none.
  int first() const { return first_; }

  /// Goes into a folder, or picks a file. No row: nothing.
  Q_INVOKABLE void choose(int row);
  Q_INVOKABLE void goUp();
  Q_INVOKABLE void close();

 Q_SIGNALS:
  void folderChanged();
  void picked(const QString& path);
  /// By the user, or because another card takes its place.
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

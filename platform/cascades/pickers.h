#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>

namespace bb::cascades::pickers {

class FilePickerMode {
  Q_GADGET

 public:
  enum Type { Picker = 0, Saver = 1, PickerMultiple = 2, SaverMultiple = 3 };
  Q_ENUM(Type)
};

class FileType {
  Q_GADGET

 public:
  enum Type { Picture = 1, Document = 2, Music = 4, Video = 8, Other = 16 };
  Q_ENUM(Type)
};

/// Lets the user pick a file: with the desktop's own dialog if Qt has one, else a card in the window, which picks a
/// single file. The folder of the last pick is remembered across restarts; the first is the user's Pictures. UI thread.
class FilePicker : public QObject {
  Q_OBJECT
  Q_PROPERTY(QString title READ title WRITE setTitle NOTIFY titleChanged)

 public:
  explicit FilePicker(QObject* parent = nullptr);
  /// Closes whatever is open without a signal.
  ~FilePicker() override;

  QString title() const { return title_; }
  void setTitle(const QString& title);
  FilePickerMode::Type mode() const { return mode_; }
  /// This handset has no savers: they are canceled at once.
  void setMode(FilePickerMode::Type mode) { mode_ = mode; }
  FileType::Type type() const { return type_; }
  /// Pictures are PNG, JPEG, BMP and GIF; every other type is any file.
  void setType(FileType::Type type) { type_ = type; }

  /// Does nothing while open. Ends with exactly one of fileSelected and canceled, after this call has returned.
  Q_INVOKABLE void open();

 Q_SIGNALS:
  void titleChanged();
  /// Absolute paths; exactly one in picker mode.
  void fileSelected(const QStringList& files);
  void canceled();

 private Q_SLOTS:
  void accept();
  void reject();

 private:
  bool open_native();
  void open_card();
  void end(const QStringList& files);
  void drop();

  QString title_;
  FilePickerMode::Type mode_ = FilePickerMode::Picker;
  FileType::Type type_ = FileType::Other;
  bool open_ = false;
  QPointer<QObject> shown_;  ///< dialog or card
};

}  // namespace bb::cascades::pickers

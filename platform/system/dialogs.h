#pragma once

// Toasts and dialogs. UI thread only.

#include <QEventLoop>
#include <QObject>
#include <QPointer>

namespace bb::system {

class SystemUiResult {
  Q_GADGET

 public:
  enum Type { None = 0, TimeOut = 1, ConfirmButtonSelection = 2, CancelButtonSelection = 3, Error = 7 };
  Q_ENUM(Type)
};

/// How long to show a toast so that it can be read: 2500 to 6000 ms, depending on its length.
int toast_milliseconds(const QString& text);

/// A line of text that disappears by itself. Several are shown in turn.
class SystemToast : public QObject {
  Q_OBJECT
  Q_PROPERTY(QString body READ body WRITE setBody NOTIFY bodyChanged)

 public:
  explicit SystemToast(QObject* parent = nullptr) : QObject(parent) {}
  QString body() const { return body_; }
  void setBody(const QString& body);
  /// Returns at once.
  void show();

 Q_SIGNALS:
  void bodyChanged();

 private:
  QString body_;
};

/// A modal question. Enter confirms; Esc cancels, or confirms if there is no cancel button.
class SystemDialog : public QObject {
  Q_OBJECT
  Q_PROPERTY(QString title READ title WRITE setTitle NOTIFY textChanged)
  Q_PROPERTY(QString body READ body WRITE setBody NOTIFY textChanged)
  Q_PROPERTY(QString confirmLabel READ confirmLabel CONSTANT)
  Q_PROPERTY(QString cancelLabel READ cancelLabel CONSTANT)

 public:
  /// With the buttons "OK" and "Cancel".
  explicit SystemDialog(QObject* parent = nullptr);
  /// With one button.
  explicit SystemDialog(const QString& confirm_label, QObject* parent = nullptr);
  ~SystemDialog() override;

  QString title() const { return title_; }
  void setTitle(const QString& title);
  QString body() const { return body_; }
  void setBody(const QString& body);
  QString confirmLabel() const { return confirm_label_; }
  QString cancelLabel() const { return cancel_label_; }
  SystemUiResult::Type result() const { return result_; }

  /// Shows the dialog and runs an event loop until it is closed. The result is Error if the application ends or the
  /// dialog is deleted meanwhile, or at once if the dialog is already open.
  SystemUiResult::Type exec();

  Q_INVOKABLE void confirm();
  Q_INVOKABLE void cancel();

 Q_SIGNALS:
  void textChanged();
  void finished(bb::system::SystemUiResult::Type result);

 private:
  void finish(SystemUiResult::Type result);

  QString title_;
  QString body_;
  QString confirm_label_;
  QString cancel_label_;
  SystemUiResult::Type result_ = SystemUiResult::None;
  QPointer<QEventLoop> loop_;
};

}  // namespace bb::system

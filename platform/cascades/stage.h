#pragma once

// What is drawn over the scene: sheets, the open card, dialogs and toasts. The objects here hold the state; the
// window's QML document draws them.

#include <QObject>
#include <QPointer>
#include <QTimer>

namespace handset {

/// One per application object. An object that is deleted while it is shown or waits goes away by itself. UI thread.
class Stage : public QObject {
  Q_OBJECT
  Q_PROPERTY(QObject* toast READ toast NOTIFY toastChanged)
  Q_PROPERTY(QObject* dialog READ dialog NOTIFY dialogChanged)
  Q_PROPERTY(QObject* sheet READ sheet NOTIFY sheetChanged)
  Q_PROPERTY(QObject* card READ card NOTIFY cardChanged)
  Q_PROPERTY(QString trouble READ trouble NOTIFY troubleChanged)
  Q_PROPERTY(bool menuOpen READ menu_open WRITE set_menu_open NOTIFY menuOpenChanged)

 public:
  static Stage* instance();

  /// The toast that is shown now, with the property "body". Several wait for each other.
  QObject* toast() const;
  /// Nothing where the toast waits already or is shown.
  /// @param milliseconds  how long it is shown
  void show_toast(QObject* toast, int milliseconds);

  /// The topmost open dialog, with the properties "title", "body", "confirmLabel", "cancelLabel" (empty: no such
  /// button) and the invokables confirm() and cancel().
  QObject* dialog() const;
  void open_dialog(QObject* dialog);
  void close_dialog(QObject* dialog);

  /// The topmost open sheet, a bb::cascades::Sheet.
  QObject* sheet() const;
  void open_sheet(QObject* sheet);
  void close_sheet(QObject* sheet);

  /// The open card, with the property "document" (URL of the QML document that draws it, which gets the card as its
  /// required property "card") and the invokable close().
  QObject* card() const;
  void open_card(QObject* card);
  void close_card(QObject* card);

  /// Why the scene does not show what it should; stays over scene and dialogs until it is taken away. Empty for none.
  QString trouble() const { return trouble_; }
  void set_trouble(const QString& text);
  /// The user wants to try again.
  Q_INVOKABLE void retry() { Q_EMIT retryRequested(); }

  /// The application menu is pulled down. It does not open under a sheet, a card or a dialog, and closes when one of
  /// them opens.
  bool menu_open() const { return menu_open_; }
  void set_menu_open(bool open);

  /// What Esc does: cancels the dialog, or closes the card, or asks the sheet, or closes the menu.
  /// @return false when there is none of them
  Q_INVOKABLE bool go_back();

 Q_SIGNALS:
  void toastChanged();
  void dialogChanged();
  void sheetChanged();
  void cardChanged();
  void troubleChanged();
  void retryRequested();
  void menuOpenChanged();

 private:
  using QObject::QObject;
  void next_toast();
  void drop_toast(const QObject* toast);
  bool covered() const { return dialog() || sheet() || card(); }

  struct Waiting {
    QObject* toast;
    int milliseconds;
  };
  // No list holds an object that is gone: forgetting is connected to its end.
  QList<Waiting> toasts_;
  QTimer toast_timer_{this};
  QList<QObject*> dialogs_;
  QList<QObject*> sheets_;
  QPointer<QObject> card_;
  QString trouble_;
  bool menu_open_ = false;
};

}  // namespace handset

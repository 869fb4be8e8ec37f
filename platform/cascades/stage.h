#pragma once

// What is drawn over the scene: sheets, the open card, dialogs and toasts. The objects here hold the state; the
// window's QML document draws them.

#include <QObject>
#include <QPointer>
#include <QTimer>

namespace handset {

/// One per application object. An object that is deleted while shown or waiting disappears by itself. UI thread.
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

  /// The current toast, with the property "body". Others wait their turn.
  QObject* toast() const;
  /// Does nothing if the toast is already waiting or shown.
  /// @param milliseconds how long to show it
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

  /// Why the scene does not show what it should; stays over scene and dialogs until cleared. May be empty.
  QString trouble() const { return trouble_; }
  void set_trouble(const QString& text);
  /// The user wants to retry.
  Q_INVOKABLE void retry() { Q_EMIT retryRequested(); }

  /// Whether the application menu is pulled down. It does not open under a sheet, a card or a dialog, and closes when
  /// one opens.
  bool menu_open() const { return menu_open_; }
  void set_menu_open(bool open);

  /// Handles Esc: cancels the dialog, or closes the card, or asks the sheet, or closes the menu.
  /// @return false if there is none of these
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
  // No list holds a dead object: its destruction removes it.
  QList<Waiting> toasts_;
  QTimer toast_timer_{this};
  QList<QObject*> dialogs_;
  QList<QObject*> sheets_;
  QPointer<QObject> card_;
  QString trouble_;
  bool menu_open_ = false;
};

}  // namespace handset

#include "platform/cascades/stage.h"

#include <QCoreApplication>
#include <QVariant>

#include "platform/cascades/pages.h"

namespace handset {

Stage* Stage::instance() {
  static QPointer<Stage> stage;
  if (!stage) {
    stage = new Stage(QCoreApplication::instance());
    stage->toast_timer_.setSingleShot(true);
    connect(&stage->toast_timer_, &QTimer::timeout, stage, &Stage::next_toast);
  }
  return stage;
}

QObject* Stage::toast() const {
  return toasts_.isEmpty() ? nullptr : toasts_.first().toast;
}

void Stage::show_toast(QObject* toast, int milliseconds) {
  if (!toast) return;
  for (const Waiting& waiting : std::as_const(toasts_)) {
    if (waiting.toast == toast) return;
  }
  toasts_.append({toast, milliseconds});
  connect(toast, &QObject::destroyed, this, [this, toast] { drop_toast(toast); });
  if (toasts_.size() > 1) return;
  toast_timer_.start(milliseconds);
  Q_EMIT toastChanged();
}

void Stage::next_toast() {
  if (!toasts_.isEmpty()) drop_toast(toasts_.first().toast);
}

void Stage::drop_toast(const QObject* toast) {
  const bool shown = toast == this->toast();
  toast->disconnect(this);
  toasts_.removeIf([toast](const Waiting& waiting) { return waiting.toast == toast; });
  if (!shown) return;
  if (toasts_.isEmpty()) {
    toast_timer_.stop();
  } else {
    toast_timer_.start(toasts_.first().milliseconds);
  }
  Q_EMIT toastChanged();
}

QObject* Stage::dialog() const {
  return dialogs_.isEmpty() ? nullptr : dialogs_.last();
}

void Stage::open_dialog(QObject* dialog) {
  if (!dialog || dialogs_.contains(dialog)) return;
  dialogs_.append(dialog);
  connect(dialog, &QObject::destroyed, this, [this, dialog] { close_dialog(dialog); });
  Q_EMIT dialogChanged();
  set_menu_open(false);
}

void Stage::close_dialog(QObject* dialog) {
  if (!dialogs_.removeOne(dialog)) return;
  dialog->disconnect(this);
  Q_EMIT dialogChanged();
}

QObject* Stage::sheet() const {
  return sheets_.isEmpty() ? nullptr : sheets_.last();
}

void Stage::open_sheet(QObject* sheet) {
  if (!sheet || sheets_.contains(sheet)) return;
  sheets_.append(sheet);
  connect(sheet, &QObject::destroyed, this, [this, sheet] { close_sheet(sheet); });
  Q_EMIT sheetChanged();
  set_menu_open(false);
}

void Stage::close_sheet(QObject* sheet) {
  if (!sheets_.removeOne(sheet)) return;
  sheet->disconnect(this);
  Q_EMIT sheetChanged();
}

QObject* Stage::card() const {
  return card_;
}

void Stage::open_card(QObject* card) {
  if (!card || card_ == card) return;
  if (card_) card_->disconnect(this);
  card_ = card;
  connect(card, &QObject::destroyed, this, &Stage::cardChanged);
  Q_EMIT cardChanged();
  set_menu_open(false);
}

void Stage::close_card(QObject* card) {
  if (!card || card_ != card) return;
  card_->disconnect(this);
  card_.clear();
  Q_EMIT cardChanged();
}

void Stage::set_trouble(const QString& text) {
  if (trouble_ == text) return;
  trouble_ = text;
  Q_EMIT troubleChanged();
}

void Stage::set_menu_open(bool open) {
  if (menu_open_ == open || (open && covered())) return;
  menu_open_ = open;
  Q_EMIT menuOpenChanged();
}

bool Stage::go_back() {
  if (QObject* asking = dialog()) {
    const bool can_cancel = !asking->property("cancelLabel").toString().isEmpty();
    return QMetaObject::invokeMethod(asking, can_cancel ? "cancel" : "confirm");
  }
  if (card_) return QMetaObject::invokeMethod(card_, "close");
  if (auto* sheet = qobject_cast<bb::cascades::Sheet*>(this->sheet())) {
    Q_EMIT sheet->backRequested();
    return true;
  }
  const bool open = menu_open_;
  set_menu_open(false);
  return open;
}

}  // namespace handset

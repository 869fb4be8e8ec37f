#include "platform/system/dialogs.h"

#include <QCoreApplication>
#include <algorithm>
#include <utility>

#include "platform/cascades/stage.h"

namespace bb::system {

using handset::Stage;

int toast_milliseconds(const QString& text) {
  constexpr qsizetype noticing = 1500;
  constexpr qsizetype per_character = 60;  // two hundred words a minute, for an unhurried reader
  return static_cast<int>(std::clamp<qsizetype>(noticing + per_character * text.size(), 2500, 6000));
}

void SystemToast::setBody(const QString& body) {
  if (body_ == body) return;
  body_ = body;
  Q_EMIT bodyChanged();
}

void SystemToast::show() {
  Stage::instance()->show_toast(this, toast_milliseconds(body_));
}

SystemDialog::SystemDialog(QObject* parent)
    : QObject(parent), confirm_label_(QStringLiteral("OK")), cancel_label_(QStringLiteral("Cancel")) {}

SystemDialog::SystemDialog(const QString& confirm_label, QObject* parent)
    : QObject(parent), confirm_label_(confirm_label) {}

SystemDialog::~SystemDialog() {
  finish(SystemUiResult::Error);
}

void SystemDialog::setTitle(const QString& title) {
  if (title_ == title) return;
  title_ = title;
  Q_EMIT textChanged();
}

void SystemDialog::setBody(const QString& body) {
  if (body_ == body) return;
  body_ = body;
  Q_EMIT textChanged();
}

SystemUiResult::Type SystemDialog::exec() {
  if (loop_ || QCoreApplication::instance() == nullptr) return SystemUiResult::Error;
  const QPointer<SystemDialog> self(this);  // the event loop may delete the dialog
  QEventLoop loop;
  loop_ = &loop;
  result_ = SystemUiResult::None;
  Stage::instance()->open_dialog(this);
  loop.exec(QEventLoop::DialogExec);
  // Still open: the application is ending, which ends every loop.
  if (self) finish(SystemUiResult::Error);
  return self ? result_ : SystemUiResult::Error;
}

void SystemDialog::confirm() {
  finish(SystemUiResult::ConfirmButtonSelection);
}

void SystemDialog::cancel() {
  finish(cancel_label_.isEmpty() ? SystemUiResult::ConfirmButtonSelection : SystemUiResult::CancelButtonSelection);
}

void SystemDialog::finish(SystemUiResult::Type result) {
  if (!loop_) return;
  QEventLoop* const loop = std::exchange(loop_, nullptr);
  result_ = result;
  Stage::instance()->close_dialog(this);
  loop->quit();
  Q_EMIT finished(result);
}

}  // namespace bb::system

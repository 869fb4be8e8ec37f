#include "platform/system/card.h"

#include <QFileInfo>
#include <utility>

#include "platform/cascades/stage.h"

namespace handset {

Card::Card(const QString& document, const QString& path, QObject* parent)
    : QObject(parent), document_(QStringLiteral("qrc:/handset/system/") + document), path_(path) {}

Card::~Card() {
  Stage::instance()->close_card(this);
}

QString Card::title() const {
  return QFileInfo(path_).fileName();
}

void Card::close() {
  // The caller may be an item of the card's document, which is destroyed with the card.
  QMetaObject::invokeMethod(
      this, [this] { finish(QStringLiteral("closed")); }, Qt::QueuedConnection);
}

void Card::finish(const QString& reason) {
  if (std::exchange(finished_, true)) return;
  Stage::instance()->close_card(this);
  stop();
  deleteLater();
  Q_EMIT done(bb::system::CardDoneMessage(reason));
}

void Card::set_message(const QString& message) {
  if (message_ == message) return;
  message_ = message;
  Q_EMIT messageChanged();
}

}  // namespace handset

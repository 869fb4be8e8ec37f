#include "platform/system/invoke.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QtQml>
#include <cstdio>

#include "platform/cascades/stage.h"
#include "platform/system/picture_card.h"
#include "platform/system/video_card.h"

// At file scope: the macro declares a function in the global namespace.
static void init_resources() {
  Q_INIT_RESOURCE(cards);
}

namespace bb::system {

using handset::Card;

namespace {

constexpr char picture_target[] = "sys.pictures.card.previewer";

void register_documents() {
  static const int view = [] {
    init_resources();
    return qmlRegisterType<handset::PictureView>("handset.system", 1, 0, "PictureView");
  }();
  Q_UNUSED(view)
}

bool is_picture(const QString& path) {
  static const QStringList endings = {"png", "jpg", "jpeg", "bmp", "gif"};
  return endings.contains(QFileInfo(path).suffix().toLower());
}

Card* make_card(const QString& path, bool picture) {
  if (picture) return new handset::PictureCard(path, QCoreApplication::instance());
  return new handset::VideoCard(path, QCoreApplication::instance());
}

InvokeTargetReply* refuse(const char* why, const QString& what) {
  std::fprintf(stderr, "cannot open a card: %s: %s\n", why, qUtf8Printable(what));
  return nullptr;
}

}  // namespace

void InvokeRequest::setUri(const char* uri) {
  constexpr QByteArrayView prefix("file://");
  const QByteArray text(uri);
  if (!text.startsWith(prefix)) return setUri(QUrl(QString::fromUtf8(text)));
  uri_ = QUrl();
  uri_.setScheme(QStringLiteral("file"));
  uri_.setPath(QFile::decodeName(text.sliced(prefix.size())), QUrl::DecodedMode);
}

InvokeManager::InvokeManager(QObject* parent) : QObject(parent) {}

InvokeManager::~InvokeManager() = default;

InvokeTargetReply* InvokeManager::invoke(const InvokeRequest& request) {
  static QPointer<Card> open;
  const QString target = request.target();
  if (!target.isEmpty() && target != QLatin1String(picture_target)) return refuse("there is no such target", target);
  if (!request.uri().isLocalFile()) return refuse("this is no file URI", request.uri().toString());
  register_documents();
  if (open) {
    // Opening a second card does not mean being done with the first.
    disconnect(open, &Card::done, this, nullptr);
    open->finish(QStringLiteral("replaced"));
  }
  const QString path = request.uri().toLocalFile();
  open = make_card(path, !target.isEmpty() || is_picture(path));
  connect(open, &Card::done, this, &InvokeManager::childCardDone);
  handset::Stage::instance()->open_card(open);
  return new InvokeTargetReply(this);
}

}  // namespace bb::system

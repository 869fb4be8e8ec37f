#include <QDebug>
#include <QFileInfo>
#include <cstdio>

#include "app/page_controls.h"
#include "app/tarnelapp.h"
#include "engine/color_filter.h"

using bb::cascades::Container;
using bb::system::InvokeManager;
using bb::system::InvokeRequest;

void tarnelApp::playVideo() {
  _busy = true;
  onStopCamera();
  const QString path = QFileInfo(QFile::decodeName(mSettings.lastVideoPath)).absoluteFilePath();
  char uri[256];
  const int length = std::snprintf(uri, sizeof uri, "file://%s", QFile::encodeName(path).constData());
  if (length >= static_cast<int>(sizeof uri)) {
    std::fprintf(stderr, "cannot play the film: its URI has more than %zu characters\n", sizeof uri - 1);
    onCardDone({});
    return;
  }
  InvokeRequest request;
  request.setUri(uri);
  mInvokeManager->invoke(request);
  onTap(nullptr);
  set_visible(control<Container>("videoContainer"), true);
  set_visible(control<Container>("screensizeContainer"), false);
  set_visible(mEffectContainer, false);
  showMenuIcon(false);
}

void tarnelApp::onCardDone(bb::system::CardDoneMessage) {
  set_visible(control<Container>("videoContainer"), false);
  showMenuIcon(true);
  set_visible(control<Container>("screensizeContainer"), true);
  restartCamera();
}

void tarnelApp::showPhotoInCard(QString fileName) {
  InvokeManager manager;
  InvokeRequest request;
  request.setUri(QUrl::fromLocalFile(fileName));
  request.setTarget(QStringLiteral("sys.pictures.card.previewer"));
  request.setAction(QStringLiteral("bb.action.VIEW"));
  bb::system::InvokeTargetReply* const reply = manager.invoke(request);
  if (reply) {
    reply->setParent(this);
  } else {
    qDebug().noquote().nospace() << "InvokeTargetReply is NULL: targetReply = " << reply;
  }
}

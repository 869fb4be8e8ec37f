#include "platform/bbm/bbm.h"
#include "platform/cascades/pages.h"
#include "platform/cascades/qml_document.h"

// At file scope: the macro declares a function in the global namespace.
static void init_document() {
  Q_INIT_RESOURCE(bbm);
}

namespace bb::platform::bbm {

using cascades::QmlDocument;
using cascades::Sheet;

MessageService::MessageService(Context* context, QObject* parent) : QObject(parent), context_(context) {}

MessageService::~MessageService() {
  if (sheet_) sheet_->close();
}

bool MessageService::sendDownloadInvitation() {
  if (!context_ || !context_->isAccessAllowed()) return false;
  if (!sheet_) {
    init_document();
    QmlDocument* const document = QmlDocument::create(QStringLiteral("qrc:/bb/bbm/Invitation.qml"), this);
    sheet_ = document->createRootObject<Sheet>();
    if (!sheet_) {
      delete document;
      return false;
    }
  }
  sheet_->open();
  return true;
}

}  // namespace bb::platform::bbm

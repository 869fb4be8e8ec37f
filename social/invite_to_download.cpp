#include "social/invite_to_download.h"

#include "platform/bbm/bbm.h"

using bb::platform::bbm::Context;
using bb::platform::bbm::MessageService;

InviteToDownload::InviteToDownload(Context& context, QObject* parent) : QObject(parent), context_(&context) {}

void InviteToDownload::sendInvite() {
  if (!message_service_) message_service_ = new MessageService(context_, this);
  message_service_->sendDownloadInvitation();
}

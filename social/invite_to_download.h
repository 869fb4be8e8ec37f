#pragma once

#include <QObject>

namespace bb::platform::bbm {
class Context;
class MessageService;
}  // namespace bb::platform::bbm

/// Invites contacts to download the application. UI thread.
class InviteToDownload : public QObject {
  Q_OBJECT

 public:
  /// @param context must outlive the first invitation
  explicit InviteToDownload(bb::platform::bbm::Context& context, QObject* parent = nullptr);

  /// Asks the platform to show its invitation screen. A refusal is not reported.
  Q_INVOKABLE void sendInvite();

 public Q_SLOTS:
  /// Does nothing.
  void show() {}

 private:
  bb::platform::bbm::Context* context_;
  bb::platform::bbm::MessageService* message_service_ = nullptr;  ///< a child, created for the first invitation
};

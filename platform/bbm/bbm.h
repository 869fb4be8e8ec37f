#pragma once

// The messaging platform's social part: an application registers, asks whether it may use it, and invites contacts.
// There is no such network here; it answers as the device profile says, which may change while the program runs.
// Everything here is for the UI thread.

#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QUuid>

#include "platform/bbm/profile_watcher.h"

struct DeviceProfile;

namespace bb::cascades {
class Sheet;
}

namespace bb::platform::bbm {

class RegistrationState {
  Q_GADGET

 public:
  enum Type {
    Allowed = 0,
    Unknown = 1,
    Unregistered = 2,
    Pending = 3,
    BlockedByUser = 4,
    BlockedByRIM = 5,
    NoDataConnection = 6,
    UnexpectedError = 7,
    InvalidUuid = 8,
    TemporaryError = 9,
    MaxDownloadsReached = 10,
    Expired = 11,
    CancelledByUser = 12,
    MaxAppsReached = 13,
  };
  Q_ENUM(Type)
};

/// Unregistered at first, or what the profile says where it has the application registered already. From then on, and
/// after an answered request, the state is the profile's, also when that changes.
class Context : public QObject {
  Q_OBJECT

 public:
  explicit Context(const QUuid& uuid, QObject* parent = nullptr);

  bool isAccessAllowed() const { return state_ == RegistrationState::Allowed; }
  RegistrationState::Type registrationState() const { return state_; }
  /// Starts a registration: Pending now, which is reported with the next event, and the profile's answer a moment
  /// later. A profile that says Pending leaves it at that until it says something else.
  /// @return false when the UUID is null or a request is under way
  bool requestRegisterApplication();

 Q_SIGNALS:
  /// Never before the call returns that causes it.
  void registrationStateUpdated(bb::platform::bbm::RegistrationState::Type state);

 private:
  void follow(const DeviceProfile& profile);
  void report(RegistrationState::Type state);

  QUuid uuid_;
  RegistrationState::Type state_ = RegistrationState::Unregistered;
  bool registered_ = false;
  QTimer answer_;  ///< runs while a request is under way
  handset::ProfileWatcher watcher_;
};

class MessageService : public QObject {
  Q_OBJECT

 public:
  /// @param context  may be destroyed before the service, which then does nothing
  explicit MessageService(Context* context, QObject* parent = nullptr);
  /// Closes the invitation.
  ~MessageService() override;
  /// Shows the invitation in the window, for the user to copy. While it is shown already, nothing more happens.
  /// @return false when access is not allowed, and when there is no window
  bool sendDownloadInvitation();

 private:
  QPointer<Context> context_;
  QPointer<cascades::Sheet> sheet_;
};

}  // namespace bb::platform::bbm

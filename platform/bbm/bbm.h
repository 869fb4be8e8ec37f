#pragma once

// The messaging platform's social part: an application registers, asks for access, and invites contacts.
// There is no such network here; the device profile supplies the answers and may change while the program runs.
// UI thread only.

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

/// Unregistered at first, or the profile's state if it has the application registered already. From then on, and after
/// an answered request, the state follows the profile.
class Context : public QObject {
  Q_OBJECT

 public:
  explicit Context(const QUuid& uuid, QObject* parent = nullptr);

  bool isAccessAllowed() const { return state_ == RegistrationState::Allowed; }
  RegistrationState::Type registrationState() const { return state_; }
  /// Starts a registration: Pending now, reported with the next event, and the profile's answer a moment later. If the
  /// profile says Pending, it stays so until the profile changes.
  /// @return false if the UUID is null or a request is in progress
  bool requestRegisterApplication();

 Q_SIGNALS:
  /// Never emitted before the causing call returns.
  void registrationStateUpdated(bb::platform::bbm::RegistrationState::Type state);

 private:
  void follow(const DeviceProfile& profile);
  void report(RegistrationState::Type state);

  QUuid uuid_;
  RegistrationState::Type state_ = RegistrationState::Unregistered;
  bool registered_ = false;
  QTimer answer_;  ///< runs during a request
  handset::ProfileWatcher watcher_;
};

class MessageService : public QObject {
  Q_OBJECT

 public:
  /// @param context may be destroyed before the service, which then does nothing
  explicit MessageService(Context* context, QObject* parent = nullptr);
  /// Closes the invitation.
  ~MessageService() override;
  /// Shows the invitation in the window, for the user to copy. Does nothing more if it is already shown.
  /// @return false if access is not allowed or there is no window
  bool sendDownloadInvitation();

 private:
  QPointer<Context> context_;
  QPointer<cascades::Sheet> sheet_;
};

}  // namespace bb::platform::bbm

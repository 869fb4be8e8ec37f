#pragma once

// The application's registration with the messaging platform. Whatever comes of it, the application runs the same; the
// outcome is logged and kept to be read. Everything here is for the UI thread.

#include <QObject>
#include <QString>
#include <QUuid>

#include "platform/bbm/bbm.h"

/// What a registration state means once the registration has finished.
struct registration_outcome_s {
  const char* message;   ///< for the user, to be translated by RegistrationHandler
  bool temporary_error;  ///< may change by itself, or when it is tried again
};

/// @param state  as RegistrationState::Type; may be a number that the type does not know
registration_outcome_s registration_outcome(int state);

class RegistrationHandler : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool allowed READ isAllowed NOTIFY stateChanged)
  Q_PROPERTY(QString statusMessage READ statusMessage NOTIFY stateChanged)
  Q_PROPERTY(bool temporaryError READ isTemporaryError NOTIFY stateChanged)

 public:
  explicit RegistrationHandler(const QUuid& uuid, QObject* parent = nullptr);

  /// Lives as long as this object.
  bb::platform::bbm::Context& context() { return context_; }
  /// The platform allows access.
  bool isAllowed() const { return allowed_; }
  QString statusMessage() const { return status_message_; }
  bool isTemporaryError() const { return temporary_error_; }

 public Q_SLOTS:
  /// Starts the registration. To be called once.
  void registerApplication();
  void processRegistrationStatus(bb::platform::bbm::RegistrationState::Type state);
  /// Does nothing.
  void finishRegistration() {}

 Q_SIGNALS:
  /// One of the properties has changed, or several at once.
  void stateChanged();
  /// Access has become allowed.
  void registered();

 private:
  enum Progress { not_started = 0, started = 1, request_sent = 2, finished = 3 };

  void request_registration();
  void registrationFinished();

  bb::platform::bbm::Context context_;
  bool allowed_ = false;
  Progress progress_ = not_started;
  bool temporary_error_ = false;
  QString status_message_;
};

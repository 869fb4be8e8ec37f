#pragma once

// The application's registration with the messaging platform. The application runs the same whatever the outcome, which
// is logged and stored. UI thread only.

#include <QObject>
#include <QString>
#include <QUuid>

#include "platform/bbm/bbm.h"

/// What a registration state means once registration has finished.
struct registration_outcome_s {
  const char* message;   ///< user-visible, translated by RegistrationHandler
  bool temporary_error;  ///< may change by itself or on a retry
};

/// @param state a RegistrationState::Type; may be a number that the type does not know
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
  /// Starts the registration. Call once.
  void registerApplication();
  void processRegistrationStatus(bb::platform::bbm::RegistrationState::Type state);
  /// Does nothing.
  void finishRegistration() {}

 Q_SIGNALS:
  /// One or more properties have changed.
  void stateChanged();
  /// Access is now allowed.
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

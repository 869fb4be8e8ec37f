#include "social/registration_handler.h"

#include <QDebug>
#include <cstdio>
#include <tuple>

using bb::platform::bbm::Context;
using bb::platform::bbm::RegistrationState;

registration_outcome_s registration_outcome(int state) {
  switch (state) {
    case RegistrationState::Allowed:
      return {QT_TRANSLATE_NOOP("RegistrationHandler", "Application connected to BBM.  Press Continue."), false};
    case RegistrationState::Unknown:
      return {QT_TRANSLATE_NOOP("RegistrationHandler", "Determining the status. Please wait."), false};
    case RegistrationState::Pending:
      return {QT_TRANSLATE_NOOP("RegistrationHandler", "Connecting to BBM. Please wait."), false};
    case RegistrationState::BlockedByUser:
      return {QT_TRANSLATE_NOOP("RegistrationHandler",
                                "Disconnected. Go to Settings -> Security and Privacy -> Application Permissions and "
                                "connect this application to BBM."),
              false};
    case RegistrationState::BlockedByRIM:
      return {QT_TRANSLATE_NOOP("RegistrationHandler",
                                "Disconnected by RIM. RIM is preventing this application from connecting to BBM."),
              false};
    case RegistrationState::NoDataConnection:
      return {QT_TRANSLATE_NOOP("RegistrationHandler", "Check your Internet connection and try again."), true};
    case RegistrationState::InvalidUuid:
      return {QT_TRANSLATE_NOOP("RegistrationHandler", "Invalid UUID. Report this error to the vendor."), true};
    case RegistrationState::MaxDownloadsReached:
    case RegistrationState::Expired:
      return {QT_TRANSLATE_NOOP("RegistrationHandler",
                                "Cannot connect to BBM. Download this application from AppWorld to keep using it."),
              false};
    case RegistrationState::MaxAppsReached:
      return {QT_TRANSLATE_NOOP("RegistrationHandler",
                                "Too many applications are connected to BBM. Uninstall one or more applications and "
                                "try again."),
              false};
    default:
      return {QT_TRANSLATE_NOOP("RegistrationHandler", "Would you like to connect the application to BBM?"), true};
  }
}

RegistrationHandler::RegistrationHandler(const QUuid& uuid, QObject* parent)
    : QObject(parent), context_(uuid), status_message_(tr("Please wait while the application connects to BBM.")) {
  connect(&context_, &Context::registrationStateUpdated, this, &RegistrationHandler::processRegistrationStatus);
}

void RegistrationHandler::registerApplication() {
  progress_ = started;
  processRegistrationStatus(context_.registrationState());
}

void RegistrationHandler::processRegistrationStatus(RegistrationState::Type state) {
  std::fprintf(stderr, "Received a BBM Social Platform registration access state=%d\n", state);
  switch (progress_) {
    case request_sent:
      if (state != RegistrationState::Pending) registrationFinished();
      break;
    case finished:
      if (context_.isAccessAllowed() != allowed_) registrationFinished();
      break;
    case started:
      request_registration();
      break;
    default:
      std::fprintf(stderr, "Ignoring BBM Social Platform access state=%d when progress=%d\n", state, progress_);
  }
}

void RegistrationHandler::request_registration() {
  if (context_.isAccessAllowed()) {
    registrationFinished();
  } else if (context_.registrationState() == RegistrationState::Unknown) {
    qDebug().noquote() << "BBM Social Platform access state is UNKNOWN; waiting for the initial status";
  } else if (context_.requestRegisterApplication()) {
    progress_ = request_sent;
    std::fputs("BBM Social Platform registration started\n", stderr);
    std::fputs("Verify you are using a valid UUID\n", stderr);
  } else {
    qDebug().noquote() << "BBM Social Platform registration could not be started";
    registrationFinished();
  }
}

void RegistrationHandler::registrationFinished() {
  const auto properties = [this] { return std::tuple(allowed_, status_message_, temporary_error_); };
  const auto before = properties();
  progress_ = finished;
  const registration_outcome_s outcome = registration_outcome(context_.registrationState());
  status_message_ = tr(outcome.message);
  temporary_error_ = outcome.temporary_error;
  allowed_ = context_.isAccessAllowed();
  std::fprintf(stderr, "Finished BBM Social Platform registration, success=%d temporaryError=%d\n", allowed_,
               temporary_error_);
  if (properties() != before) Q_EMIT stateChanged();
  if (allowed_ && !std::get<0>(before)) Q_EMIT registered();
}

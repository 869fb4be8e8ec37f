#include <QDebug>

#include "app/tarnelapp.h"
#include "social/invite_to_download.h"
#include "social/registration_handler.h"

namespace {

constexpr const char* first_run_hint =
    "To access the Settings and Help swipe down from the top of the screen.\n\n"
    "When recording in low resolution eg: 640 x 480 the camera view on the screen will be stretched to fill the entire "
    "screen.  However the recorded video will look normal.";

}  // namespace

void tarnelApp::bbmFinishRegister() {
  if (mSettings.installRegistered) {
    qDebug().noquote() << "app already registered";
  } else if (isInternetConnected()) {
    ping_kochava_server();
  }
  mRegistrationHandler->finishRegistration();
  mInvite = new InviteToDownload(mRegistrationHandler->context(), this);
  if (mSettings.firstRunHintShown) return;
  // Returns once the alert is closed; other slots run meanwhile.
  showAlert(first_run_hint);
  mSettings.firstRunHintShown = 1;
  save_settings();
}

void tarnelApp::invitedownload() {
  if (mInvite) mInvite->sendInvite();
}

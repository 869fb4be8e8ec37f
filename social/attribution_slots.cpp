#include <QDebug>
#include <QNetworkReply>
#include <utility>

#include "app/tarnelapp.h"
#include "platform/device/info.h"
#include "platform/network/netstatus.h"
#include "social/attribution.h"

bool tarnelApp::isInternetConnected() {
  netstatus_interface_details_t* details = nullptr;
  if (netstatus_get_interface_details(nullptr, &details) != 0) return false;
  const bool connected = carries_reports(netstatus_interface_get_type(details));
  netstatus_free_interface_details(&details);
  return connected;
}

QString tarnelApp::getLocalIp() {
  netstatus_info_t* info = nullptr;
  const bool informed = netstatus_get_info(&info) == 0;
  const char* const name = informed ? netstatus_info_get_default_interface(info) : nullptr;
  QString address;
  netstatus_interface_details_t* details = nullptr;
  if (netstatus_get_interface_details(name, &details) == 0) {
    address = QString::fromLatin1(netstatus_interface_get_ip_address(details, 0));
    netstatus_free_interface_details(&details);
  }
  if (informed) netstatus_free_info(&info);
  return address;
}

void tarnelApp::ping_kochava_server() {
  if (mPingReply || names_nobody(_attribution_host)) return;
  const bb::device::HardwareInfo hardware;
  const attribution_report_s report{.pin = hardware.pin(),
                                    .local_ip = getLocalIp(),
                                    .os_version = bb::platform::PlatformInfo().osVersion(),
                                    .keyboard = hardware.isPhysicalKeyboardDevice()};
  connect(&mNetworkManager, &QNetworkAccessManager::finished, this, &tarnelApp::onFinishedPing, Qt::UniqueConnection);
  mPingReply = send_report(mNetworkManager, attribution_url(_attribution_host, report));
}

void tarnelApp::onFinishedPing() {
  QNetworkReply* const reply = std::exchange(mPingReply, nullptr);
  if (!reply) return;
  if (confirms_report(*reply)) {
    mSettings.installRegistered = 1;
    save_settings();
    qDebug().noquote() << "prefs updated\n";
  }
  reply->close();
  reply->deleteLater();
}

#include "social/attribution.h"

#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QUrl>

QByteArray _attribution_host = QByteArrayLiteral(MORVANE_ATTRIBUTION_HOST);

namespace {

constexpr char application_id[] = "kobrisk-app4b7e21c90d3fa";
/// Property of a reply that was given up for its length, whose body is gone: whether what came of it confirms.
constexpr char confirmed_property[] = "confirmed";

bool confirms(const QByteArray& body) {
  return body.contains("success");
}

QString device_id(const QString& pin) {
  const QString upper = pin.toUpper();
  return upper.startsWith(QLatin1String("0X")) ? upper.mid(2) : upper;
}

}  // namespace

bool carries_reports(netstatus_interface_type_t type) {
  return type == NETSTATUS_INTERFACE_TYPE_WIRED || type == NETSTATUS_INTERFACE_TYPE_WIFI ||
         type == NETSTATUS_INTERFACE_TYPE_CELLULAR;
}

QByteArray attribution_user_agent(const QString& os_version, bool keyboard) {
  return QByteArray("Mozilla/5.0 (BB10; ") + (keyboard ? "Kbd" : "Touch") +
         ") AppleWebKit/537.35+ (KHTML, like Gecko) Version/" + os_version.toUtf8() + " Mobile Safari/537.35+";
}

QByteArray attribution_url(const QByteArray& host, const attribution_report_s& report) {
  return "http://" + host + "/v1/cpi/startup?device_id=" + device_id(report.pin).toUtf8() +
         "&app_id=" + application_id + "&origination_ip=" + report.local_ip.toUtf8() + "&device_ver=BB10-" +
         report.os_version.toUtf8() +
         "&device_ua=" + attribution_user_agent(report.os_version, report.keyboard).toPercentEncoding() +
         "&device_id_type=udid";
}

bool names_nobody(const QByteArray& host) {
  return host.split(':').first().toLower().endsWith(".invalid");
}

QNetworkReply* send_report(QNetworkAccessManager& manager, const QByteArray& url, std::chrono::milliseconds limit) {
  QNetworkRequest request(QUrl::fromEncoded(url));
  request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
  request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
  QNetworkReply* const reply = manager.get(request);
  // One byte more shows that there is more.
  reply->setReadBufferSize(attribution_body_limit + 1);
  QObject::connect(reply, &QNetworkReply::readyRead, reply, [reply] {
    if (reply->bytesAvailable() <= attribution_body_limit) return;
    reply->setProperty(confirmed_property, confirms(reply->peek(attribution_body_limit)));
    reply->abort();
  });
  QTimer::singleShot(limit, reply, &QNetworkReply::abort);
  return reply;
}

bool confirms_report(QNetworkReply& reply) {
  return reply.isOpen() ? confirms(reply.readAll()) : reply.property(confirmed_property).toBool();
}

#include "social/attribution.h"

#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QUrl>
#include <algorithm>

QByteArray _attribution_host = QByteArrayLiteral(MORVANE_ATTRIBUTION_HOST);

namespace {

constexpr char application_id[] = "kobrisk-app4b7e21c90d3fa";
constexpr char confirmation[] = "success";
/// Properties of a reply whose body is not kept: whether it contained the confirmation, and its last bytes.
constexpr char confirmed_property[] = "confirmed";
constexpr char end_property[] = "end";
constexpr qint64 read_buffer_size = 64 * 1024;

/// Scans newly arrived data. The word may straddle two pieces.
void read_on(QNetworkReply& reply) {
  const QByteArray piece = reply.property(end_property).toByteArray() + reply.readAll();
  if (piece.contains(confirmation)) reply.setProperty(confirmed_property, true);
  reply.setProperty(end_property, piece.last(std::min<qsizetype>(piece.size(), sizeof confirmation - 2)));
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
  QByteArray name = '.' + host.split(':').first().toLower();
  if (name.endsWith('.')) name.chop(1);  // the root, spelled out
  return name.endsWith(".invalid");
}

QNetworkReply* send_report(QNetworkAccessManager& manager, const QByteArray& url, std::chrono::milliseconds limit) {
  QNetworkRequest request(QUrl::fromEncoded(url));
  request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
  request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
  QNetworkReply* const reply = manager.get(request);
  reply->setReadBufferSize(read_buffer_size);
  QObject::connect(reply, &QNetworkReply::readyRead, reply, [reply] { read_on(*reply); });
  QTimer::singleShot(limit, reply, &QNetworkReply::abort);
  return reply;
}

bool confirms_report(QNetworkReply& reply) {
  if (!reply.isOpen()) return false;  // given up
  read_on(reply);
  return reply.property(confirmed_property).toBool();
}

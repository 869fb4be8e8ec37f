#pragma once

// The installation report: one HTTP request, built here byte for byte. UI thread.

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QString>
#include <chrono>

#include "platform/network/netstatus.h"

class QNetworkReply;

/// What the report says about the device.
struct attribution_report_s {
  QString pin;       ///< hexadecimal, with or without 0x
  QString local_ip;  ///< may be empty
  QString os_version;
  bool keyboard;  ///< a physical one
};

/// The host that receives reports, with a port unless it is HTTP's own. Set at build time; tests substitute their own
/// server.
extern QByteArray _attribution_host;

/// From the call to the last byte of the reply.
inline constexpr std::chrono::milliseconds attribution_time_limit{30'000};

/// Wired, Wi-Fi and cellular links carry reports; no others do.
bool carries_reports(netstatus_interface_type_t type);

/// The User-Agent of a browser on the device; not encoded.
QByteArray attribution_user_agent(const QString& os_version, bool keyboard);

/// The request's URL, complete and encoded. The operating system's version is not encoded.
QByteArray attribution_url(const QByteArray& host, const attribution_report_s& report);

/// Names in .invalid never resolve; a build without its own service uses one as its host.
bool names_nobody(const QByteArray& host);

/// Sends a plain HTTP GET for an encoded URL, byte for byte if it is valid. Does not follow redirects.
/// @return the reply, owned by the manager. It ends by itself after at most `limit`
QNetworkReply* send_report(QNetworkAccessManager& manager, const QByteArray& url,
                           std::chrono::milliseconds limit = attribution_time_limit);

/// Whether the body of a finished reply contains the word "success"; false after a timeout. Keeps little of the body,
/// however long.
bool confirms_report(QNetworkReply& reply);

#pragma once

// The report of an installation: one HTTP request, built here byte for byte. UI thread.

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QString>
#include <chrono>

#include "platform/network/netstatus.h"

class QNetworkReply;

/// What the report tells of the device.
struct attribution_report_s {
  QString pin;       ///< hexadecimal, with or without 0x
  QString local_ip;  ///< may be empty
  QString os_version;
  bool keyboard;  ///< a physical one
};

/// The host that reports go to, with a port if it is not HTTP's own. Set when the program is built; tests put a server
/// of theirs in its place.
extern QByteArray _attribution_host;

/// From the call to the last byte of the answer.
inline constexpr std::chrono::milliseconds attribution_time_limit{30'000};

/// Wired, Wi-Fi and cellular links carry reports, all others do not.
bool carries_reports(netstatus_interface_type_t type);

/// What a browser of the device would call itself; not encoded.
QByteArray attribution_user_agent(const QString& os_version, bool keyboard);

/// The request's URL, complete and encoded. The operating system's version is not encoded.
QByteArray attribution_url(const QByteArray& host, const attribution_report_s& report);

/// No lookup finds a name in .invalid, which is what a build without a service of its own has for a host.
bool names_nobody(const QByteArray& host);

/// Sends a plain HTTP GET for an encoded URL, byte for byte where it is a valid one. No redirection is followed.
/// @return the reply, which belongs to the manager. It ends by itself, at the latest after `limit`
QNetworkReply* send_report(QNetworkAccessManager& manager, const QByteArray& url,
                           std::chrono::milliseconds limit = attribution_time_limit);

/// Whether the body of a finished reply holds the word "success". One that took too long does not. However long the
/// body is, little of it is kept.
bool confirms_report(QNetworkReply& reply);

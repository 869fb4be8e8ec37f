#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QNetworkReply>
#include <QTest>

#include "social/attribution.h"
#include "tests/social/loopback_server.h"

using namespace std::chrono_literals;

namespace {

attribution_report_s touch_report() {
  return {.pin = "0x2a1b3c4d", .local_ip = "10.0.0.5", .os_version = "10.2.1.3062", .keyboard = false};
}

constexpr const char* touch_path =
    "/v1/cpi/startup?device_id=2A1B3C4D&app_id=kobrisk-app4b7e21c90d3fa&origination_ip=10.0.0.5&device_ver=BB10-10.2.1."
    "3062&device_ua=Mozilla%2F5.0%20%28BB10%3B%20Touch%29%20AppleWebKit%2F537.35%2B%20%28KHTML%2C%20like%20Gecko%29%"
    "20Version%2F10.2.1.3062%20Mobile%20Safari%2F537.35%2B&device_id_type=udid";

/// Whether a report is confirmed by the server. The reply has to end by itself.
bool confirmed_by(const LoopbackServer& server, std::chrono::milliseconds limit = attribution_time_limit,
                  const attribution_report_s& report = touch_report()) {
  QNetworkAccessManager manager;
  QNetworkReply* const reply = send_report(manager, attribution_url(server.host(), report), limit);
  EXPECT_TRUE(QTest::qWaitFor([&] { return reply->isFinished(); }, 20000));
  return confirms_report(*reply);
}

TEST(Attribution, TheRequestOnTheWire) {
  const LoopbackServer touch(http_answer("200 OK", "success"));
  EXPECT_TRUE(confirmed_by(touch));
  EXPECT_EQ(first_line(touch.request), QByteArray("GET ") + touch_path + " HTTP/1.1");
  EXPECT_TRUE(touch.request.contains("\r\nHost: " + touch.host() + "\r\n")) << touch.request.constData();
  EXPECT_FALSE(touch.request.toLower().contains("\r\nupgrade:")) << "plain HTTP";
  EXPECT_TRUE(touch.request.endsWith("\r\n\r\n")) << "no body";
  EXPECT_EQ(touch.connections, 1);

  const LoopbackServer keyboard(http_answer("200 OK", "success"));
  attribution_report_s report = touch_report();
  report.keyboard = true;
  report.local_ip.clear();
  EXPECT_TRUE(confirmed_by(keyboard, attribution_time_limit, report));
  const QByteArray path = QByteArray(touch_path).replace("BB10%3B%20Touch", "BB10%3B%20Kbd").replace("10.0.0.5", "");
  EXPECT_TRUE(path.contains("origination_ip=&device_ver="));
  EXPECT_EQ(first_line(keyboard.request), "GET " + path + " HTTP/1.1");
}

TEST(Attribution, ThePinHasNoPrefixAndCapitals) {
  const auto id = [](const char* pin) {
    attribution_report_s report = touch_report();
    report.pin = pin;
    const QByteArray url = attribution_url("h", report);
    const QByteArray before = "http://h/v1/cpi/startup?device_id=";
    EXPECT_TRUE(url.startsWith(before)) << url.constData();
    return url.mid(before.size(), url.indexOf('&') - before.size()).toStdString();
  };
  EXPECT_EQ(id("0x2a1b3c4d"), "2A1B3C4D");
  EXPECT_EQ(id("0X2A1B"), "2A1B");
  EXPECT_EQ(id("2a1b3c4d"), "2A1B3C4D");
  EXPECT_EQ(id("0x0x1f"), "0X1F") << "one prefix";
  EXPECT_EQ(id("1f0x"), "1F0X");
}

TEST(Attribution, OnlyTheWordCounts) {
  const QByteArray page = QByteArray(30000, '.') + "{\"status\":\"unsuccessful\"}" + QByteArray(30000, '.');
  EXPECT_TRUE(confirmed_by(LoopbackServer(http_answer("200 OK", page))));
  EXPECT_TRUE(confirmed_by(LoopbackServer(http_answer("500 Internal Server Error", "no success today"))));
  EXPECT_TRUE(confirmed_by(LoopbackServer("HTTP/1.1 200 OK\r\nContent-Length: 500\r\n\r\nsuccess, then silence")));
  EXPECT_FALSE(confirmed_by(LoopbackServer(http_answer("200 OK", "SUCCESS Success succes"))));
  EXPECT_FALSE(confirmed_by(LoopbackServer(http_answer("200 OK", "", "X-Answer: success\r\n"))));
  EXPECT_FALSE(confirmed_by(LoopbackServer("success\r\n\r\n"))) << "not HTTP";
}

TEST(Attribution, TheWordMayBeAnywhereInALongAnswer) {
  const QByteArray flood(4 << 20, '.');
  EXPECT_TRUE(confirmed_by(LoopbackServer(http_answer("200 OK", flood + "success"))));
  EXPECT_TRUE(confirmed_by(LoopbackServer(http_answer("200 OK", "success" + flood))));
  // Wherever the pieces that it arrives in end.
  for (int shift = 0; shift < 8; ++shift) {
    EXPECT_TRUE(confirmed_by(LoopbackServer(http_answer("200 OK", QByteArray((64 << 10) - shift, '.') + "success"))));
  }
  EXPECT_FALSE(confirmed_by(LoopbackServer(http_answer("200 OK", flood + "succes"))));
}

TEST(Attribution, EndsWhenNobodyAnswers) {
  QElapsedTimer clock;
  clock.start();
  const LoopbackServer silent("");
  EXPECT_FALSE(confirmed_by(silent, 300ms));
  EXPECT_EQ(silent.connections, 1);
  EXPECT_FALSE(confirmed_by(LoopbackServer("HTTP/1.1 200 OK\r\n\r\nsuccess", LoopbackServer::StaysOpen), 300ms))
      << "not the whole body";
  EXPECT_LT(clock.elapsed(), 5000);

  QNetworkAccessManager manager;
  QNetworkReply* const reply = send_report(manager, "http://127.0.0.1:1/v1/cpi/startup");
  EXPECT_TRUE(QTest::qWaitFor([&] { return reply->isFinished(); }, 20000));
  EXPECT_FALSE(confirms_report(*reply));
}

TEST(Attribution, IsNotSentElsewhere) {
  const LoopbackServer other(http_answer("200 OK", "success"));
  const LoopbackServer first(http_answer("302 Found", "moved", "Location: http://" + other.host() + "/\r\n"));
  EXPECT_FALSE(confirmed_by(first));
  EXPECT_EQ(first.connections, 1);
  EXPECT_EQ(other.connections, 0);
}

TEST(Attribution, WhatCarriesItAndToWhom) {
  for (int type = NETSTATUS_INTERFACE_TYPE_UNKNOWN; type <= NETSTATUS_INTERFACE_TYPE_P2P + 1; ++type) {
    EXPECT_EQ(carries_reports(static_cast<netstatus_interface_type_t>(type)), type == 1 || type == 2 || type == 7)
        << type;
  }
  EXPECT_TRUE(names_nobody("attribution.morvane.invalid"));
  EXPECT_TRUE(names_nobody("Reports.INVALID:8080"));
  EXPECT_TRUE(names_nobody("x.invalid."));
  EXPECT_TRUE(names_nobody("invalid"));
  EXPECT_FALSE(names_nobody("127.0.0.1:8080"));
  EXPECT_FALSE(names_nobody("invalid.example.org"));
  EXPECT_FALSE(names_nobody("notinvalid"));
}

}  // namespace

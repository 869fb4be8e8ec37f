// Registration, invitation, and the report of the installation.

#include <gmock/gmock.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QQuickItem>
#include <filesystem>

#include "platform/cascades/pages.h"
#include "platform/cascades/stage.h"
#include "platform/network/netstatus.h"
#include "social/attribution.h"
#include "social/registration_handler.h"
#include "tests/application/app_fixture.h"
#include "tests/application/dialogs.h"
#include "tests/social/loopback_server.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr const char* first_run_hint =
    "To access the Settings and Help swipe down from the top of the screen.\n\nWhen recording in low resolution eg: "
    "640 "
    "x 480 the camera view on the screen will be stretched to fill the entire screen.  However the recorded video will "
    "look normal.";

class Social : public AppTest {
 protected:
  Social() : host_(_attribution_host) { settings.installRegistered = 0; }
  ~Social() override { _attribution_host = host_; }

  /// Starts, and waits until the registration has said what it has to say.
  void start_registered() {
    start();
    ASSERT_TRUE(wait_until([this] { return app->mRegistrationHandler->isAllowed(); }));
  }
  /// What a whole report to the server writes to the error stream.
  std::string report_to(const LoopbackServer& server) {
    _attribution_host = server.host();
    return errors_of([&] {
      app->ping_kochava_server();
      EXPECT_NE(app->mPingReply, nullptr);
      EXPECT_TRUE(wait_until([&] { return app->mPingReply == nullptr; }));
    });
  }
  /// What the kernel says of the default interface.
  struct Link {
    bool carries_reports = false;
    QString address;
  };
  static Link link() {
    Link link;
    netstatus_interface_details_t* details = nullptr;
    if (netstatus_get_interface_details(nullptr, &details) != 0) return link;
    link = {carries_reports(netstatus_interface_get_type(details)),
            QString::fromLatin1(netstatus_interface_get_ip_address(details, 0))};
    netstatus_free_interface_details(&details);
    return link;
  }
  static bb::cascades::Sheet* sheet() {
    return qobject_cast<bb::cascades::Sheet*>(handset::Stage::instance()->sheet());
  }

 private:
  const QByteArray host_;
};

TEST_F(Social, AReportThatIsConfirmedIsRemembered) {
  start_registered();
  const LoopbackServer server(http_answer("200 OK", "{\"success\":1}"));
  EXPECT_EQ(report_to(server), "prefs updated\n\n");
  EXPECT_EQ(stored_settings().installRegistered, 1);
  const attribution_report_s report{
      .pin = "2B6F01A4", .local_ip = link().address, .os_version = "10.3.3.3216", .keyboard = false};
  const QByteArray url = attribution_url(server.host(), report);
  EXPECT_EQ(first_line(server.request), "GET " + url.mid(url.indexOf("/v1/")) + " HTTP/1.1");
}

TEST_F(Social, AReportThatIsNotConfirmedIsSentAgain) {
  start_registered();
  EXPECT_EQ(report_to(LoopbackServer(http_answer("200 OK", "SUCCESS"))), "");
  EXPECT_EQ(app->mSettings.installRegistered, 0);
  EXPECT_EQ(report_to(LoopbackServer(http_answer("404 Not Found", "success"))), "prefs updated\n\n")
      << "handled once, although two have been sent";
}

TEST_F(Social, AConfirmationThatCannotBeSavedHoldsForThisRun) {
  start();
  std::filesystem::remove_all("data");
  EXPECT_THAT(report_to(LoopbackServer(http_answer("200 OK", "success"))), HasSubstr("error saving prefs: "));
  EXPECT_EQ(app->mSettings.installRegistered, 1);
}

TEST_F(Social, NothingIsSentToNobody) {
  start();
  ASSERT_TRUE(names_nobody(_attribution_host)) << "the tests' build reports to somebody";
  app->ping_kochava_server();
  EXPECT_EQ(app->mPingReply, nullptr);
}

TEST_F(Social, EndsWhileAReportIsUnderWay) {
  start();
  const LoopbackServer silent("");
  _attribution_host = silent.host();
  app->ping_kochava_server();
  ASSERT_TRUE(wait_until([&] { return !silent.request.isEmpty(); }));
  end();
  wait_for(50);
  EXPECT_EQ(stored_settings().installRegistered, 0);
}

TEST_F(Social, ReportsAfterTheStartWhereTheLinkIsWorthIt) {
  start();
  const LoopbackServer server(http_answer("200 OK", "success"));
  _attribution_host = server.host();
  app->bbmFinishRegister();
  EXPECT_EQ(app->mPingReply != nullptr, link().carries_reports);
  ASSERT_TRUE(wait_until([&] { return app->mPingReply == nullptr; }));
  EXPECT_EQ(server.connections, link().carries_reports ? 1 : 0);
}

TEST_F(Social, TheFirstRunsHintIsRememberedOnceItHasBeenRead) {
  settings.firstRunHintShown = 0;
  settings.installRegistered = 1;
  start_registered();
  int stored_meanwhile = -1;
  const dialogs::Answers answers({[&](bb::system::SystemDialog& dialog) {
    stored_meanwhile = stored_settings().firstRunHintShown;
    dialog.confirm();
  }});
  EXPECT_EQ(errors_of([this] { app->bbmFinishRegister(); }), "app already registered\n");
  EXPECT_THAT(answers.bodies(), ElementsAre(first_run_hint));
  EXPECT_EQ(stored_meanwhile, 0);
  EXPECT_EQ(stored_settings().firstRunHintShown, 1);
}

TEST_F(Social, InvitesWithATextToCopy) {
  settings.installRegistered = 1;
  start();
  app->invitedownload();
  EXPECT_EQ(app->mInvite, nullptr);
  ASSERT_TRUE(wait_until([this] { return app->mRegistrationHandler->isAllowed(); }));
  app->invitedownload();
  EXPECT_EQ(sheet(), nullptr) << "too early";

  const dialogs::Answers answers({});
  app->bbmFinishRegister();
  EXPECT_THAT(answers.bodies(), IsEmpty()) << "the hint has been given in an earlier run";
  app->invitedownload();
  ASSERT_NE(sheet(), nullptr);
  auto* const copy = sheet()->content()->findChild<QQuickItem*>("copyButton");
  ASSERT_NE(copy, nullptr);
  ASSERT_TRUE(QMetaObject::invokeMethod(copy, "clicked"));
  const std::string text = QGuiApplication::clipboard()->text().toStdString();
  EXPECT_THAT(text, HasSubstr("Search for Morvane"));
  EXPECT_EQ(text.find("://"), std::string::npos);

  handset::Stage::instance()->go_back();
  EXPECT_EQ(sheet(), nullptr);
  app->invitedownload();
  EXPECT_NE(sheet(), nullptr) << "as often as one likes";
  end();
  EXPECT_EQ(sheet(), nullptr);
}

}  // namespace

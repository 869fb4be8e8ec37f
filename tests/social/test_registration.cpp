#include <gtest/gtest.h>

#include "social/registration_handler.h"
#include "tests/social/profile_file.h"

using bb::platform::bbm::RegistrationState;

namespace {

constexpr const char* waiting = "Please wait while the application connects to BBM.";
constexpr const char* connected = "Application connected to BBM.  Press Continue.";
constexpr const char* would_you_like = "Would you like to connect the application to BBM?";

/// A handler and what it has told; everything that it writes is caught until said() asks for it.
class Registration : public ::testing::Test {
 protected:
  void start(const std::string& profile, const QUuid& uuid = application_uuid) {
    set_profile(profile);
    handler_ = std::make_unique<RegistrationHandler>(uuid);
    QObject::connect(handler_.get(), &RegistrationHandler::stateChanged, [this] { ++changes_; });
    QObject::connect(handler_.get(), &RegistrationHandler::registered, [this] { ++registrations_; });
    testing::internal::CaptureStderr();
  }
  void TearDown() override {
    if (handler_) testing::internal::GetCapturedStderr();
  }
  std::string said() {
    std::string text = testing::internal::GetCapturedStderr();
    testing::internal::CaptureStderr();
    return text;
  }
  bool has_changed(int times) {
    return comes_true([&] { return changes_ >= times; }) && changes_ == times;
  }

  std::unique_ptr<RegistrationHandler> handler_;
  int changes_ = 0;
  int registrations_ = 0;
};

TEST(RegistrationOutcome, EveryStateHasItsTextAndKind) {
  const struct {
    int state;
    const char* message;
    bool temporary;
  } rows[] = {
      {-1, would_you_like, true},
      {0, connected, false},
      {1, "Determining the status. Please wait.", false},
      {2, would_you_like, true},
      {3, "Connecting to BBM. Please wait.", false},
      {4,
       "Disconnected. Go to Settings -> Security and Privacy -> Application Permissions and connect this application "
       "to BBM.",
       false},
      {5, "Disconnected by RIM. RIM is preventing this application from connecting to BBM.", false},
      {6, "Check your Internet connection and try again.", true},
      {7, would_you_like, true},
      {8, "Invalid UUID. Report this error to the vendor.", true},
      {9, would_you_like, true},
      {10, "Cannot connect to BBM. Download this application from AppWorld to keep using it.", false},
      {11, "Cannot connect to BBM. Download this application from AppWorld to keep using it.", false},
      {12, would_you_like, true},
      {13, "Too many applications are connected to BBM. Uninstall one or more applications and try again.", false},
      {14, would_you_like, true},
  };
  for (const auto& row : rows) {
    EXPECT_STREQ(registration_outcome(row.state).message, row.message) << row.state;
    EXPECT_EQ(registration_outcome(row.state).temporary_error, row.temporary) << row.state;
  }
}

TEST_F(Registration, IsRequestedAndAllowed) {
  start("");
  EXPECT_EQ(handler_->statusMessage(), waiting);
  handler_->registerApplication();
  EXPECT_EQ(said(),
            "Received a BBM Social Platform registration access state=2\n"
            "BBM Social Platform registration started\n"
            "Verify you are using a valid UUID\n");
  EXPECT_EQ(handler_->statusMessage(), waiting);
  ASSERT_TRUE(has_changed(1));
  EXPECT_EQ(said(),
            "Received a BBM Social Platform registration access state=3\n"
            "Received a BBM Social Platform registration access state=0\n"
            "Finished BBM Social Platform registration, success=1 temporaryError=0\n");
  EXPECT_TRUE(handler_->isAllowed());
  EXPECT_EQ(handler_->property("statusMessage"), connected);
  EXPECT_EQ(registrations_, 1);
}

TEST_F(Registration, FollowsWhetherAccessIsAllowedAfterwards) {
  start("[bbm]\nstate=9\n");
  handler_->registerApplication();
  ASSERT_TRUE(has_changed(1));
  EXPECT_FALSE(handler_->isAllowed());
  EXPECT_EQ(handler_->statusMessage(), would_you_like);
  EXPECT_TRUE(handler_->isTemporaryError());
  EXPECT_EQ(registrations_, 0);
  said();

  std::string heard;
  set_profile("[bbm]\nstate=4\n");
  ASSERT_TRUE(comes_true([&] { return !(heard += said()).empty(); }));
  EXPECT_EQ(heard, "Received a BBM Social Platform registration access state=4\n");
  EXPECT_EQ(handler_->statusMessage(), would_you_like) << "the same answer as before";

  set_profile("[bbm]\nstate=0\n");
  ASSERT_TRUE(has_changed(2));
  EXPECT_EQ(handler_->statusMessage(), connected);
  EXPECT_FALSE(handler_->isTemporaryError());
  EXPECT_EQ(registrations_, 1);

  set_profile("[bbm]\nstate=6\n");
  ASSERT_TRUE(has_changed(3));
  EXPECT_FALSE(handler_->isAllowed());
  EXPECT_EQ(handler_->statusMessage(), "Check your Internet connection and try again.");
  EXPECT_EQ(registrations_, 1);
}

TEST_F(Registration, FinishesAtOnceWhereAccessIsAllowedAlready) {
  start("[bbm]\nregistered=true\n");
  handler_->registerApplication();
  EXPECT_EQ(said(),
            "Received a BBM Social Platform registration access state=0\n"
            "Finished BBM Social Platform registration, success=1 temporaryError=0\n");
  EXPECT_TRUE(handler_->isAllowed());
  EXPECT_EQ(handler_->statusMessage(), connected);
  EXPECT_EQ(changes_, 1);
  EXPECT_EQ(registrations_, 1);
}

TEST_F(Registration, WaitsWhileTheStateIsUnknown) {
  start("[bbm]\nregistered=true\nstate=1\n");
  handler_->registerApplication();
  EXPECT_EQ(said(),
            "Received a BBM Social Platform registration access state=1\n"
            "BBM Social Platform access state is UNKNOWN; waiting for the initial status\n");
  set_profile("[bbm]\nregistered=true\nstate=5\n");
  ASSERT_TRUE(has_changed(1));
  EXPECT_EQ(said(),
            "Received a BBM Social Platform registration access state=5\n"
            "BBM Social Platform registration started\n"
            "Verify you are using a valid UUID\n"
            "Received a BBM Social Platform registration access state=3\n"
            "Received a BBM Social Platform registration access state=5\n"
            "Finished BBM Social Platform registration, success=0 temporaryError=0\n");
}

TEST_F(Registration, FinishesWhenItIsRefused) {
  start("", QUuid());
  handler_->registerApplication();
  EXPECT_EQ(said(),
            "Received a BBM Social Platform registration access state=2\n"
            "BBM Social Platform registration could not be started\n"
            "Finished BBM Social Platform registration, success=0 temporaryError=1\n");
  EXPECT_EQ(handler_->statusMessage(), would_you_like);
  EXPECT_EQ(changes_, 1);
}

TEST_F(Registration, IgnoresStatesBeforeItIsStarted) {
  start("");
  handler_->processRegistrationStatus(RegistrationState::Allowed);
  handler_->finishRegistration();
  EXPECT_EQ(said(),
            "Received a BBM Social Platform registration access state=0\n"
            "Ignoring BBM Social Platform access state=0 when progress=0\n");
  EXPECT_FALSE(handler_->isAllowed());
  EXPECT_EQ(handler_->statusMessage(), waiting);
  EXPECT_EQ(changes_, 0);
}

}  // namespace

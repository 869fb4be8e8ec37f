#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/social/profile_file.h"

using bb::platform::bbm::Context;
using bb::platform::bbm::MessageService;
using bb::platform::bbm::RegistrationState;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

/// A context, and the states that it has reported.
struct Platform {
  explicit Platform(const QUuid& uuid = application_uuid) : context(uuid) {
    QObject::connect(&context, &Context::registrationStateUpdated, &context,
                     [this](RegistrationState::Type state) { reported.push_back(state); });
  }
  bool reports(RegistrationState::Type state) {
    return comes_true([&] { return !reported.empty() && reported.back() == state; });
  }

  Context context;
  std::vector<int> reported;
};

TEST(BbmContext, ARequestIsPendingAndThenAnswered) {
  set_profile("[bbm]\nstate=4\n");
  Platform platform;
  EXPECT_EQ(platform.context.registrationState(), RegistrationState::Unregistered);
  ASSERT_TRUE(platform.context.requestRegisterApplication());
  EXPECT_EQ(platform.context.registrationState(), RegistrationState::Pending);
  EXPECT_THAT(platform.reported, IsEmpty()) << "reported before the call returned";
  EXPECT_FALSE(platform.context.requestRegisterApplication()) << "one is under way";
  ASSERT_TRUE(platform.reports(RegistrationState::BlockedByUser));
  EXPECT_THAT(platform.reported, ElementsAre(3, 4));
  EXPECT_FALSE(platform.context.isAccessAllowed());

  set_profile("[bbm]\nstate=0\n");
  ASSERT_TRUE(platform.reports(RegistrationState::Allowed));
  EXPECT_TRUE(platform.context.isAccessAllowed());
  EXPECT_TRUE(platform.context.requestRegisterApplication()) << "the one before has been answered";
}

TEST(BbmContext, WithoutAnIdentityNothingIsRequested) {
  Platform platform{QUuid()};
  EXPECT_FALSE(platform.context.requestRegisterApplication());
  QTest::qWait(50);
  EXPECT_THAT(platform.reported, IsEmpty());
}

TEST(BbmContext, AnApplicationMayBeRegisteredAlready) {
  set_profile("[bbm]\nregistered=true\n");
  EXPECT_TRUE(Context(application_uuid).isAccessAllowed());
  set_profile("[bbm]\nregistered=true\nstate=5\n");
  EXPECT_EQ(Context(application_uuid).registrationState(), RegistrationState::BlockedByRIM);
}

TEST(BbmContext, FollowsTheProfileOnceItIsRegistered) {
  remove_profile_folder();
  Platform platform;
  set_profile("[bbm]\nstate=6\n");
  QTest::qWait(300);
  EXPECT_THAT(platform.reported, IsEmpty()) << "nobody has registered yet";

  ASSERT_TRUE(platform.context.requestRegisterApplication());
  set_profile("[bbm]\nstate=13\n");
  ASSERT_TRUE(platform.reports(RegistrationState::MaxAppsReached)) << "the profile at the time of the answer";
  EXPECT_THAT(platform.reported, ElementsAre(3, 13));

  write_file(device_profile_path(), "[bbm]\nstate=9\n");
  ASSERT_TRUE(platform.reports(RegistrationState::TemporaryError)) << "written in place";
  remove_profile_folder();
  ASSERT_TRUE(platform.reports(RegistrationState::Allowed)) << "the defaults";
  set_profile("[bbm]\nstate=12\n");
  ASSERT_TRUE(platform.reports(RegistrationState::CancelledByUser)) << "folder and file are there again";
  EXPECT_THAT(platform.reported, ElementsAre(3, 13, 9, 0, 12));
}

TEST(BbmContext, InvitesOnlyWhereAccessIsAllowed) {
  set_profile("[bbm]\nstate=4\nregistered=true\n");
  auto context = std::make_unique<Context>(application_uuid);
  MessageService service(context.get());
  EXPECT_FALSE(service.sendDownloadInvitation());
  context.reset();
  EXPECT_FALSE(service.sendDownloadInvitation());
}

}  // namespace

#include <gtest/gtest.h>

#include "platform/device/profile.h"
#include "tests/support/temp_dir.h"

namespace {

DeviceProfile load(const std::string& text, std::string* complaints) {
  const TempDir dir;
  write_file(dir.file("device.ini"), text);
  testing::internal::CaptureStderr();
  const DeviceProfile profile = load_device_profile(dir.file("device.ini"));
  *complaints = testing::internal::GetCapturedStderr();
  return profile;
}

TEST(Profile, EveryKeyIsOptionalAndRead) {
  std::string complaints;
  const DeviceProfile profile = load(
      "[display]\nwidth=720\nheight=720\n[camera]\nfront=scene\nrear=clip:/a b.mp4\ndesktop=gst:videotestsrc\n"
      "microphone=USB Audio\nvideo-light=false\nstabilization=false\n"
      "[device]\npin=0xABCDEF12\nkeyboard=true\nos-version=10.2.1.3062\n[bbm]\nstate=4\nregistered=true\n",
      &complaints);
  EXPECT_EQ(complaints, "");
  EXPECT_EQ(profile.display_width, 720);
  EXPECT_EQ(profile.display_height, 720);
  EXPECT_EQ(profile.front, "scene");
  EXPECT_EQ(profile.rear, "clip:/a b.mp4");
  EXPECT_EQ(profile.desktop, "gst:videotestsrc");
  EXPECT_EQ(profile.microphone, "USB Audio");
  EXPECT_FALSE(profile.video_light);
  EXPECT_FALSE(profile.stabilization);
  EXPECT_EQ(profile.pin, "0xABCDEF12");
  EXPECT_TRUE(profile.keyboard);
  EXPECT_EQ(profile.os_version, "10.2.1.3062");
  EXPECT_EQ(profile.bbm_state, 4);
  EXPECT_TRUE(profile.bbm_registered);
}

TEST(Profile, BadValuesAndUnknownKeysCostALineEachAndNothingElse) {
  std::string complaints;
  const DeviceProfile profile = load(
      "[display]\nwidth=0\nheight=1280px\n[camera]\nmicrophone=\nvideo-light=1\nrear=scene\nzoom=2\n"
      "[device]\npin=12345678\n[bbm]\nstate=14\n[radio]\nvolume=11\n",
      &complaints);
  EXPECT_EQ(profile.display_width, 768);
  EXPECT_EQ(profile.display_height, 1280);
  EXPECT_EQ(profile.microphone, "default");
  EXPECT_TRUE(profile.video_light);
  EXPECT_EQ(profile.rear, "scene");
  EXPECT_EQ(profile.pin, DeviceProfile{}.pin);
  EXPECT_EQ(profile.bbm_state, 0);
  EXPECT_EQ(std::count(complaints.begin(), complaints.end(), '\n'), 8) << complaints;
  EXPECT_NE(complaints.find("unknown key \"volume\" in [radio]"), std::string::npos);
  EXPECT_NE(complaints.find("bad value \"\" for \"microphone\" in [camera]"), std::string::npos);
}

TEST(Profile, AQuietReadingTakesTheSameValues) {
  const TempDir dir;
  write_file(dir.file("device.ini"), "[bbm]\nstate=99\nregistered=true\nfriends=none\n");
  testing::internal::CaptureStderr();
  const DeviceProfile profile = load_device_profile(dir.file("device.ini"), true);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(profile.bbm_state, 0);
  EXPECT_TRUE(profile.bbm_registered);
}

TEST(Profile, MissingFileIsSilentAndABrokenOneIsNot) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(load_device_profile("/nonexistent/device.ini").display_width, 768);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

  std::string complaints;
  EXPECT_EQ(load("width=5\n[display\n", &complaints).display_width, 768);
  EXPECT_EQ(std::count(complaints.begin(), complaints.end(), '\n'), 1) << complaints;
}

}  // namespace

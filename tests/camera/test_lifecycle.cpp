// Starts and stops that hang in a device, and units that wait for a camera.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>

#include "platform/camera/capture_start.h"
#include "platform/camera/reopen.h"
#include "tests/support/temp_dir.h"

using namespace std::chrono_literals;
using handset::CaptureStart;
using handset::Missing;
using handset::Source;

namespace {

using Clock = std::chrono::steady_clock;

std::shared_ptr<const Source> custom(const std::string& description, const std::string& device = {}) {
  gst_init(nullptr, nullptr);
  Source source;
  source.kind = Source::Kind::custom;
  source.argument = description;
  source.camera.identity = device;
  return std::make_shared<const Source>(std::move(source));
}

handset::Capture::Setup setup(std::shared_ptr<const Source> source) {
  return {.source = std::move(source), .size = {320, 240}, .frame_rate = 30, .unpaced = false};
}

TEST(CaptureStart, IsNotWaitedForWhereItHangs) {
  const TempDir dir;
  const std::string pipe = dir.file("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const auto begin = Clock::now();
  {
    // Opening a pipe that nobody writes to is held up in the kernel, as opening a dead device is.
    CaptureStart start(setup(custom("filesrc location=" + pipe + " ! rawvideoparse width=320 height=240")),
                       [](handset::Frame) {});
    EXPECT_FALSE(start.wait(300ms));
    std::string error;
    EXPECT_EQ(start.take(&error), nullptr);
  }
  EXPECT_LT(Clock::now() - begin, 3s);
  const int writer = open(pipe.c_str(), O_WRONLY);  // lets the thread go
  EXPECT_GE(writer, 0);
  close(writer);
}

TEST(CaptureStart, SaysWhyThereIsNoCapture) {
  CaptureStart start(setup(custom("no-such-element ! identity")), [](handset::Frame) {});
  ASSERT_TRUE(start.wait(10s));
  std::string error;
  EXPECT_EQ(start.take(&error), nullptr);
  EXPECT_NE(error, "");
}

TEST(CaptureStart, WaitsUntilTheSameDeviceIsLetGoOf) {
  const auto source = custom("videotestsrc is-live=true", "a device");
  CaptureStart first(setup(source), [](handset::Frame) {});
  ASSERT_TRUE(first.wait(10s));
  std::string error;
  std::shared_ptr<handset::Capture> capture = first.take(&error);
  ASSERT_NE(capture, nullptr) << error;
  CaptureStart other(setup(custom("videotestsrc is-live=true", "another device")), [](handset::Frame) {});
  EXPECT_TRUE(other.wait(10s)) << "devices wait for each other";
  CaptureStart second(setup(source), [](handset::Frame) {});
  EXPECT_FALSE(second.wait(500ms)) << "a device was opened twice";
  handset::stop_capture(capture, 5s);
  EXPECT_TRUE(second.wait(10s));
  EXPECT_NE(second.take(&error), nullptr) << error;
}

TEST(Reopening, IsWorthItWhenTheUnitWouldGetSomethingBetter) {
  const auto now = Clock::now();
  const struct {
    Missing how;
    Clock::duration ago;
    const char* candidate;
    bool known;
    bool none;
    bool worth;
  } cases[] = {
      {Missing::stand_in, 0s, "", true, true, false},     {Missing::stand_in, 0s, "b", true, false, true},
      {Missing::not_opened, 9s, "", true, true, true},    {Missing::not_opened, 9s, "", true, false, false},
      {Missing::not_opened, 0s, "a", true, false, true},  {Missing::searching, 0s, "", false, false, false},
      {Missing::searching, 0s, "", true, true, true},     {Missing::lost, 0s, "a", true, false, true},
      {Missing::lost, 1s, "b", true, false, false},       {Missing::lost, 4s, "b", true, false, true},
      {Missing::lost, 60s, "", true, true, false},        {Missing::displaced, 60s, "b", true, false, false},
      {Missing::displaced, 0s, "a", true, false, true},   {Missing::passed_over, 0s, "a", true, false, false},
      {Missing::passed_over, 0s, "b", true, false, true},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(handset::worth_reopening({c.how, "a", now - c.ago}, {c.candidate, c.known, c.none}, now), c.worth)
        << static_cast<int>(c.how) << " " << c.candidate;
  }
}

}  // namespace

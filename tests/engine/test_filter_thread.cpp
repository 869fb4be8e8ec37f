#include "engine/filter_thread.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <iterator>
#include <mutex>
#include <string>
#include <thread>

#include "engine/color_filter.h"
#include "engine/overlay.h"
#include "tests/engine/engine_state.h"
#include "tests/engine/fake_camera.h"
#include "tests/engine/overlay_planes.h"

namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;

constexpr camera_handle_t camera = 7;

class FilterThread : public testing::Test {
 protected:
  void SetUp() override {
    reset_engine();
    fake_camera::reset();
    fake_camera::set_frame(&frame_);
  }
  void TearDown() override {
    reset_engine();
    fake_camera::reset();
  }

  void start() {
    ASSERT_EQ(start_filter_thread(camera), 0);
    ASSERT_TRUE(fake_camera::wait_enabled());
  }

  test_frame frame_{64, 48, 0, 11};
};

void revoke() {
  filter_status_callback(camera, CAMERA_STATUS_RESOURCES_REVOKED, 0, nullptr);
}

std::size_t entries(const char* folder) {
  return static_cast<std::size_t>(
      std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator()));
}

/// Threads that have been joined stay listed for a moment.
std::size_t threads_settled_to(std::size_t expected) {
  for (int i = 0; i < 500 && entries("/proc/self/task") > expected; ++i) std::this_thread::sleep_for(milliseconds(2));
  return entries("/proc/self/task");
}

TEST_F(FilterThread, EditsOneFramePerPulseAndReturnsInputFirst) {
  _cur_camera_filter = 7;
  start();
  test_frame expected = frame_;
  for (std::size_t row = 0; row < 24; ++row) {
    for (std::size_t x = 0; x < 64; ++x) expected.chroma(x, row) = 127;
  }
  ASSERT_EQ(fake_camera::announce(), 0);
  ASSERT_TRUE(fake_camera::wait_returned(1));
  ASSERT_EQ(fake_camera::announce(), 0);
  ASSERT_TRUE(fake_camera::wait_returned(2));
  kill_thread();
  EXPECT_THAT(fake_camera::journal(),
              ElementsAre("enable rw 7", "register 7", "fetch 7", "return input 7", "return output 7", "fetch 7",
                          "return input 7", "return output 7", "disable 7", "deregister 7"));
  EXPECT_TRUE(same_picture(frame_, expected));
}

TEST_F(FilterThread, GivesTheServiceAPulseOfItsOwnChannel) {
  start();
  EXPECT_EQ(filter_sigev.notify, notify_pulse);
  EXPECT_EQ(filter_sigev.code, 123);
  EXPECT_EQ(filter_sigev.value, 0);
  EXPECT_EQ(static_cast<std::int16_t>(filter_sigev.priority), -1);
  EXPECT_EQ(filter_sigev.coid, filter_coid);
  EXPECT_NE(filter_coid & side_channel_index, 0);
  EXPECT_EQ(mHandle, camera);
  EXPECT_FALSE(filter_stop);
  const int chid = filter_chid, coid = filter_coid;
  kill_thread();
  EXPECT_TRUE(filter_stop);
  EXPECT_EQ(ChannelDestroy(chid), -1) << "destroyed with its thread";
  EXPECT_EQ(ConnectDetach(coid), -1) << "destroyed with its thread";
}

TEST_F(FilterThread, StopWhileWaitingFetchesNothing) {
  start();
  kill_thread();
  kill_thread();
  EXPECT_THAT(fake_camera::journal(), ElementsAre("enable rw 7", "register 7", "disable 7", "deregister 7"));
}

TEST_F(FilterThread, RefusedEventEndsTheThreadAndItIsStillJoined) {
  fake_camera::set_enable_result(EBUSY);
  const std::size_t before = entries("/proc/self/task");
  testing::internal::CaptureStderr();
  start();
  EXPECT_EQ(threads_settled_to(before), before) << "ends without being stopped";
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "failed to attach viewfinder read/write event\n");
  EXPECT_FALSE(filter_stop);
  const int chid = filter_chid;
  kill_thread();
  EXPECT_TRUE(filter_stop);
  EXPECT_EQ(ChannelDestroy(chid), -1);
  EXPECT_THAT(fake_camera::journal(), ElementsAre("enable rw 7"));
}

TEST_F(FilterThread, IgnoresOtherPulsesAndFailedFetches) {
  start();
  for (const int code : {122, 124, 0, -5}) ASSERT_EQ(MsgSendPulse(filter_coid, -1, code, 0), 0);
  fake_camera::set_fetch_result(EAGAIN);
  ASSERT_EQ(fake_camera::announce(), 0);
  ASSERT_TRUE(fake_camera::wait_returned(1));
  fake_camera::set_fetch_result(0);
  ASSERT_EQ(fake_camera::announce(), 0);
  ASSERT_TRUE(fake_camera::wait_returned(2));
  kill_thread();
  EXPECT_THAT(fake_camera::journal(), ElementsAre("enable rw 7", "register 7", "fetch 7", "fetch 7", "return input 7",
                                                  "return output 7", "disable 7", "deregister 7"));
}

TEST_F(FilterThread, BrokenFramesAreReturnedUntouchedWithALineEach) {
  _cur_camera_filter = 4;
  fake_camera::set_metadata_size(65536);
  const test_frame before = frame_;
  testing::internal::CaptureStderr();
  start();
  for (int i = 1; i <= 3; ++i) {
    ASSERT_EQ(fake_camera::announce(), 0);
    ASSERT_TRUE(fake_camera::wait_returned(i));
  }
  kill_thread();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "framesize error\nframesize error\nframesize error\n");
  EXPECT_TRUE(same_picture(frame_, before));
}

TEST_F(FilterThread, RevocationStopsItOnce) {
  start();
  testing::internal::CaptureStderr();
  filter_status_callback(camera, static_cast<camera_devstatus_t>(11), 0, nullptr);
  filter_status_callback(camera, CAMERA_STATUS_VIDEO_FINISHED, 0, nullptr);
  EXPECT_FALSE(filter_stop);
  EXPECT_FALSE(_major_error);
  revoke();
  EXPECT_TRUE(_major_error);
  EXPECT_TRUE(filter_stop);
  EXPECT_EQ(filter_chid, -1);
  kill_thread();
  revoke();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Resource are being revoked!\nResource are being revoked!\n");
  EXPECT_THAT(fake_camera::journal(), ElementsAre("enable rw 7", "register 7", "disable 7", "deregister 7"));
}

TEST_F(FilterThread, StartAfterRevocationRunsAgain) {
  testing::internal::CaptureStderr();
  revoke();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Resource are being revoked!\n");
  start();
  ASSERT_EQ(fake_camera::announce(), 0);
  EXPECT_TRUE(fake_camera::wait_returned(1));
}

TEST_F(FilterThread, SecondStartStopsTheFirstThread) {
  start();
  const int first = filter_chid;
  ASSERT_EQ(start_filter_thread(camera + 1), 0);
  EXPECT_NE(filter_chid, first);
  EXPECT_EQ(ChannelDestroy(first), -1);
  kill_thread();
  EXPECT_THAT(fake_camera::journal(), ElementsAre("enable rw 7", "register 7", "disable 7", "deregister 7",
                                                  "enable rw 8", "register 8", "disable 8", "deregister 8"));
}

TEST_F(FilterThread, StartFailsCleanlyWithoutChannels) {
  std::vector<int> channels;
  for (int chid = ChannelCreate(0); chid != -1; chid = ChannelCreate(0)) channels.push_back(chid);
  EXPECT_EQ(start_filter_thread(camera), EMFILE);
  EXPECT_EQ(filter_chid, -1);
  kill_thread();
  for (const int chid : channels) ChannelDestroy(chid);
  EXPECT_THAT(fake_camera::journal(), ElementsAre());
  start();
}

TEST_F(FilterThread, DeadChannelCostsNoCpuAndStillStops) {
  start();
  ASSERT_EQ(ChannelDestroy(filter_chid), 0);
  const std::clock_t before = std::clock();
  std::this_thread::sleep_for(milliseconds(300));
  EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 10);
  kill_thread();
  EXPECT_THAT(fake_camera::journal(), ElementsAre("enable rw 7", "register 7", "disable 7", "deregister 7"));
}

TEST_F(FilterThread, StopsThroughAFullQueue) {
  start();
  std::unique_lock hold(engine_lock());  // the thread takes one pulse and waits here
  while (fake_camera::announce() == 0) {
  }
  std::thread stopper(kill_thread);
  while (!filter_stop) std::this_thread::yield();
  hold.unlock();
  stopper.join();
  EXPECT_EQ(filter_chid, -1);
}

TEST_F(FilterThread, ThousandStartsLeaveNothingBehind) {
  const std::size_t files = entries("/proc/self/fd"), threads = entries("/proc/self/task");
  for (int i = 1; i <= 1000; ++i) {
    ASSERT_EQ(start_filter_thread(camera), 0);
    if (i % 3 == 0) {
      ASSERT_TRUE(fake_camera::wait_enabled());
      fake_camera::announce();
    }
    kill_thread();
    ASSERT_EQ(filter_chid, -1);
  }
  EXPECT_EQ(threads_settled_to(threads), threads);
  EXPECT_EQ(entries("/proc/self/fd"), files);
}

TEST_F(FilterThread, RevocationAndKillRaceAndJoinOnce) {
  testing::internal::CaptureStderr();
  std::string lines;
  for (int i = 0; i < 1000; ++i) {
    ASSERT_EQ(start_filter_thread(camera), 0);
    _major_error = false;
    const auto ended = [] { return filter_chid == -1; };
    std::thread revoker([&] {
      revoke();
      EXPECT_TRUE(ended());
    });
    std::thread closer([&] {
      kill_thread();
      EXPECT_TRUE(ended());
    });
    kill_thread();
    EXPECT_TRUE(ended()) << "whoever comes second returns when the thread is gone";
    revoker.join();
    closer.join();
    EXPECT_TRUE(_major_error);
    lines += "Resource are being revoked!\n";
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), lines);
  const auto calls = fake_camera::journal();
  EXPECT_EQ(std::count(calls.begin(), calls.end(), "enable rw 7"), 1000);
  EXPECT_EQ(std::count(calls.begin(), calls.end(), "deregister 7"), 1000);
}

TEST_F(FilterThread, SettingsMayChangeUnderRunningFrames) {
  start();
  std::atomic<bool> done = false;
  std::thread source([&] {
    for (int i = 1; i <= 400; ++i) {
      fake_camera::announce();
      ASSERT_TRUE(fake_camera::wait_returned(i));
    }
    done = true;
  });
  for (int i = 0; !done; ++i) {
    _cur_camera_filter = i % 13 - 1;
    changeCustomColor(1 + i % 2, static_cast<float>(i % 256));
    changeFilterColor(0.3f + 0.05f * static_cast<float>(i % 10));
    _include_logo = i % 3 != 0;
    _include_logo_original_color = i % 2 != 0;
    const overlay_planes planes(16, 16, static_cast<std::uint32_t>(i));
    {
      const std::lock_guard lock(engine_lock());
      logo_image = datetime_image = planes.record;
    }
    std::this_thread::yield();
    const std::lock_guard lock(engine_lock());
    logo_image = datetime_image = {};
  }
  source.join();
}

}  // namespace

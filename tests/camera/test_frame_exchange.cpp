#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "platform/camera/frame_exchange.h"

using handset::Frame;
using handset::FrameExchange;

namespace {

std::shared_ptr<const GstVideoInfo> small_picture() {
  gst_init(nullptr, nullptr);
  auto info = std::make_shared<GstVideoInfo>();
  gst_video_info_set_format(info.get(), GST_VIDEO_FORMAT_NV12, 18, 10);
  return info;
}

Frame frame_number(std::int64_t number) {
  static const auto info = small_picture();
  return {handset::BufferPtr::adopt(gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(info.get()), nullptr)), info,
          number};
}

class Exchange : public testing::Test {
 protected:
  Exchange() {
    chid_ = ChannelCreate(0);
    coid_ = ConnectAttach(0, 0, chid_, side_channel_index, 0);
    event_ = make_pulse_event(coid_, -1, 7, 0);
  }
  ~Exchange() override {
    ConnectDetach(coid_);
    ChannelDestroy(chid_);
  }

  FrameExchange::Publish collect() {
    return [this](const Frame& frame, std::uint64_t) { published_.push_back(frame.timestamp); };
  }
  /// Fetches and returns one pair. @return its time, or the negative error of fetching
  std::int64_t edit(FrameExchange& exchange) {
    camera_buffer_t input{};
    camera_buffer_t output{};
    if (const int error = exchange.fetch(key_, &input, &output)) return -error;
    EXPECT_EQ(exchange.give_back(input), 0);
    EXPECT_EQ(exchange.give_back(output), 0);
    return output.timestamp;
  }

  int chid_ = -1;
  int coid_ = -1;
  pulse_event_t event_{};
  camera_eventkey_t key_ = 0;
  std::vector<std::int64_t> published_;
};

TEST_F(Exchange, NewestFrameReplacesTheWaitingOneAndIsCounted) {
  FrameExchange exchange(FrameExchange::Pace::drop, FrameExchange::Unedited::publish, collect());
  ASSERT_EQ(exchange.enable(CAMERA_EVENTMODE_READWRITE, &key_, event_), 0);
  for (int i = 1; i <= 5; ++i) exchange.offer(frame_number(i));
  EXPECT_EQ(exchange.replaced(), 3U);
  EXPECT_EQ(edit(exchange), 1);
  EXPECT_EQ(edit(exchange), 5);
  EXPECT_EQ(edit(exchange), -EAGAIN);
  EXPECT_EQ(published_, (std::vector<std::int64_t>{1, 5}));
  EXPECT_EQ(exchange.arrived(), 5U);
  EXPECT_EQ(exchange.edited(), 2U);
  // One notice per pair that could be fetched, and no more.
  pulse_t pulse{};
  EXPECT_EQ(MsgReceivePulse(chid_, &pulse, sizeof pulse, nullptr), 0);
  EXPECT_EQ(MsgReceivePulse(chid_, &pulse, sizeof pulse, nullptr), 0);
  EXPECT_EQ(pulse.code, 7);
  ASSERT_EQ(MsgSendPulse(coid_, -1, 9, 0), 0);
  EXPECT_EQ(MsgReceivePulse(chid_, &pulse, sizeof pulse, nullptr), 0);
  EXPECT_EQ(pulse.code, 9);
}

TEST_F(Exchange, BothDescriptorsShareTheMemoryThatIsPublished) {
  const std::uint8_t* published = nullptr;
  FrameExchange exchange(FrameExchange::Pace::drop, FrameExchange::Unedited::publish,
                         [&](const Frame& frame, std::uint64_t) {
                           GstMapInfo map;
                           ASSERT_TRUE(gst_buffer_map(frame.buffer.get(), &map, GST_MAP_READ));
                           published = map.data;
                           EXPECT_EQ(map.data[0], 0x5A);
                           gst_buffer_unmap(frame.buffer.get(), &map);
                         });
  ASSERT_EQ(exchange.enable(CAMERA_EVENTMODE_READWRITE, &key_, event_), 0);
  exchange.offer(frame_number(1));
  camera_buffer_t input{};
  camera_buffer_t output{};
  ASSERT_EQ(exchange.fetch(key_, &input, &output), 0);
  EXPECT_EQ(input.data, output.data);
  EXPECT_EQ(input.nv12.width, 18U);
  EXPECT_EQ(input.nv12.height, 10U);
  EXPECT_EQ(input.nv12.stride, 20U);  // rows are padded to four bytes, and the descriptor says so
  EXPECT_EQ(input.nv12.uv_offset, 200);
  EXPECT_EQ(input.data_size, 300U);
  output.data[0] = 0x5A;
  const std::uint8_t* data = output.data;
  EXPECT_EQ(exchange.give_back(output), 0);
  EXPECT_EQ(published, nullptr) << "published before both descriptors were back";
  EXPECT_EQ(exchange.give_back(output), EINVAL) << "the same descriptor twice";
  EXPECT_EQ(exchange.give_back(input), 0);
  EXPECT_EQ(published, data);
  EXPECT_EQ(exchange.give_back(input), EINVAL);
}

TEST_F(Exchange, UnpacedSourceWaitsForEditorAndConsumer) {
  FrameExchange exchange(FrameExchange::Pace::wait, FrameExchange::Unedited::publish, collect());
  std::atomic<int> offered = 0;
  std::thread source([&] {
    for (int i = 1; i <= 50; ++i) {
      exchange.offer(frame_number(i));
      offered = i;
    }
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(offered, 0) << "nobody is armed";
  ASSERT_EQ(exchange.enable(CAMERA_EVENTMODE_READWRITE, &key_, event_), 0);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(offered, 0) << "nobody wants frames";
  exchange.set_wanted(true);
  for (int i = 1; i <= 50; ++i) {
    pulse_t pulse{};
    ASSERT_EQ(MsgReceivePulse(chid_, &pulse, sizeof pulse, nullptr), 0);
    ASSERT_EQ(edit(exchange), i);
  }
  source.join();
  EXPECT_EQ(published_.size(), 50U);
  EXPECT_EQ(exchange.replaced(), 0U);
}

TEST_F(Exchange, UnarmedFramesGoThroughAndDisarmingDropsWhatWasAnnounced) {
  FrameExchange exchange(FrameExchange::Pace::drop, FrameExchange::Unedited::publish, collect());
  exchange.offer(frame_number(1));
  EXPECT_EQ(published_, (std::vector<std::int64_t>{1}));
  ASSERT_EQ(exchange.enable(CAMERA_EVENTMODE_READWRITE, &key_, event_), 0);
  camera_eventkey_t second = 0;
  EXPECT_EQ(exchange.enable(CAMERA_EVENTMODE_READWRITE, &second, event_), EBUSY);
  exchange.offer(frame_number(2));
  exchange.offer(frame_number(3));
  EXPECT_EQ(exchange.disable(key_ + 1), EBADF);
  EXPECT_EQ(exchange.disable(key_), 0);
  EXPECT_EQ(edit(exchange), -EBADF);
  ASSERT_EQ(exchange.enable(CAMERA_EVENTMODE_READWRITE, &second, event_), 0);
  EXPECT_NE(second, key_) << "a stale key must not fetch the new one's frames";
  EXPECT_EQ(edit(exchange), -EBADF);
  EXPECT_EQ(published_, (std::vector<std::int64_t>{1}));
}

TEST_F(Exchange, WhereOnlyEditedFramesCountNoOthersComeThrough) {
  FrameExchange exchange(FrameExchange::Pace::drop, FrameExchange::Unedited::drop, collect());
  exchange.offer(frame_number(1));
  ASSERT_EQ(exchange.enable(CAMERA_EVENTMODE_READWRITE, &key_, event_), 0);
  exchange.offer(frame_number(2));
  EXPECT_EQ(edit(exchange), 2);
  EXPECT_EQ(exchange.disable(key_), 0);
  exchange.offer(frame_number(3));
  EXPECT_EQ(published_, (std::vector<std::int64_t>{2}));
}

TEST_F(Exchange, ShuttingFreesTheSourceAndKeepsThePairThatIsOutValid) {
  FrameExchange exchange(FrameExchange::Pace::wait, FrameExchange::Unedited::publish, collect());
  ASSERT_EQ(exchange.enable(CAMERA_EVENTMODE_READWRITE, &key_, event_), 0);
  exchange.set_wanted(true);
  exchange.offer(frame_number(1));
  camera_buffer_t input{};
  camera_buffer_t output{};
  ASSERT_EQ(exchange.fetch(key_, &input, &output), 0);
  std::thread source([&] { exchange.offer(frame_number(2)); });
  exchange.shut();
  source.join();
  EXPECT_FALSE(exchange.wait_idle(std::chrono::milliseconds(20)));
  std::fill_n(output.data, output.data_size, std::uint8_t{1});
  std::thread editor([&] {
    EXPECT_EQ(exchange.give_back(input), 0);
    EXPECT_EQ(exchange.give_back(output), 0);
  });
  EXPECT_TRUE(exchange.wait_idle(std::chrono::seconds(5)));
  editor.join();
  EXPECT_EQ(published_, (std::vector<std::int64_t>{1})) << "the pair that was out still belongs in the film";
}

}  // namespace

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <future>
#include <set>
#include <thread>
#include <vector>

#include "platform/kernel/channel.h"

namespace {

using std::chrono::seconds;

/// A channel with one connection, both gone at the end of the test.
struct endpoint {
  int chid = ChannelCreate(0);
  int coid = ConnectAttach(0, 0, chid, side_channel_index, 0);

  endpoint() = default;
  endpoint(const endpoint&) = delete;
  endpoint& operator=(const endpoint&) = delete;
  ~endpoint() {
    ConnectDetach(coid);
    ChannelDestroy(chid);
  }

  int send(int value, int priority = pulse_priority_inherit) const { return MsgSendPulse(coid, priority, 123, value); }
  pulse_t receive() const {
    pulse_t pulse{};
    EXPECT_EQ(MsgReceivePulse(chid, &pulse, sizeof pulse, nullptr), 0);
    return pulse;
  }
};

#define EXPECT_FAILS(call, error)                    \
  do {                                               \
    errno = 0;                                       \
    EXPECT_EQ((call), -1);                           \
    EXPECT_EQ(errno, error) << "errno of " << #call; \
  } while (false)

TEST(Channel, DeliversEveryFieldOfAPulse) {
  const endpoint end;
  EXPECT_NE(end.coid & side_channel_index, 0);
  ASSERT_EQ(MsgSendPulse(end.coid, 200, -128, INT32_MIN), 0);
  ASSERT_EQ(MsgDeliverEvent(make_pulse_event(end.coid, -1, 127, 77)), 0);

  std::array<unsigned char, sizeof(pulse_t) + 5> room;
  room.fill(0xEE);
  unsigned char* unaligned = room.data() + 1;
  ASSERT_EQ(MsgReceivePulse(end.chid, unaligned, sizeof(pulse_t), nullptr), 0);
  pulse_t pulse;
  std::memcpy(&pulse, unaligned, sizeof pulse);
  EXPECT_EQ(pulse.code, -128);
  EXPECT_EQ(pulse.value, INT32_MIN);
  EXPECT_EQ(pulse.scoid, end.coid);
  EXPECT_EQ(pulse.type, 0);
  EXPECT_EQ(room[0], 0xEE);
  EXPECT_EQ(room[1 + sizeof(pulse_t)], 0xEE) << "sixteen bytes are written, not more";

  pulse = end.receive();
  EXPECT_EQ(pulse.code, 127);
  EXPECT_EQ(pulse.value, 77);
}

TEST(Channel, ReceivesByPriorityThenInTheOrderOfSending) {
  const endpoint end;
  const std::vector<std::pair<int, int>> priority_value = {{1, 0},  {-1, 1}, {10, 2}, {255, 3},
                                                           {-1, 4}, {0, 5},  {11, 6}, {10, 7}};
  for (const auto& [priority, value] : priority_value) ASSERT_EQ(end.send(value, priority), 0);
  std::vector<int> values;
  for (std::size_t i = 0; i < priority_value.size(); ++i) values.push_back(end.receive().value);
  EXPECT_THAT(values, testing::ElementsAre(3, 6, 1, 2, 4, 7, 0, 5));
}

TEST(Channel, IsBoundedAndKeepsWhatItAccepted) {
  const endpoint end;
  for (int round = 0; round < 2; ++round) {
    for (std::size_t i = 0; i < channel_capacity; ++i) ASSERT_EQ(end.send(static_cast<int>(i)), 0);
    EXPECT_FAILS(end.send(-1), EAGAIN);
    for (std::size_t i = 0; i < channel_capacity; ++i) ASSERT_EQ(end.receive().value, static_cast<int>(i));
  }
}

TEST(Channel, RefusesWhatItCannotDo) {
  const endpoint end;
  pulse_t pulse{};
  EXPECT_FAILS(ChannelCreate(1), EINVAL);
  EXPECT_FAILS(ConnectAttach(0, 0, end.chid, 0, 1), EINVAL);
  EXPECT_FAILS(ConnectAttach(1, 0, end.chid, 0, 0), ESRCH);
  EXPECT_FAILS(ConnectAttach(0, 1, end.chid, 0, 0), ESRCH);
  EXPECT_FAILS(MsgSendPulse(end.coid, -2, 0, 0), EINVAL);
  EXPECT_FAILS(MsgSendPulse(end.coid, 256, 0, 0), EINVAL);
  EXPECT_FAILS(MsgSendPulse(end.coid, 0, 128, 0), EINVAL);
  EXPECT_FAILS(MsgSendPulse(end.coid, 0, -129, 0), EINVAL);
  EXPECT_FAILS(MsgReceivePulse(end.chid, &pulse, sizeof pulse - 1, nullptr), EINVAL);
  EXPECT_FAILS(MsgReceivePulse(end.chid, nullptr, sizeof pulse, nullptr), EINVAL);
  pulse_event_t none = make_pulse_event(end.coid, -1, 1, 0);
  none.notify = notify_none;
  EXPECT_FAILS(MsgDeliverEvent(none), EINVAL);
}

TEST(Channel, StaleIdsFailAndReachNobodyElse) {
  const int chid = ChannelCreate(0);
  const int live = ConnectAttach(0, 0, chid, 0, 0);
  const int detached = ConnectAttach(0, 0, chid, 0, 0);
  ASSERT_GT(chid, 0);
  ASSERT_EQ(MsgSendPulse(detached, -1, 1, 42), 0);
  ASSERT_EQ(ConnectDetach(detached), 0);
  EXPECT_FAILS(ConnectDetach(detached), EBADF);
  EXPECT_FAILS(MsgSendPulse(detached, -1, 1, 0), EBADF);
  pulse_t pulse{};
  ASSERT_EQ(MsgReceivePulse(chid, &pulse, sizeof pulse, nullptr), 0) << "queued before the detachment";
  EXPECT_EQ(pulse.value, 42);

  ASSERT_EQ(ChannelDestroy(chid), 0);
  const endpoint next;
  EXPECT_FAILS(ChannelDestroy(chid), ESRCH);
  EXPECT_FAILS(MsgSendPulse(live, -1, 1, 0), ESRCH);
  EXPECT_FAILS(MsgReceivePulse(chid, &pulse, sizeof pulse, nullptr), ESRCH);
  EXPECT_FAILS(ConnectAttach(0, 0, chid, 0, 0), ESRCH);
  EXPECT_EQ(ConnectDetach(live), 0) << "a dead connection still has to be detached";
  EXPECT_FAILS(MsgReceivePulse(0, &pulse, sizeof pulse, nullptr), ESRCH);
  EXPECT_FAILS(MsgSendPulse(-1, -1, 1, 0), EBADF);
}

TEST(Channel, IdsRunOutBeforeTheyRepeat) {
  std::set<int> seen;
  for (int i = 0; i < 2000; ++i) {
    const endpoint end;
    EXPECT_TRUE(seen.insert(end.chid).second);
    EXPECT_TRUE(seen.insert(end.coid).second);
  }
  std::vector<int> channels;
  for (int chid = ChannelCreate(0); chid != -1; chid = ChannelCreate(0)) channels.push_back(chid);
  EXPECT_EQ(errno, EMFILE);
  EXPECT_GE(channels.size(), 64u);
  for (const int chid : channels) EXPECT_EQ(ChannelDestroy(chid), 0);
  const endpoint after;
  EXPECT_GT(after.chid, 0);
}

TEST(Channel, DestructionWakesEveryWaiter) {
  const int chid = ChannelCreate(0);
  const auto wait = [chid] {
    pulse_t pulse;
    return MsgReceivePulse(chid, &pulse, sizeof pulse, nullptr) == -1 ? errno : 0;
  };
  auto first = std::async(std::launch::async, wait);
  auto second = std::async(std::launch::async, wait);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  ASSERT_EQ(ChannelDestroy(chid), 0);
  ASSERT_EQ(first.wait_for(seconds(20)), std::future_status::ready);
  ASSERT_EQ(second.wait_for(seconds(20)), std::future_status::ready);
  EXPECT_EQ(first.get(), ESRCH);
  EXPECT_EQ(second.get(), ESRCH);
}

TEST(Channel, LosesNothingUnderSeveralSendersAndReceivers) {
  constexpr int senders = 4, receivers = 2, each = 20000;
  const endpoint end;
  std::vector<std::thread> threads;
  std::vector<std::atomic<int>> arrivals(senders * each);
  for (int receiver = 0; receiver < receivers; ++receiver) {
    threads.emplace_back([&] {
      std::array<int, senders> last;
      last.fill(-1);
      for (pulse_t pulse = end.receive(); pulse.code != 0; pulse = end.receive()) {
        const int sender = pulse.value / each, number = pulse.value % each;
        EXPECT_LT(last[sender], number) << "one sender's pulses overtook each other";
        last[sender] = number;
        ++arrivals[pulse.value];
      }
    });
  }
  const auto insist = [](int coid, int code, int priority, int value) {
    while (MsgSendPulse(coid, priority, code, value) != 0) {
      ASSERT_EQ(errno, EAGAIN);
      std::this_thread::yield();
    }
  };
  std::vector<std::thread> sending;
  for (int sender = 0; sender < senders; ++sender) {
    sending.emplace_back([&, sender] {
      const int coid = ConnectAttach(0, 0, end.chid, 0, 0);
      for (int i = 0; i < each; ++i) insist(coid, 1, -1, sender * each + i);
      EXPECT_EQ(ConnectDetach(coid), 0);
    });
  }
  for (auto& thread : sending) thread.join();
  for (int receiver = 0; receiver < receivers; ++receiver) insist(end.coid, 0, 0, 0);
  for (auto& thread : threads) thread.join();
  for (const auto& count : arrivals) ASSERT_EQ(count, 1);
}

TEST(Channel, SendingRacesDestruction) {
  for (int i = 0; i < 1000; ++i) {
    const int chid = ChannelCreate(0);
    const int coid = ConnectAttach(0, 0, chid, 0, 0);
    std::thread receiver([chid] {
      pulse_t pulse;
      while (MsgReceivePulse(chid, &pulse, sizeof pulse, nullptr) == 0) {
      }
      EXPECT_EQ(errno, ESRCH);
    });
    std::thread sender([coid] {
      while (MsgSendPulse(coid, -1, 1, 0) == 0 || errno == EAGAIN) {
      }
      EXPECT_EQ(errno, ESRCH);
    });
    EXPECT_EQ(ChannelDestroy(chid), 0);
    receiver.join();
    sender.join();
    EXPECT_EQ(ConnectDetach(coid), 0);
  }
}

}  // namespace

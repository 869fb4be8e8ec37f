#include "platform/kernel/channel.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace {

constexpr std::size_t max_channels = 256;
constexpr std::size_t max_connections = 4096;

struct queued_pulse {
  pulse_t pulse;
  int priority;
  std::uint64_t sequence;
};

/// Heap order: the pulse to receive next is the greatest.
bool received_later(const queued_pulse& a, const queued_pulse& b) {
  return a.priority != b.priority ? a.priority < b.priority : a.sequence > b.sequence;
}

/// A bounded priority queue of pulses. Storage is part of the object, so nothing allocates later.
class channel {
 public:
  int send(const pulse_t& pulse, int priority) {
    {
      const std::lock_guard lock(mutex_);
      if (closed_) return ESRCH;
      if (size_ == channel_capacity) return EAGAIN;
      heap_[size_++] = {pulse, priority, sequence_++};
      std::push_heap(heap_.data(), heap_.data() + size_, received_later);
    }
    arrived_.notify_one();
    return 0;
  }

  int receive(void* pulse) {
    std::unique_lock lock(mutex_);
    arrived_.wait(lock, [this] { return closed_ || size_ > 0; });
    if (closed_) return ESRCH;
    std::pop_heap(heap_.data(), heap_.data() + size_, received_later);
    std::memcpy(pulse, &heap_[--size_].pulse, sizeof(pulse_t));
    return 0;
  }

  void close() {
    {
      const std::lock_guard lock(mutex_);
      closed_ = true;
    }
    arrived_.notify_all();
  }

 private:
  std::mutex mutex_;  ///< guards everything below except arrived_; no other lock is taken while it is held
  std::array<queued_pulse, channel_capacity> heap_{};
  std::size_t size_ = 0;
  std::uint64_t sequence_ = 0;
  bool closed_ = false;
  std::condition_variable arrived_;
};

/// All channels and connections by id. A single counter, never reset, numbers both kinds.
class registry {
 public:
  int add_channel() {
    const std::lock_guard lock(mutex_);
    if (channels_.size() == max_channels || next_id_ == side_channel_index) return fail(EMFILE);
    channels_.emplace(next_id_, std::make_shared<channel>());
    return next_id_++;
  }

  std::shared_ptr<channel> remove_channel(int chid) {
    const std::lock_guard lock(mutex_);
    const auto node = channels_.extract(chid);
    return node ? node.mapped() : nullptr;
  }

  int add_connection(int chid, int id_bits) {
    const std::lock_guard lock(mutex_);
    if (!channels_.contains(chid)) return fail(ESRCH);
    if (connections_.size() == max_connections || next_id_ == side_channel_index) return fail(EMFILE);
    const int coid = next_id_++ | id_bits;
    connections_.emplace(coid, chid);
    return coid;
  }

  bool remove_connection(int coid) {
    const std::lock_guard lock(mutex_);
    return connections_.erase(coid) == 1;
  }

  std::shared_ptr<channel> find_channel(int chid) {
    const std::lock_guard lock(mutex_);
    return find_locked(chid);
  }

  /// @return null, with `error` EBADF (no such connection) or ESRCH (its channel is gone)
  std::shared_ptr<channel> find_peer(int coid, int* error) {
    const std::lock_guard lock(mutex_);
    const auto connection = connections_.find(coid);
    if (connection == connections_.end()) {
      *error = EBADF;
      return nullptr;
    }
    *error = ESRCH;
    return find_locked(connection->second);
  }

  static int fail(int error) {
    errno = error;
    return -1;
  }

 private:
  std::shared_ptr<channel> find_locked(int chid) {
    const auto found = channels_.find(chid);
    return found == channels_.end() ? nullptr : found->second;
  }

  std::mutex mutex_;  ///< guards everything below; no channel's mutex is taken while it is held
  std::unordered_map<int, std::shared_ptr<channel>> channels_;
  std::unordered_map<int, int> connections_;  ///< to the channel's id
  int next_id_ = 1;
};

/// Never destroyed: threads may still wait on their channels during exit.
registry& all() {
  static registry& instance = *new registry;
  return instance;
}

int result(int error) {
  return error == 0 ? 0 : registry::fail(error);
}

}  // namespace

pulse_event_t make_pulse_event(int coid, int priority, int code, int value) {
  return {notify_pulse, static_cast<std::int16_t>(code), coid, static_cast<std::uint16_t>(priority), value};
}

int ChannelCreate(unsigned flags) {
  return flags != 0 ? registry::fail(EINVAL) : all().add_channel();
}

int ChannelDestroy(int chid) {
  const auto removed = all().remove_channel(chid);
  if (!removed) return registry::fail(ESRCH);
  removed->close();
  return 0;
}

int ConnectAttach(std::uint32_t node, int pid, int chid, unsigned index, int flags) {
  if (flags != 0) return registry::fail(EINVAL);
  if (node != 0 || pid != 0) return registry::fail(ESRCH);
  return all().add_connection(chid, static_cast<int>(index & unsigned{side_channel_index}));
}

int ConnectDetach(int coid) {
  return result(all().remove_connection(coid) ? 0 : EBADF);
}

int MsgSendPulse(int coid, int priority, int code, int value) {
  if (code < INT8_MIN || code > INT8_MAX || priority < pulse_priority_inherit || priority > 255) {
    return registry::fail(EINVAL);
  }
  int error = 0;
  const auto peer = all().find_peer(coid, &error);
  if (!peer) return registry::fail(error);
  const pulse_t pulse = {0, 0, static_cast<std::int8_t>(code), {0, 0, 0}, value, coid};
  return result(peer->send(pulse, priority == pulse_priority_inherit ? pulse_priority_default : priority));
}

int MsgDeliverEvent(const pulse_event_t& event) {
  if (event.notify != notify_pulse) return registry::fail(EINVAL);
  return MsgSendPulse(event.coid, static_cast<std::int16_t>(event.priority), event.code, event.value);
}

int MsgReceivePulse(int chid, void* pulse, std::size_t bytes, [[maybe_unused]] void* info) {
  if (pulse == nullptr || bytes < sizeof(pulse_t)) return registry::fail(EINVAL);
  const auto waited_on = all().find_channel(chid);
  return result(waited_on ? waited_on->receive(pulse) : ESRCH);
}

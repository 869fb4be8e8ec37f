#pragma once

// Message channels and pulses: the handset kernel's wake-up primitive.
//
// A channel is a bounded queue of pulses that one thread waits on; connections are the sending ends. Ids are never
// reused, so a call with a stale id fails and cannot reach another channel. All functions are thread-safe. Failures
// return -1 and set errno, like the kernel calls they stand for.

#include <cstddef>
#include <cstdint>

/// Index bit that makes ConnectAttach return ids distinct from file descriptors.
inline constexpr int side_channel_index = 0x40000000;

/// A pulse sent, or an event armed, with this priority is queued at the default one.
inline constexpr int pulse_priority_inherit = -1;
inline constexpr int pulse_priority_default = 10;

/// Capacity of a channel in pulses; sending to a full one fails with EAGAIN.
inline constexpr std::size_t channel_capacity = 1024;

/// What MsgReceivePulse writes: sixteen bytes.
struct pulse_t {
  std::uint16_t type;
  std::uint16_t subtype;
  std::int8_t code;
  std::uint8_t zero[3];
  std::int32_t value;
  std::int32_t scoid;  ///< connection through which the pulse came
};
static_assert(sizeof(pulse_t) == 16);

inline constexpr std::uint16_t notify_none = 0;
inline constexpr std::uint16_t notify_pulse = 4;

/// A notification to be delivered later: which pulse goes through which connection.
struct pulse_event_t {
  std::uint16_t notify;  ///< notify_pulse, or notify_none for "no event"
  std::int16_t code;
  std::int32_t coid;
  std::uint16_t priority;  ///< -1 (inherit) is stored as 0xFFFF
  std::int32_t value;
};

/// Builds a pulse event, which an event's receiver passes to the notifying service.
pulse_event_t make_pulse_event(int coid, int priority, int code, int value);

/// Creates a channel. `flags` must be 0.
/// @return channel id (> 0), or -1 with errno EINVAL (flags), EMFILE (too many channels).
int ChannelCreate(unsigned flags);

/// Destroys a channel: its connections go dead, and a thread waiting on it wakes with ESRCH.
/// @return 0, or -1 with errno ESRCH if there is no such channel.
int ChannelDestroy(int chid);

/// Attaches a connection to a channel of this process (node 0, process 0).
/// @return connection id (> 0, with the side-channel bit when `index` carries it), or -1 with
///         errno ESRCH (no such channel, other node or process), EINVAL (flags), EMFILE.
int ConnectAttach(std::uint32_t node, int pid, int chid, unsigned index, int flags);

/// Detaches a connection; pulses already queued through it stay queued.
/// @return 0, or -1 with errno EBADF if there is no such connection.
int ConnectDetach(int coid);

/// Queues a pulse; never blocks and never allocates. Higher priorities are received first, equal ones in sending order.
/// A pulse whose send returned 0 is received unless its channel is destroyed first.
/// @param code -128..127
/// @return 0, or -1 with errno EBADF (no such connection), ESRCH (its channel is gone),
///         EAGAIN (queue full), EINVAL (code out of range, priority outside -1..255).
int MsgSendPulse(int coid, int priority, int code, int value);

/// Sends the pulse that an event describes. Same results as MsgSendPulse; EINVAL if the event is not a pulse.
int MsgDeliverEvent(const pulse_event_t& event);

/// Waits for the next pulse on a channel.
/// @param pulse  receives sixteen bytes
/// @param bytes  size of that buffer, at least sizeof(pulse_t)
/// @return 0, or -1 with errno ESRCH (no such channel, or destroyed during the wait), EINVAL.
int MsgReceivePulse(int chid, void* pulse, std::size_t bytes, void* info);

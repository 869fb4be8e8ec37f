#include "platform/sound/soundplayer.h"

#include <gst/gst.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include "platform/camera/gst_ptr.h"
#include "platform/device/sandbox.h"
#include "platform/sound/output.h"

namespace {

using handset::ElementPtr;
using handset::MessagePtr;
using std::chrono::milliseconds;

constexpr milliseconds longest_sound{1500};
constexpr std::array<std::string_view, 2> names = {"event_recording_start", "event_recording_stop"};

/// Shared by the playing threads and the callers.
struct Player {
  /// Guards everything here; held for bookkeeping only.
  std::mutex mutex;
  std::condition_variable changed;
  unsigned newest = 0;  ///< number of the sound that may be heard; never 0 again
  int threads = 0;
};

/// Never destroyed: a device may hold a thread after the program ends.
Player& player() {
  static Player& only = *new Player;
  return only;
}

/// Stops playback at exit, and gives it a moment to release the device.
struct AtExit {
  ~AtExit() {
    std::unique_lock lock(player().mutex);
    ++player().newest;
    player().changed.wait_for(lock, milliseconds(200), [] { return player().threads == 0; });
  }
};

bool still_wanted(unsigned number) {
  const std::lock_guard lock(player().mutex);
  return player().newest == number;
}

/// @return empty if there is no such sound
std::string sound_file(const char* name) {
  if (name == nullptr || std::find(names.begin(), names.end(), name) == names.end()) return {};
  const std::string path = find_package_dir() + "/native/assets/sounds/" + name + ".wav";
  std::error_code error;
  return std::filesystem::is_regular_file(path, error) ? path : std::string();
}

int wait_for_end(GstElement* pipeline, unsigned number) {
  const auto bus = handset::BusPtr::adopt(gst_element_get_bus(pipeline));
  const auto ends = static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR);
  const auto deadline = std::chrono::steady_clock::now() + longest_sound;
  while (std::chrono::steady_clock::now() < deadline) {
    const MessagePtr message = MessagePtr::adopt(gst_bus_timed_pop_filtered(bus.get(), 10 * GST_MSECOND, ends));
    if (message) return GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_EOS ? 0 : ENODEV;
    if (!still_wanted(number)) return ECANCELED;
  }
  return ETIMEDOUT;
}

int play(const std::string& path, unsigned number) {
  gst_init(nullptr, nullptr);
  const std::string output = handset::sound_output();
  if (output.empty()) return ENODEV;
  const std::string description = "filesrc name=file ! wavparse ! audioconvert ! audioresample ! " + output;
  const ElementPtr pipeline =
      ElementPtr::adopt(gst_parse_launch_full(description.c_str(), nullptr, GST_PARSE_FLAG_FATAL_ERRORS, nullptr));
  if (!pipeline) return ENODEV;
  g_object_set(ElementPtr::adopt(gst_bin_get_by_name(GST_BIN(pipeline.get()), "file")).get(), "location", path.c_str(),
               nullptr);
  gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
  const int result = wait_for_end(pipeline.get(), number);
  if (result == ENODEV || result == ETIMEDOUT) handset::lose_sound_output();
  gst_element_set_state(pipeline.get(), GST_STATE_NULL);
  return result;
}

/// What a blocking caller waits for.
struct Ending {
  bool over = false;  ///< guarded by the player's mutex, like result
  int result = 0;
};

/// Starts a thread that plays the file. A hanging device blocks only that thread.
std::shared_ptr<Ending> start(std::string path) {
  static const AtExit at_exit;
  auto ending = std::make_shared<Ending>();
  const std::lock_guard lock(player().mutex);
  const unsigned number = ++player().newest;
  ++player().threads;
  std::thread([path = std::move(path), number, ending] {
    const int result = play(path, number);
    const std::lock_guard done(player().mutex);
    *ending = {true, result};
    --player().threads;
    player().changed.notify_all();
  }).detach();
  return ending;
}

}  // namespace

int soundplayer_play_sound_blocking(const char* name) {
  const auto deadline = std::chrono::steady_clock::now() + longest_sound;
  const std::string path = sound_file(name);
  if (path.empty()) return ENOENT;
  const std::shared_ptr<Ending> ending = start(path);
  std::unique_lock lock(player().mutex);
  if (player().changed.wait_until(lock, deadline, [&] { return ending->over; })) return ending->result;
  return ETIMEDOUT;
}

int soundplayer_play_sound(const char* name) {
  const std::string path = sound_file(name);
  if (path.empty()) return ENOENT;
  start(path);
  return 0;
}

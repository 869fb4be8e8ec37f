#include "platform/sound/output.h"

#include <gst/gst.h>

#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <thread>

#include "platform/camera/gst_ptr.h"

namespace handset {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds remembered{10};

struct Finder {
  /// Guards everything here; not held during the device search.
  std::mutex mutex;
  std::condition_variable changed;
  std::string setting = "auto";
  std::string found;
  Clock::time_point valid_until{};
  bool looking = false;
};

/// Never destroyed: a search blocked by a sound server may outlast the program.
Finder& finder() {
  static Finder& only = *new Finder;
  return only;
}

/// ALSA prints pages of errors on a machine without sound cards, so do not ask it there.
bool has_alsa_playback() {
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/dev/snd", error)) {
    const std::string name = entry.path().filename().string();
    if (name.starts_with("pcm") && name.ends_with("p")) return true;
  }
  return false;
}

/// A sink becomes ready once it has opened its device.
bool opens(const std::string& description) {
  const ElementPtr sink =
      ElementPtr::adopt(gst_parse_launch_full(description.c_str(), nullptr, GST_PARSE_FLAG_FATAL_ERRORS, nullptr));
  if (!sink) return false;  // the plugin is not installed
  const bool opened = gst_element_set_state(sink.get(), GST_STATE_READY) == GST_STATE_CHANGE_SUCCESS;
  gst_element_set_state(sink.get(), GST_STATE_NULL);
  return opened;
}

/// Not GStreamer's own choice, which falls back to sinks that only pretend to play.
std::string find_output() {
  gst_init(nullptr, nullptr);
  for (const char* sink : {"pulsesink client-name=Morvane", "alsasink"}) {
    if ((std::string_view(sink) != "alsasink" || has_alsa_playback()) && opens(sink)) return sink;
  }
  return {};
}

void look(Finder* state) {
  std::string found = find_output();
  const std::lock_guard lock(state->mutex);
  state->found = std::move(found);
  state->valid_until = Clock::now() + remembered;
  state->looking = false;
  state->changed.notify_all();
}

}  // namespace

std::string sound_output(std::chrono::milliseconds patience) {
  Finder& state = finder();
  std::unique_lock lock(state.mutex);
  if (state.setting == "none") return {};
  if (state.setting != "auto") return state.setting;
  if (Clock::now() < state.valid_until) return state.found;
  if (!state.looking) {
    state.looking = true;
    std::thread(look, &state).detach();
  }
  return state.changed.wait_for(lock, patience, [&] { return !state.looking; }) ? state.found : std::string();
}

void lose_sound_output() {
  Finder& state = finder();
  const std::lock_guard lock(state.mutex);
  state.found.clear();
  state.valid_until = Clock::now() + remembered;
}

void set_sound_output(const std::string& output) {
  Finder& state = finder();
  const std::lock_guard lock(state.mutex);
  state.setting = output;
  state.valid_until = {};
}

}  // namespace handset

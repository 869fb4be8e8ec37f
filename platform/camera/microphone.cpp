#include "platform/camera/microphone.h"

#include <gst/app/gstappsink.h>

#include <condition_variable>
#include <mutex>
#include <utility>

#include "platform/camera/capture.h"
#include "platform/camera/handover.h"
#include "platform/camera/microphone_finder.h"

namespace handset {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kept_blocks = 1000;
constexpr std::chrono::milliseconds opening_patience{1500};  ///< a sound server usually answers within 200 ms
constexpr std::chrono::milliseconds pause_patience{1000};
constexpr std::chrono::milliseconds stall_patience{3000};  ///< one without a block for this long is opened anew
constexpr std::chrono::milliseconds retry_period{1000};
constexpr std::chrono::milliseconds close_patience{500};

}  // namespace

/// What the thread, the pipeline's callbacks and the handle have in common.
struct Microphone::Shared {
  explicit Shared(std::string name) : setting(std::move(name)) {}

  void run();
  bool record(ElementPtr source);
  ElementPtr build(ElementPtr source, std::string* why);
  void listen(std::unique_lock<std::mutex>& lock);
  void lose(const std::string& why);
  GstFlowReturn take_sample(GstAppSink* sink);
  void take_message(GstMessage* message);

  const std::string setting;
  const Clock::time_point begun = Clock::now();

  mutable std::mutex mutex;  ///< guards the rest; never held while GStreamer is called
  mutable std::condition_variable changed;
  std::deque<Block> blocks;
  Clock::time_point last_block{};
  Clock::time_point closed_at{};
  std::string trouble = "the microphone does not answer";
  bool tried = false;    ///< opening it has failed once
  bool lost = false;     ///< the current pipeline is no good any more
  bool closing = false;  ///< the handle lets go
  bool ended = false;    ///< the thread does nothing more
};

/// The thread: opens what there is, listens as long as it delivers, and tries again.
void Microphone::Shared::run() {
  for (;;) {
    {
      const std::lock_guard lock(mutex);
      lost = false;
    }
    std::string why = "no microphone was found";
    bool delivered = false;
    for (ElementPtr& source : make_microphone_elements(setting, &why)) {
      if (!delivered) delivered = record(std::move(source));
      why.clear();
    }
    if (!why.empty()) lose(why);
    std::unique_lock lock(mutex);
    tried = true;
    if (changed.wait_for(lock, retry_period, [this] { return closing; })) break;
  }
  const std::lock_guard lock(mutex);
  ended = true;
  changed.notify_all();
}

/// Records from one source until it is lost. @return whether it has delivered
bool Microphone::Shared::record(ElementPtr source) {
  std::string why;
  const ElementPtr pipeline = build(std::move(source), &why);
  if (!pipeline) {
    lose(why);
    return false;
  }
  const Clock::time_point opened = Clock::now();
  {
    std::unique_lock lock(mutex);
    if (closing) return false;
    lost = false;
  }
  handed_over(this);
  const bool started = gst_element_set_state(pipeline.get(), GST_STATE_PLAYING) != GST_STATE_CHANGE_FAILURE;
  std::unique_lock lock(mutex);
  if (started) listen(lock);
  const bool delivered = last_block >= opened;
  lock.unlock();
  gst_element_set_state(pipeline.get(), GST_STATE_NULL);
  taken_back(this);
  return delivered;
}

/// Waits until the source is lost, stalls, or is to be closed.
void Microphone::Shared::listen(std::unique_lock<std::mutex>& lock) {
  Clock::time_point since = Clock::now();
  while (!lost && !closing && Clock::now() < since + stall_patience) {
    changed.wait_until(lock, since + stall_patience);
    since = std::max(since, last_block);
  }
  if (!lost && !closing) trouble = "the microphone delivers nothing";
}

ElementPtr Microphone::Shared::build(ElementPtr source, std::string* why) {
  // A description may be faster than time; devices are not, and need not be waited for.
  const std::string tail = std::string("audioconvert ! audioresample ! ") + audio_caps +
                           " ! appsink name=sink enable-last-sample=false max-buffers=64 drop=true sync=" +
                           (setting.starts_with("gst:") ? "true" : "false");
  GError* error = nullptr;
  ElementPtr rest = ElementPtr::adopt(
      gst_parse_bin_from_description_full(tail.c_str(), TRUE, nullptr, GST_PARSE_FLAG_FATAL_ERRORS, &error));
  if (!rest) {
    *why = error->message;
    g_error_free(error);
    return {};
  }
  ElementPtr pipeline = ElementPtr::adopt(gst_pipeline_new(nullptr));
  gst_bin_add_many(GST_BIN(pipeline.get()), source.get(), rest.get(), nullptr);
  if (!gst_element_link(source.get(), rest.get())) {
    *why = "the microphone gives no raw sound";
    return {};
  }
  const auto clock = ObjectPtr<GstClock>::adopt(gst_system_clock_obtain());
  gst_pipeline_use_clock(GST_PIPELINE(pipeline.get()), clock.get());
  const auto sink = ElementPtr::adopt(gst_bin_get_by_name(GST_BIN(pipeline.get()), "sink"));
  GstAppSinkCallbacks callbacks{};
  callbacks.new_sample = [](GstAppSink* from, gpointer self) { return static_cast<Shared*>(self)->take_sample(from); };
  gst_app_sink_set_callbacks(GST_APP_SINK(sink.get()), &callbacks, this, nullptr);
  const auto bus = BusPtr::adopt(gst_element_get_bus(pipeline.get()));
  gst_bus_set_sync_handler(
      bus.get(),
      [](GstBus*, GstMessage* message, gpointer self) {
        static_cast<Shared*>(self)->take_message(message);
        gst_message_unref(message);
        return GST_BUS_DROP;
      },
      this, nullptr);
  return pipeline;
}

void Microphone::Shared::lose(const std::string& why) {
  const std::lock_guard lock(mutex);
  if (!lost) trouble = why;  // the first reason is the cause of the others
  lost = true;
  changed.notify_all();
}

GstFlowReturn Microphone::Shared::take_sample(GstAppSink* sink) {
  const CalledBack scope(this);
  const SamplePtr sample = SamplePtr::adopt(gst_app_sink_pull_sample(sink));
  if (!sample) return GST_FLOW_EOS;
  BufferPtr buffer = BufferPtr::share(gst_sample_get_buffer(sample.get()));
  const GstClockTime running =
      gst_segment_to_running_time(gst_sample_get_segment(sample.get()), GST_FORMAT_TIME, GST_BUFFER_PTS(buffer.get()));
  const GstClockTime base = gst_element_get_base_time(GST_ELEMENT(sink));
  const auto timestamp = GST_CLOCK_TIME_IS_VALID(running) ? static_cast<std::int64_t>(base + running) : monotonic_now();
  const bool broken = GST_BUFFER_FLAG_IS_SET(buffer.get(), GST_BUFFER_FLAG_DISCONT);
  const std::lock_guard lock(mutex);
  last_block = Clock::now();
  trouble.clear();
  if (blocks.size() == kept_blocks) blocks.pop_front();
  blocks.push_back({std::move(buffer), timestamp, broken});
  changed.notify_all();
  return GST_FLOW_OK;
}

void Microphone::Shared::take_message(GstMessage* message) {
  const CalledBack scope(this);
  if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_EOS) lose("the microphone has ended");
  if (GST_MESSAGE_TYPE(message) != GST_MESSAGE_ERROR) return;
  GError* error = nullptr;
  gst_message_parse_error(message, &error, nullptr);
  lose(std::string("the microphone fails (") + error->message + ")");
  g_error_free(error);
}

Microphone::Microphone(std::string setting)
    : shared_(std::make_shared<Shared>(std::move(setting))), thread_([shared = shared_] { shared->run(); }) {}

Microphone::~Microphone() {
  close();
  std::unique_lock lock(shared_->mutex);
  const bool ended =
      shared_->changed.wait_until(lock, shared_->closed_at + close_patience, [this] { return shared_->ended; });
  lock.unlock();
  if (ended) {
    thread_.join();
  } else {
    thread_.detach();
  }
}

void Microphone::close() {
  const std::lock_guard lock(shared_->mutex);
  if (!shared_->closing) shared_->closed_at = Clock::now();
  shared_->closing = true;
  shared_->changed.notify_all();
}

std::deque<Microphone::Block> Microphone::take() {
  const std::lock_guard lock(shared_->mutex);
  return std::exchange(shared_->blocks, {});
}

bool Microphone::wait(Clock::time_point end) const {
  std::unique_lock lock(shared_->mutex);
  return shared_->changed.wait_until(lock, end, [this] { return !shared_->blocks.empty(); });
}

bool Microphone::expected() const {
  const std::lock_guard lock(shared_->mutex);
  const Clock::time_point now = Clock::now();
  if (shared_->closing) return false;
  if (shared_->last_block == Clock::time_point{}) return !shared_->tried && now < shared_->begun + opening_patience;
  return !shared_->lost && now < shared_->last_block + pause_patience;
}

std::string Microphone::trouble() const {
  const std::lock_guard lock(shared_->mutex);
  return shared_->trouble;
}

}  // namespace handset

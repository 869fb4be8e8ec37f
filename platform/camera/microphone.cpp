#include "platform/camera/microphone.h"

#include <gst/app/gstappsink.h>

#include <filesystem>
#include <mutex>
#include <vector>

#include "platform/camera/capture.h"
#include "platform/camera/handover.h"

namespace handset {
namespace {

constexpr GstClockTime start_patience = GST_SECOND;

/// ALSA complains at length on the error stream about a machine without sound cards; it is not asked there.
bool has_alsa_capture() {
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/dev/snd", error)) {
    const std::string name = entry.path().filename().string();
    if (name.starts_with("pcm") && name.ends_with("c")) return true;
  }
  return false;
}

std::vector<std::string> candidates(const std::string& kind) {
  if (kind == "none") return {};
  if (kind == "tone") return {"audiotestsrc is-live=true wave=sine freq=440 volume=0.25 samplesperbuffer=480"};
  std::vector<std::string> sources = {"pulsesrc provide-clock=false client-name=Morvane"};
  if (has_alsa_capture()) sources.emplace_back("alsasrc provide-clock=false");
  return sources;
}

}  // namespace

Microphone::Microphone(Deliver deliver) : deliver_(std::move(deliver)) {}

Microphone::~Microphone() {
  if (pipeline_) gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
  taken_back(this);
}

std::unique_ptr<Microphone> Microphone::start(const std::string& kind, const Deliver& deliver) {
  for (const std::string& source : candidates(kind)) {
    if (auto microphone = try_start(source, deliver)) return microphone;
  }
  return nullptr;
}

bool Microphone::available(const std::string& kind) {
  return start(kind, [](BufferPtr, std::int64_t) {}) != nullptr;
}

std::unique_ptr<Microphone> Microphone::try_start(const std::string& source, Deliver deliver) {
  const std::string description = source + " ! audioconvert ! audioresample ! " + audio_caps +
                                  " ! appsink name=sink sync=false enable-last-sample=false max-buffers=64 drop=true";
  const ElementPtr pipeline =
      ElementPtr::adopt(gst_parse_launch_full(description.c_str(), nullptr, GST_PARSE_FLAG_FATAL_ERRORS, nullptr));
  if (!pipeline) return nullptr;  // the plugin is not installed
  std::unique_ptr<Microphone> microphone(new Microphone(std::move(deliver)));
  microphone->pipeline_ = ElementPtr::share(pipeline.get());
  microphone->sink_ = ElementPtr::adopt(gst_bin_get_by_name(GST_BIN(pipeline.get()), "sink"));
  const auto clock = ObjectPtr<GstClock>::adopt(gst_system_clock_obtain());
  gst_pipeline_use_clock(GST_PIPELINE(pipeline.get()), clock.get());
  GstAppSinkCallbacks callbacks{};
  callbacks.new_sample = [](GstAppSink*, gpointer self) { return static_cast<Microphone*>(self)->take_sample(); };
  gst_app_sink_set_callbacks(GST_APP_SINK(microphone->sink_.get()), &callbacks, microphone.get(), nullptr);
  handed_over(microphone.get());
  if (gst_element_set_state(pipeline.get(), GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE) return nullptr;
  if (gst_element_get_state(pipeline.get(), nullptr, nullptr, start_patience) == GST_STATE_CHANGE_FAILURE)
    return nullptr;
  return microphone;
}

GstFlowReturn Microphone::take_sample() {
  const CalledBack scope(this);
  const SamplePtr sample = SamplePtr::adopt(gst_app_sink_pull_sample(GST_APP_SINK(sink_.get())));
  if (!sample) return GST_FLOW_EOS;
  BufferPtr block = BufferPtr::share(gst_sample_get_buffer(sample.get()));
  const GstClockTime running =
      gst_segment_to_running_time(gst_sample_get_segment(sample.get()), GST_FORMAT_TIME, GST_BUFFER_PTS(block.get()));
  const GstClockTime base = gst_element_get_base_time(sink_.get());
  const auto timestamp = GST_CLOCK_TIME_IS_VALID(running) ? static_cast<std::int64_t>(base + running) : monotonic_now();
  deliver_(std::move(block), timestamp);
  return GST_FLOW_OK;
}

}  // namespace handset

#include "platform/camera/encoder_proof.h"

#include <gst/app/gstappsink.h>
#include <gst/app/gstappsrc.h>
#include <gst/video/video.h>

#include <algorithm>
#include <array>
#include <cstdlib>

#include "platform/camera/colorimetry.h"
#include "platform/camera/gst_ptr.h"

namespace handset {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int proof_frames = 3;
constexpr int speed_frames = 6;
constexpr GstClockTime proof_patience = 4 * GST_SECOND;

bool installed(const char* element) {
  const auto factory = ObjectPtr<GstElementFactory>::adopt(gst_element_factory_find(element));
  return static_cast<bool>(factory);
}

/// The picture of the proof: four luma bars over four chroma bars, far from anything a broken
/// encoder would produce by accident.
void paint_proof(GstVideoFrame* frame) {
  constexpr std::uint8_t luma[4] = {40, 220, 90, 160};
  constexpr std::uint8_t pair[4][2] = {{90, 200}, {200, 90}, {110, 70}, {160, 150}};
  const int width = GST_VIDEO_FRAME_WIDTH(frame);
  for (int row = 0; row < GST_VIDEO_FRAME_HEIGHT(frame); ++row) {
    auto* y =
        static_cast<std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(frame, 0)) + row * GST_VIDEO_FRAME_PLANE_STRIDE(frame, 0);
    auto* uv = static_cast<std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(frame, 1)) +
               row / 2 * GST_VIDEO_FRAME_PLANE_STRIDE(frame, 1);
    for (int x = 0; x < width; ++x) {
      y[x] = luma[x * 4 / width];
      uv[x] = pair[x * 4 / width][x % 2];
    }
  }
}

BufferPtr proof_buffer(const GstVideoInfo& info) {
  BufferPtr buffer = BufferPtr::adopt(gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(&info), nullptr));
  GstVideoFrame frame;
  if (gst_video_frame_map(&frame, &info, buffer.get(), GST_MAP_WRITE)) {
    paint_proof(&frame);
    gst_video_frame_unmap(&frame);
  }
  return buffer;
}

/// Whether the middle of each bar in a decoded NV12 sample has its colour.
bool shows_proof(GstSample* sample, const GstVideoInfo& wanted) {
  GstVideoInfo info;
  if (!gst_video_info_from_caps(&info, gst_sample_get_caps(sample))) return false;
  GstVideoFrame got;
  GstVideoFrame want;
  const BufferPtr reference = proof_buffer(wanted);
  if (!gst_video_frame_map(&got, &info, gst_sample_get_buffer(sample), GST_MAP_READ)) return false;
  bool same = gst_video_frame_map(&want, &wanted, reference.get(), GST_MAP_READ);
  const int width = std::min(GST_VIDEO_INFO_WIDTH(&info), GST_VIDEO_INFO_WIDTH(&wanted));
  for (int bar = 0; same && bar < 4; ++bar) {
    const int x = (width * (2 * bar + 1) / 8) & ~1;
    for (int plane = 0; plane < 2; ++plane) {
      const int row = GST_VIDEO_FRAME_COMP_HEIGHT(&got, plane) / 2;
      const auto at = [&](const GstVideoFrame& frame, int i) {
        const auto* data = static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, plane));
        return static_cast<int>(data[row * GST_VIDEO_FRAME_PLANE_STRIDE(&frame, plane) + x + i]);
      };
      same = same && std::abs(at(got, 0) - at(want, 0)) <= 12 && std::abs(at(got, 1) - at(want, 1)) <= 12;
    }
  }
  gst_video_frame_unmap(&want);
  gst_video_frame_unmap(&got);
  return same;
}

std::string raw_caps(const char* format, camera_res_t size, int frame_rate) {
  return std::string("video/x-raw,format=") + format + ",width=" + std::to_string(size.width) +
         ",height=" + std::to_string(size.height) + ",framerate=" + std::to_string(frame_rate) +
         "/1,pixel-aspect-ratio=1/1,interlace-mode=progressive,colorimetry=" + frame_colorimetry;
}

GstVideoInfo video_info(const std::string& caps) {
  GstVideoInfo info;
  const CapsPtr parsed = CapsPtr::adopt(gst_caps_from_string(caps.c_str()));
  gst_video_info_from_caps(&info, parsed.get());
  return info;
}

/// The colour description that the parser read from the stream.
std::string stream_colorimetry(GstElement* pipeline) {
  const auto parser = ElementPtr::adopt(gst_bin_get_by_name(GST_BIN(pipeline), "parse"));
  const auto pad = ObjectPtr<GstPad>::adopt(gst_element_get_static_pad(parser.get(), "src"));
  const CapsPtr caps = CapsPtr::adopt(gst_pad_get_current_caps(pad.get()));
  const char* text = caps ? gst_structure_get_string(gst_caps_get_structure(caps.get(), 0), "colorimetry") : nullptr;
  return text != nullptr ? text : "";
}

ElementPtr launch(const std::string& description, std::string* reason) {
  GError* error = nullptr;
  ElementPtr pipeline =
      ElementPtr::adopt(gst_parse_launch_full(description.c_str(), nullptr, GST_PARSE_FLAG_FATAL_ERRORS, &error));
  if (!pipeline) {
    *reason = error->message;
    g_error_free(error);
  }
  return pipeline;
}

std::string first_error(GstElement* pipeline) {
  const auto bus = BusPtr::adopt(gst_element_get_bus(pipeline));
  const MessagePtr message = MessagePtr::adopt(gst_bus_pop_filtered(bus.get(), GST_MESSAGE_ERROR));
  if (!message) return "it swallowed frames";
  GError* error = nullptr;
  gst_message_parse_error(message.get(), &error, nullptr);
  const std::string text = error->message;
  g_error_free(error);
  return text;
}

/// Pushes buffers into the pipeline's "in" and collects as many samples from its "out".
/// @param times  gets when each came out; may be null
std::string pass_through(GstElement* pipeline, std::vector<BufferPtr> input, std::vector<SamplePtr>* output,
                         std::vector<Clock::time_point>* times) {
  if (gst_element_set_state(pipeline, GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE) return "it does not start";
  const auto source = ElementPtr::adopt(gst_bin_get_by_name(GST_BIN(pipeline), "in"));
  const auto sink = ElementPtr::adopt(gst_bin_get_by_name(GST_BIN(pipeline), "out"));
  const std::size_t count = input.size();
  for (BufferPtr& buffer : input) gst_app_src_push_buffer(GST_APP_SRC(source.get()), buffer.release());
  gst_app_src_end_of_stream(GST_APP_SRC(source.get()));
  while (output->size() < count) {
    SamplePtr sample = SamplePtr::adopt(gst_app_sink_try_pull_sample(GST_APP_SINK(sink.get()), proof_patience));
    if (!sample) return first_error(pipeline);
    if (times != nullptr) times->push_back(Clock::now());
    output->push_back(std::move(sample));
  }
  return {};
}

/// Stands for footage in the measurement of speed: edges, gradients that move, and a sensor's noise.
/// @param number  of the frame; three different ones in turn
BufferPtr footage_buffer(const GstVideoInfo& info, int number) {
  constexpr std::size_t noise_length = 4096;
  constexpr int noise_strength = 9;
  std::array<std::uint8_t, 2 * noise_length> noise;
  std::uint32_t random = 1 + static_cast<std::uint32_t>(number % 3);
  const auto next = [&random] { return (random = random * 1664525U + 1013904223U) >> 16; };
  for (std::uint8_t& value : noise) value = static_cast<std::uint8_t>(next() % noise_strength);
  BufferPtr buffer = BufferPtr::adopt(gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(&info), nullptr));
  GstVideoFrame frame;
  if (!gst_video_frame_map(&frame, &info, buffer.get(), GST_MAP_WRITE)) return buffer;
  const int width = GST_VIDEO_FRAME_WIDTH(&frame);
  for (int plane = 0; plane < 2; ++plane) {
    for (int row = 0; row < GST_VIDEO_FRAME_COMP_HEIGHT(&frame, plane); ++row) {
      auto* line = static_cast<std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, plane)) +
                   row * GST_VIDEO_FRAME_PLANE_STRIDE(&frame, plane);
      const std::uint8_t* grain = &noise[next() % noise_length];
      const int shift = 3 * (number % 3) + row / 2;
      for (int x = 0; x < width; ++x) {
        const int wave = (x + shift) & 127;
        const int shade = 80 + (wave < 64 ? wave : 127 - wave) + (((x + shift) ^ row) & 32);
        line[x] = static_cast<std::uint8_t>(plane == 0 ? shade + grain[x % static_cast<int>(noise_length)]
                                                       : 120 + grain[x % static_cast<int>(noise_length)] / 2);
      }
    }
  }
  gst_video_frame_unmap(&frame);
  return buffer;
}

std::vector<BufferPtr> proof_frames_of(const GstVideoInfo& info, int frame_rate) {
  const BufferPtr bars = proof_buffer(info);
  const BufferPtr footage[] = {footage_buffer(info, 0), footage_buffer(info, 1), footage_buffer(info, 2)};
  std::vector<BufferPtr> frames;
  for (int i = 0; i < proof_frames + speed_frames; ++i) {
    BufferPtr frame = BufferPtr::adopt(gst_buffer_copy(i < proof_frames ? bars.get() : footage[i % 3].get()));
    const guint64 rate = static_cast<guint64>(frame_rate);
    GST_BUFFER_PTS(frame.get()) = gst_util_uint64_scale(static_cast<guint64>(i), GST_SECOND, rate);
    GST_BUFFER_DURATION(frame.get()) = GST_SECOND / rate;
    frames.push_back(std::move(frame));
  }
  return frames;
}

/// The frames' time in the encoder: between the units that it gives out.
std::chrono::nanoseconds median_gap(std::vector<Clock::time_point> times) {
  std::vector<std::chrono::nanoseconds> gaps;
  for (std::size_t i = proof_frames + 1; i < times.size(); ++i) gaps.push_back(times[i] - times[i - 1]);
  std::nth_element(gaps.begin(), gaps.begin() + static_cast<std::ptrdiff_t>(gaps.size() / 2), gaps.end());
  return gaps[gaps.size() / 2];
}

/// The proof pushed through an encoder: one access unit a frame, as a bare byte stream.
std::string encode_proof(const VideoEncoder& encoder, camera_res_t size, int frame_rate, std::vector<SamplePtr>* units,
                         std::chrono::nanoseconds* frame_time) {
  const std::string caps = raw_caps("NV12", size, frame_rate);
  std::string reason;
  const ElementPtr pipeline = launch(
      "appsrc name=in format=time caps=\"" + caps + "\" ! " + video_encoder_description(encoder, size, frame_rate) +
          " config-interval=-1 ! video/x-h264,stream-format=byte-stream,alignment=au ! appsink name=out sync=false",
      &reason);
  if (!pipeline) return reason;
  const GstVideoInfo info = video_info(caps);
  if (!complete_video_encoder(pipeline.get())) return "its colours cannot be described";
  std::vector<Clock::time_point> times;
  reason = pass_through(pipeline.get(), proof_frames_of(info, frame_rate), units, &times);
  gst_element_set_state(pipeline.get(), GST_STATE_NULL);
  if (!reason.empty()) return reason;
  units->resize(proof_frames);
  *frame_time = median_gap(std::move(times));
  return {};
}

/// What a player that knows only the bare stream makes of it: the colour description and the picture.
std::string check_stream(const std::vector<SamplePtr>& units, const GstVideoInfo& info) {
  const bool decodes = installed("avdec_h264");
  std::string reason;
  const ElementPtr pipeline =
      launch(std::string("appsrc name=in format=time caps=video/x-h264,stream-format=byte-stream,alignment=au ! "
                         "h264parse name=parse ! ") +
                 (decodes ? "avdec_h264 max-threads=1 ! videoconvert ! video/x-raw,format=NV12,colorimetry=" +
                                std::string(frame_colorimetry)
                          : std::string("identity silent=true")) +
                 " ! appsink name=out sync=false",
             &reason);
  if (!pipeline) return reason;
  std::vector<BufferPtr> input;
  for (const SamplePtr& unit : units) input.push_back(BufferPtr::share(gst_sample_get_buffer(unit.get())));
  std::vector<SamplePtr> output;
  reason = pass_through(pipeline.get(), std::move(input), &output, nullptr);
  if (reason.empty() && stream_colorimetry(pipeline.get()) != frame_colorimetry) {
    reason = no_colour_description;
  }
  for (const SamplePtr& sample : output) {
    if (reason.empty() && decodes && !shows_proof(sample.get(), info)) reason = "its picture is wrong";
  }
  gst_element_set_state(pipeline.get(), GST_STATE_NULL);
  return reason;
}

}  // namespace

EncoderProof prove_video_encoder(const VideoEncoder& encoder, camera_res_t size, int frame_rate, bool check) {
  if (!installed(encoder.element.c_str())) return {"not installed", {}};
  EncoderProof proof;
  std::vector<SamplePtr> units;
  proof.reason = encode_proof(encoder, size, frame_rate, &units, &proof.frame_time);
  if (proof.reason.empty() && check) {
    proof.reason = check_stream(units, video_info(raw_caps("NV12", size, frame_rate)));
  }
  return proof;
}

std::optional<VideoEncoder> choose_video_encoder(const std::vector<VideoEncoder>& candidates, const Prover& prove,
                                                 int frame_rate) {
  const std::chrono::nanoseconds limit(static_cast<std::int64_t>(1e9 * share_of_a_frame / frame_rate));
  std::optional<VideoEncoder> fastest;
  std::optional<VideoEncoder> undescribed;
  std::chrono::nanoseconds shortest = std::chrono::nanoseconds::max();
  for (VideoEncoder encoder : candidates) {
    if (encoder.last_resort && fastest) break;
    EncoderProof proof = prove(encoder);
    if (proof.reason == no_colour_description) {
      if (!undescribed) undescribed = encoder;
      encoder.describe = true;
      proof = prove(encoder);
    }
    if (!proof.reason.empty()) continue;
    if (proof.frame_time <= limit) return encoder;
    if (proof.frame_time < shortest) {
      shortest = proof.frame_time;
      fastest = std::move(encoder);
    }
  }
  // Players guess a range where none is written, and some guess wrong: still better than no film.
  return fastest ? fastest : undescribed;
}

}  // namespace handset

#include "platform/camera/encoders.h"

#include <gst/app/gstappsink.h>
#include <gst/app/gstappsrc.h>
#include <gst/video/video.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>

#include "platform/camera/colorimetry.h"
#include "platform/camera/gst_ptr.h"

namespace handset {
namespace {

constexpr int proof_frames = 5;
constexpr char no_colour_description[] = "it does not write the colour description";
constexpr GstClockTime proof_patience = 4 * GST_SECOND;

/// Ceiling of the bit rate, kbit/s: 0.2 bits per pixel and frame, which noise seldom reaches at this quality.
int bit_rate(camera_res_t size, int frame_rate) {
  const double pixels = static_cast<double>(size.width) * size.height;
  return static_cast<int>(std::clamp(pixels * frame_rate * 0.2 / 1000, 1000.0, 60000.0));
}

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
std::string pass_through(GstElement* pipeline, std::vector<BufferPtr> input, std::vector<SamplePtr>* output) {
  if (gst_element_set_state(pipeline, GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE) return "it does not start";
  const auto source = ElementPtr::adopt(gst_bin_get_by_name(GST_BIN(pipeline), "in"));
  const auto sink = ElementPtr::adopt(gst_bin_get_by_name(GST_BIN(pipeline), "out"));
  const std::size_t count = input.size();
  for (BufferPtr& buffer : input) gst_app_src_push_buffer(GST_APP_SRC(source.get()), buffer.release());
  gst_app_src_end_of_stream(GST_APP_SRC(source.get()));
  while (output->size() < count) {
    SamplePtr sample = SamplePtr::adopt(gst_app_sink_try_pull_sample(GST_APP_SINK(sink.get()), proof_patience));
    if (!sample) return first_error(pipeline);
    output->push_back(std::move(sample));
  }
  return {};
}

/// The proof pushed through an encoder: one access unit a frame, as a bare byte stream.
std::string encode_proof(const VideoEncoder& encoder, camera_res_t size, int frame_rate,
                         std::vector<SamplePtr>* units) {
  const std::string caps = raw_caps("NV12", size, frame_rate);
  std::string reason;
  const ElementPtr pipeline = launch(
      "appsrc name=in format=time caps=\"" + caps + "\" ! " + video_encoder_description(encoder, size, frame_rate) +
          " config-interval=-1 ! video/x-h264,stream-format=byte-stream,alignment=au ! appsink name=out sync=false",
      &reason);
  if (!pipeline) return reason;
  const GstVideoInfo info = video_info(caps);
  std::vector<BufferPtr> frames;
  for (int i = 0; i < proof_frames; ++i) {
    BufferPtr buffer = proof_buffer(info);
    const guint64 rate = static_cast<guint64>(frame_rate);
    GST_BUFFER_PTS(buffer.get()) = gst_util_uint64_scale(static_cast<guint64>(i), GST_SECOND, rate);
    GST_BUFFER_DURATION(buffer.get()) = GST_SECOND / rate;
    frames.push_back(std::move(buffer));
  }
  reason = pass_through(pipeline.get(), std::move(frames), units);
  gst_element_set_state(pipeline.get(), GST_STATE_NULL);
  return reason;
}

/// What a player that knows only the bare stream makes of it: the colour description and the picture.
std::string check_stream(const std::vector<SamplePtr>& units, const GstVideoInfo& info) {
  const bool decodes = installed("avdec_h264");
  std::string reason;
  const ElementPtr pipeline = launch(
      std::string("appsrc name=in format=time caps=video/x-h264,stream-format=byte-stream,alignment=au ! "
                  "h264parse name=parse ! ") +
          (decodes ? "avdec_h264 ! videoconvert ! video/x-raw,format=NV12,colorimetry=" + std::string(frame_colorimetry)
                   : std::string("identity silent=true")) +
          " ! appsink name=out sync=false",
      &reason);
  if (!pipeline) return reason;
  std::vector<BufferPtr> input;
  for (const SamplePtr& unit : units) input.push_back(BufferPtr::share(gst_sample_get_buffer(unit.get())));
  std::vector<SamplePtr> output;
  reason = pass_through(pipeline.get(), std::move(input), &output);
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

const std::vector<VideoEncoder>& video_encoder_candidates() {
  static const auto& candidates = *new std::vector<VideoEncoder>{
      {"vah264enc", "NV12", "rate-control=vbr key-int-max=30 b-frames=0", false},
      {"nvh264enc", "NV12", "gop-size=30 bframes=0 zerolatency=true", false},
      {"v4l2h264enc", "NV12", "", false},
      // No look-ahead and no B-frames: what is shown is in the file a moment later, which is what a
      // killed recording loses. Quality is constant; the bit rate only caps noise.
      {"x264enc", "NV12",
       "tune=zerolatency speed-preset=superfast pass=qual quantizer=21 vbv-buf-capacity=1000 key-int-max=30", true},
      {"openh264enc", "I420", "rate-control=bitrate complexity=low gop-size=30", false},
  };
  return candidates;
}

std::string video_encoder_description(const VideoEncoder& encoder, camera_res_t size, int frame_rate) {
  const int kilobits = bit_rate(size, frame_rate);
  std::string text = encoder.format == "NV12" ? "" : "videoconvert ! video/x-raw,format=" + encoder.format + " ! ";
  text += encoder.element + " " + encoder.settings;
  if (encoder.element == "openh264enc") {
    text += " bitrate=" + std::to_string(kilobits * 500);  // bit/s; constant, so half the ceiling
  } else if (encoder.element != "v4l2h264enc") {
    text += " bitrate=" + std::to_string(encoder.constant_quality ? kilobits : kilobits / 2);
  }
  return text + " ! h264parse name=parse";
}

std::string prove_video_encoder(const VideoEncoder& encoder, camera_res_t size, int frame_rate) {
  if (!installed(encoder.element.c_str())) return "not installed";
  std::vector<SamplePtr> units;
  const std::string reason = encode_proof(encoder, size, frame_rate, &units);
  return reason.empty() ? check_stream(units, video_info(raw_caps("NV12", size, frame_rate))) : reason;
}

const VideoEncoder* proven_video_encoder(camera_res_t size, int frame_rate) {
  // Never destroyed, like the candidates: a proof may still run on its own thread while the process ends.
  // The lock guards the proofs, and is held while one runs: a second asker waits for the first's answer.
  static auto& mutex = *new std::mutex;
  static auto& proofs = *new std::map<std::pair<std::uint64_t, int>, const VideoEncoder*>;
  const std::lock_guard lock(mutex);
  const auto key = std::make_pair(static_cast<std::uint64_t>(size.width) << 32 | size.height, frame_rate);
  const auto known = proofs.find(key);
  if (known != proofs.end()) return known->second;
  const VideoEncoder* second_best = nullptr;
  for (const VideoEncoder& encoder : video_encoder_candidates()) {
    const std::string reason = prove_video_encoder(encoder, size, frame_rate);
    if (reason.empty()) return proofs[key] = &encoder;
    // Players guess a range then, and some guess wrong: still better than no film.
    if (second_best == nullptr && reason == no_colour_description) second_best = &encoder;
  }
  return proofs[key] = second_best;
}

std::string audio_encoder_description() {
  for (const char* element : {"fdkaacenc", "avenc_aac", "voaacenc"}) {
    if (installed(element)) return std::string("audioconvert ! ") + element + " bitrate=128000 ! aacparse";
  }
  return {};
}

}  // namespace handset

#include "platform/camera/encoders.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <mutex>
#include <thread>

#include "platform/camera/encoder_proof.h"
#include "platform/camera/gst_ptr.h"
#include "platform/camera/h264_description.h"

namespace handset {
namespace {

/// Ceiling of the bit rate, kbit/s: 0.2 bits per pixel and frame, which noise seldom reaches at this quality.
int bit_rate(camera_res_t size, int frame_rate) {
  const double pixels = static_cast<double>(size.width) * size.height;
  return static_cast<int>(std::clamp(pixels * frame_rate * 0.2 / 1000, 1000.0, 60000.0));
}

/// The level that a driver is asked for: some know only a low one by themselves. ITU-T H.264, table A-1.
const char* level_for(camera_res_t size, int frame_rate) {
  struct Level {
    const char* name;
    std::uint64_t blocks_per_second;
    std::uint64_t blocks;
  };
  constexpr Level levels[] = {
      {"3.1", 108000, 3600}, {"4", 245760, 8192}, {"4.2", 522240, 8704}, {"5.1", 983040, 36864}};
  const std::uint64_t blocks = ((size.width + 15ULL) / 16) * ((size.height + 15ULL) / 16);
  for (const Level& level : levels) {
    if (blocks <= level.blocks && blocks * static_cast<std::uint64_t>(frame_rate) <= level.blocks_per_second) {
      return level.name;
    }
  }
  return "5.2";
}

/// What the encoders agree on, each in its own words: the bit rate, and a keyframe a second.
std::string rate_settings(const VideoEncoder& encoder, camera_res_t size, int frame_rate) {
  const int kilobits = bit_rate(size, frame_rate);
  const std::string keyframes = std::to_string(frame_rate);
  if (encoder.element == "openh264enc") {
    // bit/s; constant, so half the ceiling
    return " bitrate=" + std::to_string(kilobits * 500) + " gop-size=" + keyframes;
  }
  if (encoder.element == "v4l2h264enc") {
    return " extra-controls=\"controls,video_bitrate=" + std::to_string(kilobits * 500) +
           ",video_gop_size=" + keyframes + ",h264_i_frame_period=" + keyframes +
           ",video_b_frames=0,repeat_sequence_header=1\" ! video/x-h264,level=(string)" + level_for(size, frame_rate);
  }
  const std::string rate = " bitrate=" + std::to_string(encoder.constant_quality ? kilobits : kilobits / 2);
  return rate + (encoder.element == "nvh264enc" ? " gop-size=" : " key-int-max=") + keyframes;
}

/// A slice for each core, which more than eight would only make worse.
std::string slices() {
  return " threads=" + std::to_string(std::clamp(std::thread::hardware_concurrency(), 1U, 8U));
}

struct Choice {
  std::mutex mutex;  ///< guards the rest, and is held while encoders are proven
  std::vector<VideoEncoder> candidates;
  std::map<std::pair<std::uint64_t, int>, std::optional<VideoEncoder>> proven;
};

Choice& choice() {
  // Never destroyed: a proof may still run on its own thread while the process ends.
  static auto& instance = *new Choice{{}, video_encoder_candidates(), {}};
  return instance;
}

}  // namespace

std::vector<VideoEncoder> video_encoder_candidates() {
  // No look-ahead and no B-frames: what is shown is in the file a moment later, which is what a killed recording
  // loses. Quality is constant; the bit rate only caps noise. Whatever stands in the parameter sets is named, so that
  // a row may follow another in the middle of a film.
  const std::string x264 = "tune=zerolatency pass=qual vbv-buf-capacity=1000" + slices();
  const std::string sets = "stitchable=1:cabac=1:8x8dct=1:weightp=0:scenecut=0:ref=1";
  const std::string light = " speed-preset=ultrafast option-string=\"" + sets + ":no-deblock=0:deblock=0,0\"";
  return {
      {"vah264enc", "NV12", "rate-control=vbr b-frames=0", false},
      {"vah264lpenc", "NV12", "rate-control=vbr b-frames=0", false},
      {"nvh264enc", "NV12", "bframes=0 zerolatency=true", false},
      {"v4l2h264enc", "NV12", "", false},
      {"x264enc", "NV12", x264 + " quantizer=21 speed-preset=superfast option-string=\"" + sets + "\"", true},
      {"x264enc", "NV12", x264 + " quantizer=21" + light, true},
      {"x264enc", "NV12", x264 + " quantizer=27" + light, true},
      {"openh264enc", "I420", "rate-control=bitrate complexity=low", false, true},
  };
}

void use_video_encoders(std::vector<VideoEncoder> candidates) {
  const std::lock_guard lock(choice().mutex);
  choice().candidates = candidates.empty() ? video_encoder_candidates() : std::move(candidates);
  choice().proven.clear();
}

std::string video_encoder_element(const VideoEncoder& encoder, camera_res_t size, int frame_rate) {
  return encoder.element + " name=encoder " + encoder.settings + rate_settings(encoder, size, frame_rate);
}

std::string video_encoder_description(const VideoEncoder& encoder, camera_res_t size, int frame_rate) {
  std::string text = encoder.format == "NV12" ? "" : "videoconvert ! video/x-raw,format=" + encoder.format + " ! ";
  text += video_encoder_element(encoder, size, frame_rate);
  if (encoder.describe) {
    text += " ! h264parse name=bare config-interval=-1 ! video/x-h264,stream-format=byte-stream,alignment=au";
  }
  return text + " ! h264parse name=parse";
}

bool complete_video_encoder(GstElement* pipeline) {
  const auto bare = ElementPtr::adopt(gst_bin_get_by_name(GST_BIN(pipeline), "bare"));
  if (!bare) return true;
  const auto pad = ObjectPtr<GstPad>::adopt(gst_element_get_static_pad(bare.get(), "src"));
  return describe_colours(pad.get());
}

int nominal_rate(int numerator, int denominator) {
  return std::max(1, static_cast<int>(std::lround(static_cast<double>(numerator) / denominator)));
}

std::optional<VideoEncoder> proven_video_encoder(camera_res_t size, int frame_rate) {
  const std::lock_guard lock(choice().mutex);
  const auto key = std::make_pair(static_cast<std::uint64_t>(size.width) << 32 | size.height, frame_rate);
  const auto known = choice().proven.find(key);
  if (known != choice().proven.end()) return known->second;
  // Rows of one element differ in their speed.
  std::string checked;
  const Prover prove = [&](const VideoEncoder& encoder) {
    const EncoderProof proof = prove_video_encoder(encoder, size, frame_rate, encoder.element != checked);
    if (proof.reason.empty()) checked = encoder.element;
    return proof;
  };
  return choice().proven[key] = choose_video_encoder(choice().candidates, prove, frame_rate);
}

std::optional<VideoEncoder> lighter_video_encoder(const VideoEncoder& encoder) {
  const std::lock_guard lock(choice().mutex);
  bool passed = false;
  for (VideoEncoder candidate : choice().candidates) {
    const bool same = candidate.element == encoder.element && candidate.format == encoder.format;
    if (passed && same) {
      candidate.describe = encoder.describe;
      return candidate;
    }
    passed = passed || (same && candidate.settings == encoder.settings);
  }
  return {};
}

}  // namespace handset

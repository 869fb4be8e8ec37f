#pragma once

#include <string>
#include <vector>

#include "platform/camera/camera.h"

namespace handset {

/// One way to encode, as the middle of a pipeline description.
struct VideoEncoder {
  std::string element;    ///< GStreamer element factory
  std::string format;     ///< raw format that it takes: NV12, or I420 after a conversion
  std::string settings;   ///< properties, without the bit rate
  bool constant_quality;  ///< bit rate is only a ceiling
};

/// The encoders worth trying, best first: hardware, then software.
const std::vector<VideoEncoder>& video_encoder_candidates();

/// Description from raw frames to parsed H.264, for a picture size and rate.
std::string video_encoder_description(const VideoEncoder& encoder, camera_res_t size, int frame_rate);

/// Encodes a few frames of a known picture at this size, and checks that every one comes out as
/// H.264, carries the frames' colour description, and decodes to the picture again. Takes a few
/// hundred milliseconds at most for a working encoder; an encoder that stays silent is given up after 4 s.
/// @return empty, or why the encoder is not to be trusted
std::string prove_video_encoder(const VideoEncoder& encoder, camera_res_t size, int frame_rate);

/// The first candidate that proves itself at this size; one that only fails to describe its colours is
/// taken when no other works. Proofs are kept for the life of the process.
/// @return null when none works
const VideoEncoder* proven_video_encoder(camera_res_t size, int frame_rate);

/// Description from raw sound to parsed AAC; empty when no AAC encoder is installed.
std::string audio_encoder_description();

}  // namespace handset

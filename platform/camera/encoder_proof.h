#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/camera/encoders.h"

namespace handset {

/// The reason of an encoder that works, but whose stream leaves the colours to be guessed.
inline constexpr char no_colour_description[] = "it does not write the colour description";

/// Of the time between two frames, what encoding one may take: the picture has to be made as well.
inline constexpr double share_of_a_frame = 0.85;

struct EncoderProof {
  std::string reason;                   ///< empty, or why the encoder is not to be trusted
  std::chrono::nanoseconds frame_time;  ///< that a frame of footage takes it, as busy as the machine is
};

/// Encodes a few frames of a known picture at this size, and checks that every one comes out as
/// H.264, carries the frames' colour description, and decodes to the picture again; then a few frames of what stands
/// for footage, whose time counts. Takes a few hundred milliseconds at 1080p; an encoder that stays silent is given up
/// after 4 s.
/// @param check  false: only the time counts
EncoderProof prove_video_encoder(const VideoEncoder& encoder, camera_res_t size, int frame_rate, bool check = true);

/// Proves one encoder; prove_video_encoder at a size.
using Prover = std::function<EncoderProof(const VideoEncoder&)>;

/// The first candidate that works and keeps up with the frame rate, else the fastest that works; a last resort where
/// nothing else works. One that leaves the colour description out is proven once more with it written in, and taken
/// without when nothing else works.
std::optional<VideoEncoder> choose_video_encoder(const std::vector<VideoEncoder>& candidates, const Prover& prove,
                                                 int frame_rate);

}  // namespace handset

#pragma once

#include <gst/gst.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/camera/camera.h"

namespace handset {

/// One way to encode, as the middle of a pipeline description.
struct VideoEncoder {
  std::string element;       ///< GStreamer element factory
  std::string format;        ///< raw format that it takes: NV12, or I420 after a conversion
  std::string settings;      ///< properties, without bit rate and distance of keyframes
  bool constant_quality;     ///< bit rate is only a ceiling
  bool last_resort = false;  ///< not tried where another one works
  bool describe = false;     ///< the colour description, which it leaves out, is written into its stream
};

/// The encoders worth trying, best first: hardware, then software. Where one element stands in several rows, each row
/// costs less than the one before, and all write the same parameter sets.
std::vector<VideoEncoder> video_encoder_candidates();

/// Replaces the candidates, for tests, and forgets what was proven. An empty list brings the usual ones back.
void use_video_encoders(std::vector<VideoEncoder> candidates);

/// The encoder's element, named "encoder", with everything set for a picture size and rate.
std::string video_encoder_element(const VideoEncoder& encoder, camera_res_t size, int frame_rate);

/// Description from raw frames to parsed H.264. The pipeline made of it needs complete_video_encoder().
std::string video_encoder_description(const VideoEncoder& encoder, camera_res_t size, int frame_rate);

/// Adds to a pipeline what its description cannot say. @return false when that cannot be done
bool complete_video_encoder(GstElement* pipeline);

/// A frame rate as encoders are asked for: frames per second, rounded, at least 1.
int nominal_rate(int numerator, int denominator);

/// The encoder to use (choose_video_encoder). Kept for the life of the process; a second asker waits for the first's.
/// @return nothing when none works
std::optional<VideoEncoder> proven_video_encoder(camera_res_t size, int frame_rate);

/// The next row of the same element.
std::optional<VideoEncoder> lighter_video_encoder(const VideoEncoder& encoder);

/// Puts another row's element in the place of a running pipeline's "encoder", between two frames; the new one begins
/// with a keyframe. The encoder must not hold frames back. Any thread.
/// @return false, with nothing changed, when there is no such element
bool replace_video_encoder(GstElement* pipeline, const VideoEncoder& encoder, camera_res_t size, int frame_rate);

}  // namespace handset

#pragma once

#include <gst/video/video.h>

namespace handset {

/// Stretches a limited-range (16..235, chroma 16..240) NV12 picture to full range in place: luma
/// (Y - 16) * 255 / 219, chroma 128 + (C - 128) * 255 / 224, rounded and clamped to a byte.
void expand_range(GstVideoFrame* frame);

}  // namespace handset

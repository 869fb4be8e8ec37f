#pragma once

#include <gst/video/video.h>

namespace handset {

/// Declares limited-range BT.601, at any size, for a camera that does not name its colors, by changing the caps event.
/// GStreamer would assume HDTV's BT.709 for large ones. Streaming thread.
/// @param info of a probe on a caps event
/// @param input the event's video info; updated to the changed one's
void assume_camera_colors(GstPadProbeInfo* info, GstVideoInfo* input);

/// Between two BT.601 formats GStreamer's converter takes shortcuts that ignore the range, which would leave
/// limited-range pictures washed out. This changes their caps event at the converter to claim full range; the converted
/// pictures then must be stretched with expand_range. Streaming thread.
/// @param info of a probe on the caps event
/// @return whether it was changed
bool claim_full_range(GstPadProbeInfo* info, const GstVideoInfo& input);

/// A probe for pads between container and stream, in either direction: leaves the color description to the stream.
/// GStreamer 1.22's demuxer misreads the range in an MP4 file and lets it override the stream.
GstPadProbeReturn drop_container_colours(GstPad* pad, GstPadProbeInfo* info, gpointer unused);

/// Stretches a limited-range (16..235, chroma 16..240) NV12 picture to full range in place: luma
/// (Y - 16) * 255 / 219, chroma 128 + (C - 128) * 255 / 224, rounded and clamped to a byte.
void expand_range(GstVideoFrame* frame);

}  // namespace handset

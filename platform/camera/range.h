#pragma once

#include <gst/video/video.h>

namespace handset {

/// A camera that does not name its colors has limited-range BT.601, at any size: a caps event that brings its pictures
/// is changed to say so. GStreamer would take HDTV's BT.709 for large ones. Streaming thread.
/// @param info   of a probe that is looking at the caps event
/// @param input  what the event says, and then what the changed one says
void assume_camera_colors(GstPadProbeInfo* info, GstVideoInfo* input);

/// Between two BT.601 formats GStreamer's converter takes shortcuts that forget the range: limited-range pictures would
/// come out grey. So a caps event that brings such pictures to the converter is changed to say that they are full range
/// already; the converted pictures then have to be stretched with expand_range. Streaming thread.
/// @param info  of a probe that is looking at the caps event
/// @return whether it was changed
bool claim_full_range(GstPadProbeInfo* info, const GstVideoInfo& input);

/// A probe for pads between container and stream, on either way: leaves the colour description to the stream. GStreamer
/// 1.22's demuxer reads the range wrongly from an MP4 file, and lets that overrule the stream.
GstPadProbeReturn drop_container_colours(GstPad* pad, GstPadProbeInfo* info, gpointer unused);

/// Stretches a limited-range (16..235, chroma 16..240) NV12 picture to full range in place: luma
/// (Y - 16) * 255 / 219, chroma 128 + (C - 128) * 255 / 224, rounded and clamped to a byte.
void expand_range(GstVideoFrame* frame);

}  // namespace handset

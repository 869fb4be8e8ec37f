#pragma once

#include <gst/gst.h>

namespace handset {

/// Writes the frames' colour description into the H.264 that leaves a pad: byte stream, one access unit a buffer, with
/// its parameter sets. The pixels' coding is not touched. What cannot be read passes as it is.
/// @return false when this libavcodec cannot do it
bool describe_colours(GstPad* pad);

}  // namespace handset

#pragma once

namespace handset {

/// Color description of every frame, in GStreamer's range:matrix:transfer:primaries notation: full range, BT.601
/// matrix, transfer and primaries, as the engine's formulas assume.
inline constexpr char frame_colorimetry[] = "1:4:16:4";

}  // namespace handset

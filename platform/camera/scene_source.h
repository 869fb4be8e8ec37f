#pragma once

namespace handset {

/// Makes the element "morvanescene" known to GStreamer in this process: a live source of the built-in
/// scene, NV12 full-range BT.601, any even size from 16 x 16, any frame rate. Idempotent, any thread.
void register_scene_source();

}  // namespace handset

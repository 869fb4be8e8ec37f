#pragma once

#include <cstdint>
#include <memory>

#include "platform/camera/frame.h"
#include "platform/camera/scene_painter.h"

/// Makes frames of the built-in scene. Initializes GStreamer.
class SceneFrames {
 public:
  SceneFrames(int width, int height);

  const std::shared_ptr<const GstVideoInfo>& info() const { return info_; }
  /// Frame `number`, with a time of its own.
  handset::Frame make(std::uint64_t number, std::int64_t timestamp) const;

 private:
  std::shared_ptr<const GstVideoInfo> info_;
  handset::ScenePainter painter_;
};

// Runs a clip once through the capture pipeline and the per-frame steps, without an encoder: a whole process whose
// CPU time, less that of the same process without the steps, is what the filters cost.
// Usage: filter_clip CLIP [TEXTURE]      TEXTURE: with the red filter, that overlay and a stamp; else untouched

#include <gst/gst.h>

#include <cstdio>
#include <string>

#include "engine/color_filter.h"
#include "engine/filter_thread.h"
#include "engine/overlay_loader.h"
#include "engine/stamp.h"
#include "platform/camera/capture.h"
#include "platform/camera/frame_exchange.h"

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fputs("usage: filter_clip CLIP [TEXTURE]\n", stderr);
    return 1;
  }
  gst_init(&argc, &argv);
  handset::CameraServiceConfig config;
  config.rear = std::string("clip:") + argv[1];
  handset::Source source;
  if (handset::resolve_source(config, CAMERA_UNIT_REAR, &source) != 0) return 1;
  const camera_res_t size = source.sizes.front();
  const bool filters = argc > 2;
  if (filters) {
    _screen_wid = static_cast<int>(size.width);
    _screen_hi = static_cast<int>(size.height);
    _cur_camera_filter = 11;
    filter_init(0.5, filter_match_red);
    if (logo_load_image(0, 0, argv[2], true) != 0) return 1;
    if (!generate_datetime({1, 5, 4}, 1'800'000'000, load_datetime_template(5))) {
      std::fputs("no stamp: run from the folder that holds app/\n", stderr);
      return 1;
    }
  }
  int frames = 0;
  std::string error;
  const auto capture = handset::Capture::start(
      {{std::shared_ptr<const handset::Source>(), &source}, size, 30, true},
      [&](const handset::Frame& frame) {
        ++frames;
        GstVideoFrame mapped;
        if (!filters || !handset::map_frame(frame, GST_MAP_READWRITE, &mapped)) return;
        const camera_buffer_t buffer = handset::describe_frame(mapped, frame.timestamp);
        process_frame(buffer, buffer);
        gst_video_frame_unmap(&mapped);
      },
      &error);
  if (capture == nullptr) {
    std::fprintf(stderr, "%s\n", error.c_str());
    return 1;
  }
  handset::Capture::Event event = handset::Capture::Event::none;
  while (event == handset::Capture::Event::none) event = capture->poll(std::chrono::milliseconds(1000));
  std::printf("%d frames\n", frames);
  return event == handset::Capture::Event::ended ? 0 : 1;
}

#include "tests/support/film.h"

#include <gst/app/gstappsink.h>
#include <gst/gst.h>
#include <gst/video/video.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "platform/camera/gst_ptr.h"
#include "platform/camera/scene_painter.h"

namespace film {
namespace {

using handset::ElementPtr;
using handset::SamplePtr;

std::vector<std::uint8_t> plane(const GstVideoFrame& frame, int index, int rows) {
  const auto* data = static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, index));
  const int width = GST_VIDEO_FRAME_WIDTH(&frame);
  std::vector<std::uint8_t> bytes;
  for (int row = 0; row < rows; ++row) {
    const std::uint8_t* line = data + static_cast<std::ptrdiff_t>(row) * GST_VIDEO_FRAME_PLANE_STRIDE(&frame, index);
    bytes.insert(bytes.end(), line, line + width);
  }
  return bytes;
}

void take_picture(GstSample* sample, Film* film) {
  GstVideoInfo info;
  GstVideoFrame frame;
  if (!gst_video_info_from_caps(&info, gst_sample_get_caps(sample))) return;
  GstBuffer* buffer = gst_sample_get_buffer(sample);
  if (!gst_video_frame_map(&frame, &info, buffer, GST_MAP_READ)) return;
  film->pictures.push_back({static_cast<std::int64_t>(GST_BUFFER_PTS(buffer)), GST_VIDEO_INFO_WIDTH(&info),
                            GST_VIDEO_INFO_HEIGHT(&info), plane(frame, 0, GST_VIDEO_INFO_HEIGHT(&info)),
                            plane(frame, 1, GST_VIDEO_INFO_HEIGHT(&info) / 2)});
  gst_video_frame_unmap(&frame);
}

void take_sound(GstSample* sample, Film* film) {
  GstBuffer* buffer = gst_sample_get_buffer(sample);
  GstMapInfo map;
  if (!gst_buffer_map(buffer, &map, GST_MAP_READ)) return;
  const auto* samples = reinterpret_cast<const float*>(map.data);
  const auto first = static_cast<gsize>(gst_util_uint64_scale_round(GST_BUFFER_PTS(buffer), 48000, GST_SECOND));
  for (gsize i = 0; i < map.size / sizeof(float); ++i) {
    const float level = std::fabs(samples[i]);
    const gsize window = (first + i / 2) / 480;
    if (film->sound.size() <= first + i / 2) film->sound.resize(first + i / 2 + 1);
    if (i % 2 == 0) film->sound[first + i / 2] = samples[i];
    if (film->levels.size() <= window) film->levels.resize(window + 1);
    film->levels[window] = std::max(film->levels[window], level);
    film->sound_peak = std::max(film->sound_peak, static_cast<double>(level));
  }
  film->sound_ns = static_cast<std::int64_t>(GST_BUFFER_PTS(buffer) + GST_BUFFER_DURATION(buffer));
  gst_buffer_unmap(buffer, &map);
}

/// What the tags that came before the pictures say; "rotate-0" is the same as nothing.
std::string orientation_of(GstElement* sink) {
  const auto pad = handset::ObjectPtr<GstPad>::adopt(gst_element_get_static_pad(sink, "sink"));
  std::string orientation;
  for (guint i = 0; GstEvent* event = gst_pad_get_sticky_event(pad.get(), GST_EVENT_TAG, i); ++i) {
    GstTagList* tags = nullptr;
    gst_event_parse_tag(event, &tags);
    char* text = nullptr;
    if (gst_tag_list_get_string(tags, GST_TAG_IMAGE_ORIENTATION, &text)) orientation = text;
    g_free(text);
    gst_event_unref(event);
  }
  return orientation == "rotate-0" ? "" : orientation;
}

/// Runs one track through `tail` into `take`.
template <typename Take>
void play_track(const std::string& path, const std::string& tail, Film* film, Take take) {
  GError* problem = nullptr;
  const ElementPtr pipeline = ElementPtr::adopt(gst_parse_launch(
      ("filesrc name=file ! qtdemux name=demux demux." + tail + " ! appsink name=sink sync=false").c_str(), &problem));
  if (!pipeline) {
    film->error = problem->message;
    g_error_free(problem);
    return;
  }
  g_object_set(ElementPtr::adopt(gst_bin_get_by_name(GST_BIN(pipeline.get()), "file")).get(), "location", path.c_str(),
               nullptr);
  const ElementPtr sink = ElementPtr::adopt(gst_bin_get_by_name(GST_BIN(pipeline.get()), "sink"));
  gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
  for (;;) {
    const SamplePtr sample = SamplePtr::adopt(gst_app_sink_try_pull_sample(GST_APP_SINK(sink.get()), 10 * GST_SECOND));
    if (!sample) break;
    take(sample.get(), film);
  }
  film->orientation += orientation_of(sink.get());
  const auto bus = handset::BusPtr::adopt(gst_element_get_bus(pipeline.get()));
  const auto error = handset::MessagePtr::adopt(gst_bus_pop_filtered(bus.get(), GST_MESSAGE_ERROR));
  if (error || !gst_app_sink_is_eos(GST_APP_SINK(sink.get()))) film->error = "does not play to its end";
  gst_element_set_state(pipeline.get(), GST_STATE_NULL);
}

std::string output_of(const std::string& command) {
  std::string text;
  std::FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return text;
  for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) text.push_back(static_cast<char>(c));
  pclose(pipe);
  return text;
}

}  // namespace

std::uint8_t Picture::y(int column, int row) const {
  return luma[static_cast<std::size_t>(row) * static_cast<std::size_t>(width) + static_cast<std::size_t>(column)];
}

std::uint8_t Picture::u(int column, int row) const {
  return chroma[static_cast<std::size_t>(row / 2) * static_cast<std::size_t>(width) +
                static_cast<std::size_t>(column & ~1)];
}

std::uint8_t Picture::v(int column, int row) const {
  return chroma[static_cast<std::size_t>(row / 2) * static_cast<std::size_t>(width) +
                static_cast<std::size_t>(column | 1)];
}

int Picture::strip_number() const {
  const handset::SceneStrip strip = handset::scene_strip(width, height);
  int number = 0;
  for (int bit = 0; bit < handset::scene_strip_cells; ++bit) {
    const int value = y(strip.x + bit * strip.cell + strip.cell / 2, strip.y + strip.cell / 2);
    if (value > 64 && value < 192) return -1;
    number = number << 1 | (value > 128 ? 1 : 0);
  }
  return number;
}

Film play(const std::string& path) {
  gst_init(nullptr, nullptr);
  Film film;
  play_track(path, "video_0 ! h264parse ! avdec_h264 ! videoconvert ! video/x-raw,format=NV12", &film,
             [](GstSample* sample, Film* f) {
               if (f->colorimetry.empty()) {
                 const char* text =
                     gst_structure_get_string(gst_caps_get_structure(gst_sample_get_caps(sample), 0), "colorimetry");
                 f->colorimetry = text != nullptr ? text : "";
               }
               take_picture(sample, f);
             });
  return film;
}

void play_sound(const std::string& path, Film* film) {
  play_track(path,
             "audio_0 ! aacparse ! avdec_aac ! audioconvert ! "
             "audio/x-raw,format=F32LE,layout=interleaved,rate=48000,channels=2",
             film, take_sound);
}

std::vector<float> sound_with_ffmpeg(const std::string& path) {
  const std::string bytes = output_of("ffmpeg -v error -i '" + path +
                                      "' -af aresample=async=1:first_pts=0 -ac 1 -ar 48000 -f f32le - 2>/dev/null");
  std::vector<float> sound(bytes.size() / sizeof(float));
  std::memcpy(sound.data(), bytes.data(), sound.size() * sizeof(float));
  return sound;
}

std::string rotation_with_ffprobe(const std::string& path) {
  return output_of(
      "ffprobe -v error -select_streams v -show_entries stream_side_data=rotation:stream_tags=rotate "
      "-of default=noprint_wrappers=1 '" +
      path + "' 2>&1");
}

int count_with_ffprobe(const std::string& path) {
  const std::string text = output_of(
      "ffprobe -v error -count_frames -select_streams v "
      "-show_entries stream=nb_read_frames -of csv=p=0 '" +
      path + "' 2>&1");
  char* end = nullptr;
  const long count = std::strtol(text.c_str(), &end, 10);
  return end == text.c_str() || (*end != '\n' && *end != ',') ? -1 : static_cast<int>(count);
}

std::vector<std::string> boxes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::vector<std::string> types;
  for (std::uint64_t offset = 0;;) {
    unsigned char header[16] = {};
    file.seekg(static_cast<std::streamoff>(offset));
    if (!file.read(reinterpret_cast<char*>(header), 8)) break;
    std::uint64_t size = 0;
    for (int i = 0; i < 4; ++i) size = size << 8 | header[i];
    types.emplace_back(reinterpret_cast<char*>(header) + 4, 4);
    if (size == 1 && file.read(reinterpret_cast<char*>(header) + 8, 8)) {
      size = 0;
      for (int i = 8; i < 16; ++i) size = size << 8 | header[i];
    }
    if (size < 8) break;
    offset += size;
  }
  return types;
}

}  // namespace film

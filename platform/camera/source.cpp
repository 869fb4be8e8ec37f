#include "platform/camera/source.h"

#include <gst/pbutils/pbutils.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>

#include "platform/camera/camera_source.h"
#include "platform/camera/device_element.h"
#include "platform/camera/scene_source.h"

namespace handset {
namespace {

const std::vector<camera_res_t> standard_sizes = {{640, 480}, {960, 540}, {1280, 720}, {1920, 1080}, {3840, 2160}};

std::optional<std::string> after_prefix(const std::string& text, const char* prefix) {
  const std::size_t length = std::strlen(prefix);
  if (text.compare(0, length, prefix) != 0 || text.size() == length) return std::nullopt;
  return text.substr(length);
}

int complain(int error, const std::string& text) {
  std::fprintf(stderr, "%s\n", text.c_str());
  return error;
}

/// A clip's size in square pixels: those of a wide shape stretch its width.
camera_res_t display_size(const GstDiscovererVideoInfo* video) {
  const guint width = gst_discoverer_video_info_get_width(video);
  const guint height = gst_discoverer_video_info_get_height(video);
  const guint wide = gst_discoverer_video_info_get_par_num(video);
  const guint high = gst_discoverer_video_info_get_par_denom(video);
  if (wide == 0 || high == 0) return {width, height};
  return {static_cast<std::uint32_t>(gst_util_uint64_scale_round(width, wide, high)), height};
}

/// A clip's picture size as it is shown, or an empty reason.
std::string measure_clip(const std::string& path, camera_res_t* size) {
  GError* error = nullptr;
  GstDiscoverer* discoverer = gst_discoverer_new(8 * GST_SECOND, &error);
  const GStringPtr uri(gst_filename_to_uri(path.c_str(), nullptr), g_free);
  GstDiscovererInfo* info =
      discoverer != nullptr ? gst_discoverer_discover_uri(discoverer, uri.get(), &error) : nullptr;
  std::string reason = error != nullptr ? error->message : "";
  g_clear_error(&error);
  if (info != nullptr) {
    GList* streams = gst_discoverer_info_get_video_streams(info);
    if (streams == nullptr) {
      if (reason.empty()) reason = "no video in it";
    } else {
      const auto* video = GST_DISCOVERER_VIDEO_INFO(streams->data);
      *size = display_size(video);
      const GstTagList* tags = gst_discoverer_stream_info_get_tags(GST_DISCOVERER_STREAM_INFO(video));
      char* orientation = nullptr;
      if (tags != nullptr && gst_tag_list_get_string(tags, GST_TAG_IMAGE_ORIENTATION, &orientation)) {
        if (std::strstr(orientation, "rotate-90") != nullptr || std::strstr(orientation, "rotate-270") != nullptr) {
          std::swap(size->width, size->height);
        }
        g_free(orientation);
      }
      reason.clear();  // a damaged sound track or tail does not matter
    }
    gst_discoverer_stream_info_list_free(streams);
    g_object_unref(info);
  }
  if (discoverer != nullptr) g_object_unref(discoverer);
  return reason;
}

int resolve_clip(const std::string& path, Source* source) {
  std::error_code error;
  const std::string absolute = std::filesystem::absolute(path, error).string();
  const auto status = std::filesystem::status(absolute, error);
  if (!std::filesystem::exists(status))
    return complain(ENOENT, "cannot open clip " + path + ": No such file or directory");
  if (!std::filesystem::is_regular_file(status))
    return complain(EIO, "cannot open clip " + path + ": not a regular file");
  camera_res_t own{};
  const std::string reason = measure_clip(absolute, &own);
  if (!reason.empty()) return complain(EIO, "cannot decode clip " + path + ": " + reason);
  own = {own.width & ~1U, own.height & ~1U};
  if (!possible_size(own.width, own.height))
    return complain(EIO, "cannot use clip " + path + ": impossible picture size");
  source->kind = Source::Kind::clip;
  source->argument = absolute;
  source->sizes = {own};
  for (const camera_res_t& size : standard_sizes) {
    if (size.width * size.height < own.width * own.height) source->sizes.push_back(size);
  }
  return 0;
}

int resolve_desktop(Source* source) {
  source->sizes = standard_sizes;
  const auto is_set = [](const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr && *value != '\0';
  };
  // A Wayland desktop often has an X11 display as well, on which little of it is to be seen.
  if (is_set("WAYLAND_DISPLAY")) {
    std::string why;
    source->kind = Source::Kind::cast;
    source->cast = ScreenCast::open(&why);
    return source->cast ? 0 : complain(ENODEV, "cannot film the desktop: " + why);
  }
  if (!is_set("DISPLAY")) return complain(ENODEV, "cannot film the desktop: there is no display");
  source->kind = Source::Kind::x11;
  return 0;
}

ElementPtr make_clip_element(const std::string& path, std::string* error) {
  // The decoder's pads come later and must find the flip unlinked, so only the bin's far end is opened. The converter
  // is for formats that the flip does not know, such as those with alpha, and costs nothing otherwise.
  ElementPtr bin = parse_bin(
      "filesrc name=file ! decodebin ! videoconvert ! videoflip name=upright video-direction=auto", error, false);
  if (!bin) return bin;
  const auto file = ElementPtr::adopt(gst_bin_get_by_name(GST_BIN(bin.get()), "file"));
  g_object_set(file.get(), "location", path.c_str(), nullptr);
  const auto flip = ElementPtr::adopt(gst_bin_get_by_name(GST_BIN(bin.get()), "upright"));
  const auto pad = ObjectPtr<GstPad>::adopt(gst_element_get_static_pad(flip.get(), "src"));
  gst_element_add_pad(bin.get(), gst_ghost_pad_new("src", pad.get()));
  return bin;
}

}  // namespace

bool possible_size(unsigned width, unsigned height) {
  return width % 2 == 0 && height % 2 == 0 && width >= 16 && height >= 16 && width <= 8192 && height <= 4320;
}

void use_scene(Source* source) {
  source->kind = Source::Kind::scene;
  source->sizes = standard_sizes;
}

int resolve_source(const CameraServiceConfig& config, camera_unit_t unit, Source* source) {
  const std::string& text = unit == CAMERA_UNIT_FRONT  ? config.front
                            : unit == CAMERA_UNIT_REAR ? config.rear
                                                       : config.desktop;
  if (text == "scene") {
    use_scene(source);
    return 0;
  }
  if (text == "desktop" || (text == "auto" && unit == CAMERA_UNIT_DESKTOP)) return resolve_desktop(source);
  if (const auto path = after_prefix(text, "clip:")) return resolve_clip(*path, source);
  if (const auto description = after_prefix(text, "gst:")) {
    source->kind = Source::Kind::custom;
    source->argument = *description;
    source->sizes = standard_sizes;
    return 0;
  }
  if (const auto name = after_prefix(text, "camera:")) return resolve_camera(config, unit, *name, source);
  if (text == "auto") return resolve_camera(config, unit, "", source);
  return complain(EINVAL, "unknown camera source \"" + text +
                              "\" (auto, camera:NAME, scene, desktop, clip:FILE or gst:DESCRIPTION)");
}

ElementPtr make_source_element(const Source& source, int way, camera_res_t size, int frame_rate, std::string* error) {
  const std::string rate = "framerate=" + std::to_string(frame_rate) + "/1";
  switch (source.kind) {
    case Source::Kind::scene: {
      register_scene_source();
      return parse_bin("morvanescene ! capsfilter caps=video/x-raw,width=" + std::to_string(size.width) +
                           ",height=" + std::to_string(size.height) + "," + rate,
                       error);
    }
    case Source::Kind::clip:
      return make_clip_element(source.argument, error);
    case Source::Kind::custom:
      // A description may end in caps, which need something behind them.
      return parse_bin(source.argument + " ! identity silent=true", error);
    case Source::Kind::device:
      return make_device_element(source.camera, way, size, frame_rate, error);
    case Source::Kind::cast:
      // Screens have no rate: they bring a picture when something has changed, up to as often as they are drawn. The
      // last one is repeated, so that a film of a still screen ends where its recording does.
      return parse_bin("pipewiresrc fd=" + std::to_string(source.cast->remote()) +
                           " path=" + std::to_string(source.cast->node()) +
                           " do-timestamp=true keepalive-time=100 ! capsfilter caps=video/x-raw"
                           " ! videorate ! capsfilter caps=video/x-raw," +
                           rate,
                       error);
    case Source::Kind::x11:
      return parse_bin("ximagesrc use-damage=false ! capsfilter caps=video/x-raw," + rate, error);
  }
  *error = "no such source";
  return {};
}

}  // namespace handset

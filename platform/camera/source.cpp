#include "platform/camera/source.h"

#include <gst/pbutils/pbutils.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>

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
      *size = {gst_discoverer_video_info_get_width(video), gst_discoverer_video_info_get_height(video)};
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

struct Memory {
  std::string rear, front;
};

/// Two lines of text: the rear camera's identity, then the front one's.
Memory load_memory(const std::string& path) {
  Memory memory;
  if (std::FILE* file = path.empty() ? nullptr : std::fopen(path.c_str(), "re")) {
    for (std::string* line : {&memory.rear, &memory.front}) {
      for (int c = std::fgetc(file); c != EOF && c != '\n'; c = std::fgetc(file)) line->push_back(static_cast<char>(c));
    }
    std::fclose(file);
  }
  return memory;
}

void save_memory(const std::string& path, const Memory& memory) {
  if (path.empty()) return;
  std::error_code ignored;
  std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ignored);
  const std::string fresh = path + ".new";
  if (std::FILE* file = std::fopen(fresh.c_str(), "we")) {
    const bool written = std::fprintf(file, "%s\n%s\n", memory.rear.c_str(), memory.front.c_str()) > 0;
    if (std::fclose(file) == 0 && written) std::filesystem::rename(fresh, path, ignored);
  }
}

void use_scene(Source* source) {
  source->kind = Source::Kind::scene;
  source->sizes = standard_sizes;
}

int resolve_found_camera(const CameraServiceConfig& config, camera_unit_t unit, Source* source) {
  std::vector<FoundCamera> cameras = find_cameras();
  if (cameras.empty()) {
    use_scene(source);
    source->stands_in = true;
    return 0;
  }
  const Memory memory = load_memory(config.memory_file);
  const CameraRoles roles = assign_roles(cameras, memory.rear, memory.front);
  const auto identity = [&](int index) { return cameras[static_cast<std::size_t>(index)].identity; };
  // Two different cameras are worth remembering; a lone one must not take both places for good.
  if (roles.rear != roles.front) save_memory(config.memory_file, {identity(roles.rear), identity(roles.front)});
  source->kind = Source::Kind::device;
  source->camera = std::move(cameras[static_cast<std::size_t>(unit == CAMERA_UNIT_FRONT ? roles.front : roles.rear)]);
  source->sizes = list_sizes(source->camera.modes);
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

/// Bin around a parsed description. @param open_ends  the bin gets the pads that are not linked in it
ElementPtr parse_bin(const std::string& description, std::string* error, bool open_ends = true) {
  GError* problem = nullptr;
  GstElement* bin = gst_parse_bin_from_description_full(description.c_str(), open_ends, nullptr,
                                                        GST_PARSE_FLAG_FATAL_ERRORS, &problem);
  if (bin == nullptr || problem != nullptr) {
    *error = problem != nullptr ? problem->message : "not a pipeline";
    g_clear_error(&problem);
    if (bin != nullptr) gst_object_unref(gst_object_ref_sink(bin));
    return {};
  }
  return ElementPtr::adopt(bin);
}

ElementPtr make_device_element(const FoundCamera& camera, camera_res_t size, std::string* error) {
  const CameraMode* mode = choose_mode(camera.modes, size);
  GstElement* element = gst_device_create_element(camera.device.get(), "device");
  if (element == nullptr || mode == nullptr) {
    *error = "the camera is gone";
    if (element != nullptr) gst_object_unref(gst_object_ref_sink(element));
    return {};
  }
  // PipeWire hands out buffers without timestamps unless it is told to stamp them.
  g_object_set(element, "do-timestamp", TRUE, nullptr);
  const bool jpeg = choose_way(*mode).way->coding == CameraWay::Coding::jpeg;
  const std::string filter = std::string(jpeg ? "image/jpeg" : "video/x-raw") +
                             ",width=" + std::to_string(mode->size.width) +
                             ",height=" + std::to_string(mode->size.height);
  ElementPtr tail =
      parse_bin("capsfilter caps=\"" + filter + "\" ! " + (jpeg ? "jpegdec" : "identity silent=true"), error);
  if (!tail) {
    gst_object_unref(gst_object_ref_sink(element));
    return {};
  }
  GstElement* bin = gst_bin_new("camera");
  gst_bin_add_many(GST_BIN(bin), element, tail.get(), nullptr);
  gst_element_link(element, tail.get());
  const auto pad = ObjectPtr<GstPad>::adopt(gst_element_get_static_pad(tail.get(), "src"));
  gst_element_add_pad(bin, gst_ghost_pad_new("src", pad.get()));
  return ElementPtr::adopt(bin);
}

ElementPtr make_clip_element(const std::string& path, std::string* error) {
  // The decoder's pads come later and must find the flip unlinked, so only the bin's far end is opened.
  ElementPtr bin =
      parse_bin("filesrc name=file ! decodebin ! videoflip name=upright video-direction=auto", error, false);
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
  if (text != "auto") {
    return complain(EINVAL,
                    "unknown camera source \"" + text + "\" (auto, scene, desktop, clip:FILE or gst:DESCRIPTION)");
  }
  return resolve_found_camera(config, unit, source);
}

ElementPtr make_source_element(const Source& source, camera_res_t size, int frame_rate, std::string* error) {
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
      return make_device_element(source.camera, size, error);
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

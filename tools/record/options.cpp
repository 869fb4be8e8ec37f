#include "tools/record/options.h"

#include <getopt.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>

#include "engine/stamp.h"
#include "engine/stamp_layout.h"
#include "platform/camera/source.h"

namespace record {
namespace {

enum Code : int {
  source_code = 256,
  size_code,
  filter_code,
  color_code,
  tolerance_code,
  seconds_code,
  microphone_code,
  unpaced_code,
  texture_code,
  position_code,
  fullscreen_code,
  own_colors_code,
  stamp_code,
  stamp_color_code,
  stamp_position_code,
  list_code,
  help_code,
  version_code
};

constexpr option long_options[] = {
    {"source", required_argument, nullptr, source_code},
    {"size", required_argument, nullptr, size_code},
    {"filter", required_argument, nullptr, filter_code},
    {"color", required_argument, nullptr, color_code},
    {"tolerance", required_argument, nullptr, tolerance_code},
    {"seconds", required_argument, nullptr, seconds_code},
    {"microphone", required_argument, nullptr, microphone_code},
    {"unpaced", no_argument, nullptr, unpaced_code},
    {"texture", required_argument, nullptr, texture_code},
    {"position", required_argument, nullptr, position_code},
    {"fullscreen", no_argument, nullptr, fullscreen_code},
    {"own-colors", no_argument, nullptr, own_colors_code},
    {"stamp", required_argument, nullptr, stamp_code},
    {"stamp-color", required_argument, nullptr, stamp_color_code},
    {"stamp-position", required_argument, nullptr, stamp_position_code},
    {"list", no_argument, nullptr, list_code},
    {"help", no_argument, nullptr, help_code},
    {"version", no_argument, nullptr, version_code},
    {nullptr, 0, nullptr, 0},
};

template <typename Number>
bool parse_number(std::string_view text, Number low, Number high, Number* out) {
  Number value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || !(value >= low && value <= high)) return false;
  *out = value;
  return true;
}

/// Two numbers with a separator between them.
template <typename Number>
bool parse_pair(std::string_view text, char separator, Number low, Number high, Number* first, Number* second) {
  const std::size_t at = text.find(separator);
  return at != std::string_view::npos && parse_number(text.substr(0, at), low, high, first) &&
         parse_number(text.substr(at + 1), low, high, second);
}

bool apply(int code, const char* value, Options* options) {
  switch (code) {
    case source_code:
      options->source = value;
      return !options->source.empty();
    case size_code:
      return parse_pair(value, 'x', 1U, 65535U, &options->width, &options->height) &&
             handset::possible_size(options->width, options->height);
    case filter_code:
      return parse_number(value, -1, 11, &options->filter);
    case color_code:
      return parse_pair(value, ',', 0, 255, &options->u, &options->v);
    case tolerance_code:
      return parse_number(value, 0.0F, 0.99F, &options->tolerance);
    case seconds_code:
      return parse_number(value, 0.1, 1e7, &options->seconds);
    case microphone_code:
      options->microphone = value;
      return !options->microphone.empty();
    case unpaced_code:
      options->unpaced = true;
      return true;
    case texture_code:
      options->texture = value;
      return !options->texture.empty();
    case position_code:
      return parse_number(value, 0, 6, &options->position);
    case fullscreen_code:
      options->fill_frame = true;
      return true;
    case own_colors_code:
      options->own_colors = true;
      return true;
    case stamp_code:
      return parse_number(value, 1, stamp_format_count - 1, &options->stamp);
    case stamp_color_code:
      return parse_number(value, 0, stamp_color_count - 1, &options->stamp_color);
    case stamp_position_code:
      return parse_number(value, 0, 4, &options->stamp_position);
    case list_code:
      options->action = Options::Action::list;
      return true;
    case help_code:
      options->action = Options::Action::help;
      return true;
    case version_code:
      options->action = Options::Action::version;
      return true;
    default:
      return false;
  }
}

const char* name_of(int code) {
  for (const option& entry : long_options) {
    if (entry.name != nullptr && entry.val == code) return entry.name;
  }
  return "";
}

/// What getopt_long() has just refused. @param word  the argument that it read last
std::string explain_unknown(const char* word) {
  if (optopt >= source_code) return std::string("option --") + name_of(optopt) + " takes no value";
  // Of several letters in one word only the refused one is named; getopt goes on in the same word after it.
  return std::string("unknown option ") + (optopt != 0 ? std::string{'-', static_cast<char>(optopt)} : word);
}

}  // namespace

std::string parse_options(int argc, char** argv, Options* options) {
  optind = 0;  // getopt starts over: this may not be the first command line of the process
  opterr = 0;
  for (int code = 0; (code = getopt_long(argc, argv, ":", long_options, nullptr)) != -1;) {
    if (code == ':') return std::string("option ") + argv[optind - 1] + " needs a value";
    if (code == '?') return explain_unknown(argv[optind - 1]);
    if (!apply(code, optarg, options)) {
      return "bad value \"" + std::string(optarg != nullptr ? optarg : "") + "\" for --" + name_of(code);
    }
  }
  if (options->action != Options::Action::record) return {};
  if (optind >= argc) return "no output file named";
  if (optind + 1 < argc) return std::string("unexpected argument ") + argv[optind + 1];
  options->output = argv[optind];
  if (options->unpaced && !options->source.starts_with("clip:") && !options->source.starts_with("gst:")) {
    return "--unpaced needs a clip";
  }
  return {};
}

const char* help_text() {
  return R"(Usage: morvane-record [OPTION]... OUT.mp4
Records a camera with a live effect into a new MP4 file.

  --source SOURCE     auto (default), camera:NAME, scene, desktop, clip:FILE or gst:DESCRIPTION
                        auto   a camera that is found; the built-in scene where there is none
                        camera:
                               a camera of --list, by its name or a part that no other has
                        scene  the built-in scene
                        desktop
                               the screen; a Wayland desktop asks its user first
                        clip:  a video file; it loops unless --unpaced
                        gst:   a GStreamer bin description that ends in raw video
  --size WxH          picture size, even numbers from 16x16 to 8192x4320
  --filter ID         -1 none (default), 0 colour mixer, 1 yellow, 2 blue, 3 green,
                      4 red, 5 sepia, 6 flat luma, 7 greyscale; keep only one
                      colour: 8 yellow, 9 blue, 10 green, 11 red
  --color U,V         colour of filter 0, 0 to 255 each (128,128)
  --tolerance T       of filters 8 to 11, 0 to 0.99 (0.5)
  --texture T         lay a texture over the picture: Vintage, "Smoke Dark", "Scope 2", Scope,
                      "Orange Dust", "Frost Window", Frame, "Fog White", "Fog Orange",
                      "Fog GreyYellow", "Fog Grey", Brick, or a PNG file with alpha
  --position P        of a file: 0-2 top, 3 middle, 4-6 bottom, from left to right (0)
  --fullscreen        stretch a file to the whole picture
  --own-colors        the overlay keeps its colours under a filter
  --stamp FORMAT      date and time: 1 mm-dd-yyyy, 2 dd-mm-yyyy, 3 mm/dd/yyyy, 4 dd/mm/yyyy,
                      each with the time; 5 to 8 the same without it
  --stamp-color N     0 black, 1 blue, 2 orange, 3 red, 4 yellow, 5 white (5)
  --stamp-position N  0 top left, 1 top right, 2 middle, 3 bottom left, 4 bottom right (4)
  --seconds S         length of the recording; without it, until Ctrl-C
  --microphone NAME   default, none, tone, gst:DESCRIPTION, or a microphone's label or
                      identity or a part of one (as the device profile says)
  --unpaced           run a clip once, as fast as it can be recorded, dropping nothing
  --list              say what there is to record from, and end
  --help, --version

Ctrl-C and SIGTERM complete the file. Exit status: 0 when the recording is complete,
1 when there is none or it ended early.
)";
}

}  // namespace record

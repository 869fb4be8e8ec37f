#include "tools/record/overlays.h"

#include <strings.h>

#include <filesystem>

#include "engine/filter_thread.h"
#include "engine/overlay_loader.h"
#include "engine/stamp.h"
#include "engine/texture_table.h"
#include "platform/device/sandbox.h"

namespace record {
namespace {

/// The built-in texture of a name, relative to the sandbox; null when it is none.
const char* built_in_texture(const std::string& name) {
  for (int row = 0; row < texture_count; ++row) {
    if (strcasecmp(name.c_str(), texture_row_names[row]) == 0) return img_textures[texture_entry_of_row(row)];
  }
  return nullptr;
}

void make_absolute(std::string* path) {
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(*path, error);
  if (!error) *path = absolute.string();
}

}  // namespace

std::string prepare_paths(Options* options) {
  make_absolute(&options->output);
  if (options->source.starts_with("clip:")) {
    std::string clip = options->source.substr(5);
    make_absolute(&clip);
    options->source = "clip:" + clip;
  }
  const bool built_in = !options->texture.empty() && built_in_texture(options->texture) != nullptr;
  if (!options->texture.empty() && !built_in) make_absolute(&options->texture);
  if (!built_in && options->stamp == 0) return {};
  const std::string package = find_package_dir();
  if (package.empty()) return "the application package is not installed";
  return enter_sandbox(package) == 0 ? "" : "cannot use the application's folder";
}

std::string load_overlay(const Options& options) {
  if (options.texture.empty()) return {};
  const char* texture = built_in_texture(options.texture);
  const std::string path = texture != nullptr ? texture : options.texture;
  logo_pos = options.position;
  fullscreen = texture != nullptr || options.fill_frame;
  _include_logo_original_color = options.own_colors;
  if (logo_load_image(0, 0, path.c_str(), fullscreen) != 0) return "cannot use the picture " + options.texture;
  return {};
}

Stamp::Stamp(const Options& options) : options_(options) {
  if (options.stamp != 0) sheet_ = load_datetime_template(options.stamp_color);
}

bool Stamp::refresh() {
  const std::time_t now = std::time(nullptr);
  if (options_.stamp == 0 || now == shown_ || (shown_ != -1 && !stamp_ticks(options_.stamp))) return true;
  shown_ = now;
  return generate_datetime({options_.stamp, options_.stamp_color, options_.stamp_position}, now, sheet_);
}

}  // namespace record

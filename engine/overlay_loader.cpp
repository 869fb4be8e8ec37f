#include "engine/overlay_loader.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "engine/filter_thread.h"
#include "engine/kernels/overlay_kernels.h"
#include "engine/picture.h"
#include "engine/placement.h"
#include "engine/texture_table.h"

std::atomic<std::int32_t> logo_pos = 0;
std::atomic<bool> fullscreen = false;

namespace {

/// By position code.
constexpr overlay_anchor_s anchors[] = {{at_start, at_start},   {at_middle, at_start}, {at_end, at_start},
                                        {at_middle, at_middle}, {at_start, at_end},    {at_middle, at_end},
                                        {at_end, at_end}};

/// Characters of the home directory's last component, which the package stands beside.
constexpr std::size_t home_tail = 4;

/// No frame is that high. A narrow and tall picture would grow without bound when its width is scaled to half the
/// frame.
constexpr int overlay_max_rows = 8192;

bool path_fits(const char* path) {
  if (std::strlen(path) < overlay_path_size) return true;
  std::fprintf(stderr, "overlay path is longer than %zu bytes\n", overlay_path_size - 1);
  return false;
}

QImage fitted(const QImage& image, int frame_width, int frame_height, bool fill_frame) {
  if (fill_frame) return scaled_to(image, frame_width, frame_height);
  const bool too_large = image.width() > frame_width || image.height() > frame_height;
  if (too_large) return scaled_to_width(image, frame_width / 2, overlay_max_rows);
  return image;
}

/// @return 0, -1 or -2, as logo_load_image
int read_overlay(const char* path, QImage* image) {
  if (!path_fits(path)) return -1;
  *image = read_picture(path);
  if (image->isNull()) {
    std::fputs("logo is null\n", stderr);
    return -1;
  }
  if (image->format() != QImage::Format_ARGB32) {
    std::fputs("logo not in argb32 format\n", stderr);
    return -2;
  }
  return 0;
}

}  // namespace

bool store_overlay_path(char (&field)[overlay_path_size], const char* path) {
  if (!path_fits(path)) return false;
  std::memmove(field, path, std::strlen(path) + 1);
  return true;
}

std::string texture_path(int row, std::string_view home) {
  home.remove_suffix(std::min(home_tail, home.size()));
  return std::string(home) + img_textures[texture_entry_of_row(row)];
}

bool resize_question_applies(const QImage& image) {
  return !image.isNull() && image.width() != _screen_wid && image.height() != _screen_hi;
}

void place_overlay(std::int32_t code, std::int32_t frame_width, std::int32_t frame_height, logo_image_s& record) {
  if (code < 0 || code >= std::int32_t{std::size(anchors)}) return;
  record.x = std::max(0, anchored(anchors[code].across, frame_width, record.width));
  record.y = std::max(0, anchored(anchors[code].down, frame_height, record.height));
}

void convert_overlay(const QImage& image, const logo_image_s& record) {
  kernels::convert_bgra(image.constBits(), image.bytesPerLine(), static_cast<std::size_t>(record.width),
                        static_cast<std::size_t>(record.height),
                        {record.luma, record.chroma, record.alpha, record.chroma_alpha});
}

int logo_load_image(int, int, const char* path, bool fill_frame) {
  QImage image;
  if (const int error = read_overlay(path, &image); error != 0) return error;
  const int frame_width = _screen_wid, frame_height = _screen_hi;
  image = fitted(image, frame_width, frame_height, fill_frame);
  logo_image_s built = allocate_overlay(image.width() & ~3, image.height() & ~3);
  convert_overlay(image, built);
  place_overlay(logo_pos, frame_width, frame_height, built);
  built.enabled = true;
  logo_image_s old = exchange_overlay(logo_image, built);
  free_overlay(old);
  return 0;
}

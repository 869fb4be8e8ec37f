#include "engine/stamp.h"

#include <QPainter>
#include <algorithm>
#include <optional>
#include <string>
#include <utility>

#include "engine/filter_thread.h"
#include "engine/overlay.h"
#include "engine/overlay_loader.h"
#include "engine/picture.h"
#include "engine/placement.h"
#include "engine/stamp_layout.h"

namespace {

/// Frames wider than this have the large glyphs.
constexpr int small_row_max_width = 720;

/// Last hour of the day that is AM.
constexpr int last_am_hour = 11;

constexpr overlay_anchor_s anchors[] = {
    {at_start, at_start}, {at_end, at_start}, {at_middle, at_middle}, {at_start, at_end}};
constexpr overlay_anchor_s bottom_right = {at_end, at_end};

/// The stamp before the one in datetime_image, kept for its planes. UI thread.
logo_image_s spare = {};

std::optional<std::tm> local_time(std::time_t now) {
  std::tm parts{};
  tzset();  // or localtime_r may not notice that the time zone was changed
  if (localtime_r(&now, &parts) == nullptr) return std::nullopt;
  return parts;
}

std::string formatted(const char* format, const std::tm& time) {
  char text[100];
  return std::string(text, std::strftime(text, sizeof text, format, &time));
}

/// @return glyph index, or -1 for what draws nothing
int glyph_of(char character, int hour) {
  switch (character) {
    case '!':
      return hour <= last_am_hour ? stamp_glyph_am : stamp_glyph_pm;
    case '/':
    case ',':
      return stamp_glyph_slash;
    case '-':
      return stamp_glyph_dash;
    case ':':
      return stamp_glyph_colon;
    default:
      return character >= '0' && character <= '9' ? character - '0' : -1;
  }
}

/// @return width of the text, pixels
int draw_text(QImage& canvas, const std::string& text, int hour, const stamp_row_s& row, const QImage& sheet) {
  QPainter painter(&canvas);
  int pen = 0;
  for (const char character : text) {
    const int glyph = glyph_of(character, hour);
    if (glyph == -1) {
      pen += stamp_space_advance;
      continue;
    }
    const int width = row.width(glyph);
    painter.drawImage(QPoint(pen, 0), sheet, QRect(row.left[glyph], row.top, width, row.glyph_height));
    pen += width;
  }
  return pen;
}

struct drawn_stamp {
  QImage canvas;
  QSize size;  ///< part of the canvas that is the stamp, multiples of 4
};

/// Never larger than the canvas, whatever plate it began as.
QSize whole_blocks(QSize wanted, const QImage& canvas) {
  const QSize size = wanted.boundedTo(canvas.size());
  return {size.width() & ~3, size.height() & ~3};
}

drawn_stamp draw_stamp(int format, const std::tm& time, const QImage& sheet, int frame_width) {
  QImage canvas = read_picture(img2_path).convertToFormat(QImage::Format_ARGB32);
  if (canvas.isNull()) return {};
  const stamp_row_s& row = frame_width > small_row_max_width ? stamp_large_row : stamp_small_row;
  const int total = draw_text(canvas, formatted(_time_format[format], time), time.tm_hour, row, sheet);
  if (total <= frame_width) return {canvas, whole_blocks({total + 4, row.stamp_height}, canvas)};
  canvas = scaled_to_width(canvas, frame_width / 2, canvas.height());
  return {canvas, whole_blocks(canvas.size(), canvas)};
}

void place_stamp(int position, int frame_width, int frame_height, logo_image_s& record) {
  const bool listed = position >= 0 && position < int{std::size(anchors)};
  const overlay_anchor_s anchor = listed ? anchors[position] : bottom_right;
  record.x = anchored(anchor.across, frame_width, record.width);
  record.y = anchored(anchor.down, frame_height, record.height);
}

/// The spare planes if they have the size, or else new ones.
logo_image_s planes_of(QSize size) {
  if (spare.luma == nullptr || spare.width != size.width() || spare.height != size.height()) {
    free_overlay(spare);
    return allocate_overlay(size.width(), size.height());
  }
  return std::exchange(spare, {});
}

}  // namespace

QImage load_datetime_template(int color) {
  if (color < 0 || color >= stamp_color_count) return {};
  return read_picture(img1_path[color]);
}

bool generate_datetime(const stamp_settings_s& settings, std::time_t now, const QImage& sheet) {
  if (settings.format < 1 || settings.format >= stamp_format_count) return false;
  const std::optional<std::tm> time = local_time(now);
  if (!time) return false;
  const int frame_width = _screen_wid, frame_height = _screen_hi;
  const drawn_stamp drawn = draw_stamp(settings.format, *time, sheet, frame_width);
  if (drawn.canvas.isNull()) return false;
  logo_image_s built = planes_of(drawn.size);
  convert_overlay(drawn.canvas, built);
  place_stamp(settings.position, frame_width, frame_height, built);
  built.enabled = true;
  spare = exchange_overlay(datetime_image, built);
  return true;
}

void free_datetime_image() {
  logo_image_s old = exchange_overlay(datetime_image, {});
  free_overlay(old);
  free_overlay(spare);
}

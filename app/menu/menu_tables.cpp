#include "app/menu/menu_tables.h"

#include <QString>
#include <algorithm>
#include <cstring>

#include "app/tarnelapp.h"
#include "camera/resolution.h"
#include "engine/color_filter.h"

menu_slots _menuIcons;
menu_slots _menuIconNames;
char _menuSaveLogosIconNames[texture_row_count][menu_text_size];

namespace {

constexpr const char* texture_icon = "asset:///images/icon_logos.png";
constexpr const char* size_icon = "asset:///images/icon_screen.png";

/// Displays of at most this height have no room above the list.
constexpr int low_display_height = 720;
constexpr float no_padding = 0;
constexpr float list_padding = 10;
constexpr float status_padding = 200;

constexpr main_row_s opens(const char* title, const char* icon, MenuMode list, bool long_list,
                           bool restarts_camera = false) {
  return {title, icon, list, nullptr, restarts_camera, long_list};
}

constexpr main_row_s acts(const char* title, const char* icon, void (*act)(tarnelApp&), bool restarts_camera = false) {
  return {title, icon, menu_closed, act, restarts_camera, false};
}

void pick_picture(tarnelApp& app) {
  app.open_file_picker(0);
}

void toggle_light(tarnelApp& app) {
  app.handleFlashLightAction();
}

void switch_camera(tarnelApp& app) {
  app.handleSwitchCameraAction();
}

bool on_its_side(int capture_angle) {
  return capture_angle == 90 || capture_angle == 270;
}

}  // namespace

constexpr main_row_s main_table[main_menu_count] = {
    opens("Color Filters", "asset:///images/icon_filter.png", menu_filters, true),
    acts("Load Texture", "asset:///images/icon_open.png", pick_picture),
    opens("Default Textures", "asset:///images/icon_logos.png", menu_textures, true),
    opens("Screen Size", "asset:///images/icon_size.png", menu_sizes, true, true),
    acts("Video Light", "asset:///images/icon_lightoff.png", toggle_light),
    opens("Scene", "asset:///images/icon_scene.png", menu_scenes, false),
    opens("Normal", "asset:///images/icon_mode.png", menu_modes, false),
    acts("Switch Camera", "asset:///images/icon_switchcamera.png", switch_camera, true),
};

static_assert(std::ranges::all_of(main_table, [](const main_row_s& row) {
  return (row.list == menu_closed) == (row.act != nullptr);
}));
static_assert(filter_table[filter_row_count - 1].action == filter_action::none);
static_assert(std::ranges::all_of(filter_table, [](const filter_row_s& row) {
  return row.effect == (row.action == filter_action::none ? -1 : &row - filter_table);
}));
static_assert(main_table[main_row_light].act == toggle_light);
static_assert(main_table[main_row_scene].list == menu_scenes);
static_assert(main_table[main_row_mode].list == menu_modes);

void fill_main_menu() {
  for (int row = 0; row < main_menu_count; ++row) {
    set_menu_text(_menuIcons[row], main_table[row].icon);
    set_menu_text(_menuIconNames[row], main_table[row].title);
  }
}

void set_menu_text(char (&slot)[menu_text_size], const char* text) {
  const std::size_t length = strnlen(text, menu_text_size - 1);
  std::memmove(slot, text, length);
  slot[length] = '\0';
}

int menu_row_count(int mode, int resolution_count) {
  switch (mode) {
    case menu_filters:
      return filter_row_count;
    case menu_textures:
      return texture_row_count;
    case menu_sizes:
      return resolution_count;
    case menu_scenes:
      return scene_count;
    case menu_modes:
      return mode_count;
    default:
      return main_menu_count;
  }
}

namespace {

struct row_text_s {
  QString image;
  QString title;
};

row_text_s row_text(int mode, int index, std::span<const camera_res_t> resolutions) {
  const auto text = [](const char* image, const char* title) {
    return row_text_s{QString::fromUtf8(image), QString::fromUtf8(title)};
  };
  switch (mode) {
    case menu_filters:
      return text(filter_table[index].icon, filter_table[index].title);
    case menu_textures:
      return text(texture_icon, _menuSaveLogosIconNames[index]);
    case menu_sizes:
      return text(size_icon, resolution_text(resolutions[static_cast<std::size_t>(index)]).c_str());
    case menu_scenes:
      return text(scene_table[index].icon, scene_table[index].title);
    case menu_modes:
      return text(mode_table[index].icon, mode_table[index].title);
    default:
      return text(_menuIcons[index], _menuIconNames[index]);
  }
}

}  // namespace

QVariantMap menu_row(int mode, int index, std::span<const camera_res_t> resolutions) {
  const row_text_s row = row_text(mode, index, resolutions);
  return {{QStringLiteral("image"), row.image}, {QStringLiteral("title"), row.title}, {QStringLiteral("index"), index}};
}

float opening_padding(int capture_angle, int display_height) {
  return on_its_side(capture_angle) || display_height <= low_display_height ? no_padding : status_padding;
}

float main_row_padding(int row, int capture_angle, int display_height) {
  const bool long_list = row >= 0 && row < main_menu_count && main_table[row].long_list;
  const bool low = on_its_side(capture_angle) || display_height <= low_display_height;
  return long_list || low ? list_padding : status_padding;
}

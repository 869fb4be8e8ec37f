#pragma once

// What the action menu's lists hold, row by row, and what its modes mean. UI thread.

#include <QVariantMap>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "app/preferences.h"
#include "camera/scene.h"
#include "engine/texture_table.h"
#include "platform/camera/camera.h"

class tarnelApp;

/// Which list the action menu shows. Any value but sizes, scenes, modes, textures and filters is read as the main
/// level.
enum MenuMode : int {
  menu_closed = -1,
  menu_main = 0,
  menu_sizes = 1,
  menu_scenes = 3,
  menu_modes = 4,
  menu_textures = 6,
  menu_filters = 7,
  menu_mixer = 88,  ///< the colour mixer panel instead of a list
};

inline constexpr int main_menu_count = 8;
/// Rows of the main level that are rewritten while the program runs.
inline constexpr int main_row_light = 4;
inline constexpr int main_row_scene = 5;
inline constexpr int main_row_mode = 6;

using menu_slots = char[main_menu_count][menu_text_size];
extern menu_slots _menuIcons;
extern menu_slots _menuIconNames;
extern char _menuSaveLogosIconNames[texture_row_count][menu_text_size];

/// One row of the main level: it opens a list, or closes the menu and acts.
struct main_row_s {
  const char* title;
  const char* icon;
  MenuMode list;            ///< menu_closed for a row that acts
  void (*act)(tarnelApp&);  ///< null for a row that opens a list
  bool restarts_camera;     ///< refused while recording
  bool long_list;           ///< its list needs the display's whole height
};
extern const main_row_s main_table[main_menu_count];

/// What choosing a colour filter does besides setting its effect.
enum class filter_action {
  mixer,       ///< the colour mixer panel takes the list's place
  fill,        ///< nothing
  keep_color,  ///< the mask is built, and the tolerance panel shown
  none,        ///< no filter
};

/// One colour filter: its effect id (-1: none), what the menu shows, and what choosing it does.
struct filter_row_s {
  std::int32_t effect;
  const char* title;
  const char* icon;
  filter_action action;
};

inline constexpr int filter_row_count = 13;
inline constexpr filter_row_s filter_table[filter_row_count] = {
    {0, "Color Mixer", "asset:///images/icon_effect_custom.png", filter_action::mixer},
    {1, "Yellow Solid", "asset:///images/icon_effect_solid_yellow.png", filter_action::fill},
    {2, "Blue Solid ", "asset:///images/icon_effect_solid_blue.png", filter_action::fill},
    {3, "Green Solid", "asset:///images/icon_effect_solid_green.png", filter_action::fill},
    {4, "Red Solid", "asset:///images/icon_effect_solid_red.png", filter_action::fill},
    {5, "Sepia", "asset:///images/icon_effect_sepia.png", filter_action::fill},
    {6, "Negative", "asset:///images/icon_effect_negative.png", filter_action::fill},
    {7, "Greyscale", "asset:///images/icon_effect_greyscale.png", filter_action::fill},
    {8, "Yellow", "asset:///images/icon_effect_yellow.png", filter_action::keep_color},
    {9, "Blue", "asset:///images/icon_effect_blue.png", filter_action::keep_color},
    {10, "Green", "asset:///images/icon_effect_green.png", filter_action::keep_color},
    {11, "Red", "asset:///images/icon_effect_red.png", filter_action::keep_color},
    {-1, "Normal", "asset:///images/icon_effect_normal.png", filter_action::none},
};

/// Stabilization on or off.
struct mode_row_s {
  const char* title;
  const char* icon;
};

inline constexpr int mode_count = 2;
inline constexpr int mode_row_stabilization = 0;
inline constexpr int mode_row_normal = 1;
inline constexpr mode_row_s mode_table[mode_count] = {
    {"Stabilization", "asset:///images/icon_mode_stabilization.png"},
    {"Normal", "asset:///images/icon_mode.png"},
};

template <typename Row, std::size_t count>
constexpr std::array<const char*, count> menu_column(const Row (&table)[count], const char* Row::*field) {
  std::array<const char*, count> column{};
  for (std::size_t i = 0; i < count; ++i) column[i] = table[i].*field;
  return column;
}

/// The tables by their columns.
inline constexpr auto _menuFilterIcons = menu_column(filter_table, &filter_row_s::icon);
inline constexpr auto _menuFilterIconNames = menu_column(filter_table, &filter_row_s::title);
inline constexpr auto _menuModeIcons = menu_column(mode_table, &mode_row_s::icon);
inline constexpr auto _menuModeIconNames = menu_column(mode_table, &mode_row_s::title);

/// Writes the 8 rows of the main level as they are at the start.
void fill_main_menu();
/// Copies into a slot, cut to what fits with its terminator.
void set_menu_text(char (&slot)[menu_text_size], const char* text);

/// Rows of a mode's list.
/// @param resolution_count  entries of the size list
int menu_row_count(int mode, int resolution_count);
/// Row `index` of a list: the keys "image", "title" and "index".
/// @param index        0 to menu_row_count - 1
/// @param resolutions  rows of the size list
QVariantMap menu_row(int mode, int index, std::span<const camera_res_t> resolutions);

/// Top padding of the list, pixels: when the menu opens, and when a row of the main level was chosen.
/// @param capture_angle   mCaptureAngle
/// @param display_height  of the display in its natural direction, pixels
float opening_padding(int capture_angle, int display_height);
float main_row_padding(int row, int capture_angle, int display_height);

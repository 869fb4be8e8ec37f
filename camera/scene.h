#pragma once

// The scene modes offered to the user.

#include <array>

#include "platform/camera/camera.h"

struct scene_row_s {
  camera_scenemode_t mode;
  const char* title;
  const char* icon;  ///< in the menu and on the viewfinder
};

inline constexpr int scene_count = 5;
/// The default, and the only row that shows no icon on the viewfinder.
inline constexpr int scene_auto = 4;

inline constexpr scene_row_s scene_table[scene_count] = {
    {CAMERA_SCENE_BEACH_SNOW, "Beach & Snow", "asset:///images/icon_scene_snow.png"},
    {CAMERA_SCENE_NIGHT, "Night", "asset:///images/icon_scene_night.png"},
    {CAMERA_SCENE_CLOSEUP, "Closeup", "asset:///images/icon_scene_closeup.png"},
    {CAMERA_SCENE_ACTION, "Action", "asset:///images/icon_scene_action.png"},
    {CAMERA_SCENE_AUTO, "Auto", "asset:///images/icon_scene.png"},
};

template <typename T>
constexpr std::array<T, scene_count> scene_column(T scene_row_s::*field) {
  std::array<T, scene_count> column{};
  for (int i = 0; i < scene_count; ++i) column[i] = scene_table[i].*field;
  return column;
}

/// The table by its columns, as the menu shows it and the camera takes it.
inline constexpr auto _supported_scene_modes = scene_column(&scene_row_s::mode);
inline constexpr auto _menuSceneIconNames = scene_column(&scene_row_s::title);
inline constexpr auto _menuSceneIcons = scene_column(&scene_row_s::icon);

/// The index, or scene_auto if it is outside the table.
constexpr int scene_or_auto(int index) {
  return index >= 0 && index < scene_count ? index : scene_auto;
}

constexpr bool scene_icon_visible(int index) {
  return index != scene_auto;
}

#pragma once

// The built-in textures and the rows of the texture menu that load them.

inline constexpr int texture_count = 12;

/// Texture files, relative to the application root. The menu lists the table in reverse.
inline constexpr const char* img_textures[texture_count] = {
    "app/native/assets/images/textures/eff_brick.png",
    "app/native/assets/images/textures/eff_fog_grey.png",
    "app/native/assets/images/textures/eff_fog_greyyellow.png",
    "app/native/assets/images/textures/eff_fog_orange.png",
    "app/native/assets/images/textures/eff_fog_white.png",
    "app/native/assets/images/textures/eff_frame_gold.png",
    "app/native/assets/images/textures/eff_frost_window.png",
    "app/native/assets/images/textures/eff_orange_dust_.png",
    "app/native/assets/images/textures/eff_scope.png",
    "app/native/assets/images/textures/eff_scope1.png",
    "app/native/assets/images/textures/eff_smoke_dark.png",
    "app/native/assets/images/textures/eff_vintage.png",
};

/// Row names of the texture menu. The last row removes the overlay.
inline constexpr int texture_row_count = texture_count + 1;
inline constexpr const char* texture_row_names[texture_row_count] = {
    "Vintage",   "Smoke Dark", "Scope 2",        "Scope",    "Orange Dust", "Frost Window", "Frame",
    "Fog White", "Fog Orange", "Fog GreyYellow", "Fog Grey", "Brick",       "No Texture",
};

/// Row of the texture menu, 0 to texture_count - 1, to its entry in img_textures.
constexpr int texture_entry_of_row(int row) {
  return texture_count - 1 - row;
}

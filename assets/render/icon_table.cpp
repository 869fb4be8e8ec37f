#include "assets/render/icons.h"

namespace assets {
namespace {

constexpr Icon button(const char* name, const char* glyph) {
  return {.name = name, .glyph = glyph, .ground = "disc"};
}
constexpr Icon pressedButton(const char* name, const char* glyph) {
  return {.name = name, .glyph = glyph, .ground = "disc_pressed"};
}
constexpr Icon effect(const char* name, std::optional<int> id) {
  return {.name = name, .glyph = "effect_picture", .effect = id};
}

constexpr Icon table[] = {
    // The program and its menu.
    {.name = "icon_app", .glyph = "icon_app", .size = 256},
    {"ic_settings", "gear"},
    {"ic_help", "help"},
    {.name = "ic_private", .glyph = "eye", .crossed = true},
    {"ic_normal", "eye"},
    {"ic_invite", "invite"},
    {"icon_camera", "camera"},
    {"ic_screenrecord_normal", "screen_record"},
    // Main level of the action menu.
    {"icon_filter", "filter"},
    {"icon_open", "open"},
    {"icon_logos", "layers"},
    {"icon_size", "size"},
    {"icon_screen", "screen"},
    {.name = "icon_lightoff", .glyph = "bulb", .crossed = true},
    {"icon_lighton", "bulb_on"},
    {"icon_switchcamera", "switch"},
    {"icon_mode", "camcorder"},
    {"icon_mode_stabilization", "stabilization"},
    {"icon_scene", "scene"},
    {"icon_scene_snow", "scene_snow"},
    {"icon_scene_night", "scene_night"},
    {"icon_scene_closeup", "scene_closeup"},
    {"icon_scene_action", "scene_action"},
    // Colour filters, with the engine's effect ids.
    {"icon_effect_custom", "mixer"},
    effect("icon_effect_solid_yellow", 1),
    effect("icon_effect_solid_blue", 2),
    effect("icon_effect_solid_green", 3),
    effect("icon_effect_solid_red", 4),
    effect("icon_effect_sepia", 5),
    effect("icon_effect_negative", 6),
    effect("icon_effect_greyscale", 7),
    effect("icon_effect_yellow", 8),
    effect("icon_effect_blue", 9),
    effect("icon_effect_green", 10),
    effect("icon_effect_red", 11),
    effect("icon_effect_normal", -1),
    // Controls on the viewfinder.
    {.name = "ic_camera_normal", .glyph = "dot", .ground = "ring", .size = 256},
    {.name = "ic_camera_toggle", .glyph = "dot", .ground = "ring_pressed", .size = 256},
    {.name = "ic_camera_stop", .glyph = "stop", .ground = "ring", .size = 256},
    {.name = "ic_camera__stop_toggle", .glyph = "stop", .ground = "ring_pressed", .size = 256},
    {"icon_reddot", "dot"},
    {"icon_reddot2", "dot_dim"},
    button("icon_menu", "menu"),
    pressedButton("icon_menu_pressed", "menu"),
    button("icon_film", "film"),
    pressedButton("icon_film_pressed", "film"),
    button("icon_rec_lighton", "bulb_on"),
    {.name = "icon_rec_lightoff", .glyph = "bulb", .ground = "disc", .crossed = true},
    button("ic_play", "play"),
    pressedButton("ic_play_pressed", "play"),
    button("ic_stop_normal", "stop"),
    pressedButton("ic_stop_selected", "stop"),
};

}  // namespace

std::span<const Icon> icons() {
  return table;
}

}  // namespace assets

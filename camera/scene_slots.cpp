#include "camera/scene.h"

#include <cstdio>

#include "app/page_controls.h"
#include "app/tarnelapp.h"

namespace {

void show_scene(tarnelApp* app, int row) {
  set_menu_text(_menuIcons[main_row_scene], _menuSceneIcons[row]);
  set_menu_text(_menuIconNames[main_row_scene], _menuSceneIconNames[row]);
  set_image(app->mSceneIcon, _menuSceneIcons[row]);
  set_visible(app->mSceneIcon, scene_icon_visible(row));
}

}  // namespace

void tarnelApp::apply_stored_scene() {
  const int row = scene_index(mSettings);
  if (camera_set_scene_mode(mCameraHandle, _supported_scene_modes[row]) != CAMERA_EOK) {
    std::fputs("can't not set scene mode in createViewfinder()\n", stderr);
    return;
  }
  show_scene(this, row);
}

void tarnelApp::choose_scene_row(int row) {
  if (camera_set_scene_mode(mCameraHandle, _supported_scene_modes[row]) == CAMERA_EOK) {
    mSettings.sceneIndex = row;
    save_settings();
    show_scene(this, row);
  }
  hide_menu();
}

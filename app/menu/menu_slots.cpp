#include <QDir>
#include <QFile>
#include <algorithm>
#include <cstdio>

#include "app/page_controls.h"
#include "app/tarnelapp.h"
#include "engine/color_filter.h"
#include "engine/filter_thread.h"
#include "engine/overlay.h"
#include "engine/overlay_loader.h"
#include "platform/cascades/list_view.h"
#include "platform/device/info.h"

namespace cascades = bb::cascades;

namespace {

int display_height() {
  return bb::device::DisplayInfo().pixelSize().height();
}

}  // namespace

void tarnelApp::hide_menu() {
  set_visible(mListMenuContainer, false);
  mMenuMode = menu_closed;
  _num_menu_choices = main_menu_count;
  showMenuIcon(true);
}

void tarnelApp::showMenuIcon(bool visible) {
  set_visible(control<cascades::ImageButton>("menuIconImgButton"), visible);
}

void tarnelApp::updateTrackInformation() {
  // A list may have become shorter than the count says: another camera has fewer sizes.
  const int rows = std::min(_num_menu_choices, menu_row_count(mMenuMode, mResolutions ? _num_screen_res : 0));
  const std::span<const camera_res_t> sizes(mResolutions, static_cast<std::size_t>(mResolutions ? _num_screen_res : 0));
  mModel->clear();
  for (int row = 0; row < rows; ++row) mModel->insert(menu_row(mMenuMode, row, sizes));
}

void tarnelApp::setMenuVisible(bool visible) {
  if (auto* const container = control<cascades::Container>("iconListViewContainer")) {
    container->setTopPadding(opening_padding(mRotation.mCaptureAngle, display_height()));
  }
  if (mMenuMode == menu_mixer) close_mixer();
  if (mMenuMode == menu_closed || mMenuMode == menu_main) _num_menu_choices = main_menu_count;
  updateTrackInformation();
  mMenuMode = visible ? menu_main : menu_closed;
}

void tarnelApp::onTap(cascades::TapEvent*) {
  std::fputs("tapped\n", stderr);
  const auto* const tolerance = control<cascades::Container>("setColorContainer");
  if (tolerance && tolerance->isVisible()) {
    setModifyEffectColor();
    return;
  }
  if (mMenuMode == menu_mixer) close_mixer();
  if (mMenuMode != menu_closed) hide_menu();
}

void tarnelApp::peformMenuAction(QVariantList indexPath) {
  auto* const list = control<cascades::ListView>("menuListview");
  if (!list || !list->dataModel()) return;
  const QVariant item = list->dataModel()->data(indexPath);
  if (!item.isValid()) return;  // would be read as row 0
  const int row = item.toMap().value(QStringLiteral("index")).toString().toInt();
  std::fprintf(stderr, "selected index %d\n", row);
  list->clearSelection();
  // The list may be older than the mode.
  if (row < 0 || row >= menu_row_count(mMenuMode, _num_screen_res)) return;
  switch (mMenuMode) {
    case menu_filters:
      return choose_filter_row(row);
    case menu_textures:
      return choose_texture_row(row);
    case menu_sizes:
      return choose_resolution_row(row);
    case menu_scenes:
      return choose_scene_row(row);
    case menu_modes:
      return choose_mode_row(row);
    default:
      return choose_main_row(row);
  }
}

void tarnelApp::open_list(MenuMode mode) {
  mMenuMode = mode;
  _num_menu_choices = menu_row_count(mode, _num_screen_res);
  updateTrackInformation();
}

void tarnelApp::choose_main_row(int row) {
  if (auto* const container = control<cascades::Container>("iconListViewContainer")) {
    container->setTopPadding(main_row_padding(row, mRotation.mCaptureAngle, display_height()));
  }
  const main_row_s& chosen = main_table[row];
  const bool recording = mVideoFd != -1;
  const bool refused = recording && chosen.restarts_camera;
  if (chosen.list != menu_closed && !refused) return open_list(chosen.list);
  hide_menu();
  if (!refused) chosen.act(*this);
}

void tarnelApp::choose_filter_row(int row) {
  auto* const tolerance = control<cascades::Container>("setColorContainer");
  for (QQuickItem* const panel : {tolerance, mEffectContainer, mSetYUVContainer}) set_visible(panel, false);
  const filter_row_s& filter = filter_table[row];
  _cur_camera_filter = filter.effect;
  if (filter.action == filter_action::none) _modify_color = false;
  // The tolerance's panel, which has gone, had taken the place of these; its next tap counts on from where it was.
  set_visible(control<cascades::Container>("screensizeContainer"), true);
  showMenuIcon(true);
  if (filter.action == filter_action::keep_color) {
    FilterColorMatch kept = filter_match_red;
    if (color_match_for_effect(filter.effect, &kept)) filter_init(static_cast<double>(_color_filter_value), kept);
    set_image(control<cascades::ImageView>("effectImg"), filter.icon);
    set_visible(mEffectContainer, true);
    set_visible(tolerance, true);
  }
  hide_menu();
  if (filter.action == filter_action::mixer) show_mixer();
}

void tarnelApp::show_mixer() {
  set_visible(control<cascades::Container>("screensizeContainer"), false);
  showMenuIcon(false);
  set_visible(mSetYUVContainer, true);
  mMenuMode = menu_mixer;
}

void tarnelApp::close_mixer() {
  set_visible(mSetYUVContainer, false);
  set_visible(control<cascades::Container>("screensizeContainer"), true);
  showMenuIcon(true);
}

void tarnelApp::choose_texture_row(int row) {
  set_visible(mEffectContainer, false);
  hide_menu();
  if (row == texture_count) {
    mSettings.overlayPath[0] = '\0';
    suspend_logo_image();
    fullscreen = false;
    return;
  }
  suspend_overlay();
  replace_overlay(texture_path(row, QFile::encodeName(QDir::homePath()).toStdString()).c_str(), true);
}

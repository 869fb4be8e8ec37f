// The program as it is used: its pages in its window, the camera service on the built-in scene, films that are decoded.

#include <gtest/gtest.h>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QQuickWindow>
#include <QScreen>
#include <QTimer>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <random>
#include <set>

#include "app/tarnelapp.h"
#include "engine/filter_thread.h"
#include "engine/overlay.h"
#include "platform/camera/camera_config.h"
#include "platform/cascades/stage.h"
#include "platform/device/sandbox.h"
#include "tests/application/finger.h"
#include "tests/support/film.h"
#include "tests/support/surroundings.h"
#include "tests/support/temp_dir.h"

namespace cascades = bb::cascades;
namespace fs = std::filesystem;
using cascades::Application;

namespace {

constexpr int patience_ms = 30000;

/// Whose cameras see the built-in scene.
class UserOfTheProgram : public Surroundings {
 protected:
  void prepare(const TempDir& home) override {
    fs::create_directories(home.file("XDG_CONFIG_HOME/morvane"));
    write_file(home.file("XDG_CONFIG_HOME/morvane/device.ini"),
               "[camera]\nrear = scene\nfront = scene\nmicrophone = none\n");
    ASSERT_EQ(enter_sandbox(MORVANE_PACKAGE_DIR), 0);
  }
};

[[maybe_unused]] testing::Environment* const surroundings = testing::AddGlobalTestEnvironment(new UserOfTheProgram);

std::vector<fs::path> films() {
  std::vector<fs::path> found;
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(camera_roll_dir(), error)) {
    if (entry.path().extension() == ".mp4") found.push_back(entry.path());
  }
  return found;
}

class EndToEnd : public testing::Test {
 protected:
  EndToEnd() {
    PrefsRecord settings = default_settings();
    settings.rearResolutionIndex = 0;
    settings.firstRunHintShown = 1;
    settings.installRegistered = 1;
    settings.shutterSound = 0;
    ::save_settings(prefs_path, settings);
    _major_error = false;  // of a lost camera before
    fs::remove_all(camera_roll_dir());
    start();
  }

  void start() {
    app = std::make_unique<tarnelApp>(Application::instance());
    ASSERT_TRUE(run_until([&] { return app->mViewfinderWindow->isBound(); })) << "no picture";
  }

  /// Waits until what slides in has come to rest.
  static void wait_for_rest(const QQuickItem* item) {
    QPointF before;
    ASSERT_TRUE(run_until([&] {
      const QPointF now = item->mapToScene({0, 0});
      if (now == before) return true;
      before = now;
      run_for(60);
      return false;
    }));
  }
  void tap_button(const QString& text) const {
    ASSERT_TRUE(run_until([&] { return finger::button(text) != nullptr; })) << text.toStdString();
    QQuickItem* const button = finger::button(text);
    wait_for_rest(button);
    finger::tap(button);
  }
  void tap_control(const char* name) const {
    auto* const item = app->control<QQuickItem>(name);
    ASSERT_TRUE(item && item->isVisible()) << name;
    finger::tap(item);
  }
  /// Opens the action menu and taps two rows.
  void pick(const QString& row, const QString& choice) const {
    tap_control("menuIconImgButton");
    tap_button(row);
    tap_button(choice);
    EXPECT_EQ(app->mMenuMode, menu_closed);
  }
  void choose(const char* field, const QString& option) const {
    auto* const box = app->mSettingsSheet->findChild<cascades::DropDown*>(QLatin1String(field));
    ASSERT_TRUE(box) << field;
    const qsizetype row = box->options().indexOf(option);
    ASSERT_GE(row, 0) << option.toStdString();
    // Where it slides in slowly, the first tap may miss it.
    for (int tap = 0; tap < 10 && !finger::button(option); ++tap) {
      wait_for_rest(box);
      finger::tap(box->mapToScene({box->width() / 2, box->height() - 20}));
      run_for(500);
    }
    tap_button(option);
    EXPECT_EQ(box->selectedIndex(), row);
    run_for(50);  // the list goes away by itself
  }
  void keep_picture(const char* name) const {
    if (const char* const folder = std::getenv("MORVANE_TEST_PICTURES")) {
      Application::instance()->readDisplay().save(QString::fromUtf8(folder) + '/' + QString::fromUtf8(name));
    }
  }

  std::unique_ptr<tarnelApp> app;
};

/// One 2x2 block of an overlay that hides the frame, in the frame's coordinates.
struct Block {
  int x, y;
  std::uint8_t luma, u, v;
};

/// Blocks of an overlay that are opaque and of one luma, with neighbours like them: an encoder keeps those.
std::vector<Block> solid_blocks(const logo_image_s& overlay) {
  std::vector<Block> blocks;
  const auto solid = [&](int x, int y) {
    const std::size_t at = static_cast<std::size_t>(y * overlay.width + x);
    const int spread = std::abs(overlay.luma[at] - overlay.luma[at + 1]);
    return overlay.chroma_alpha[y / 2 * (overlay.width / 2) + x / 2] == 255 && spread < 8;
  };
  for (int y = 2; y + 4 < overlay.height; y += 2) {
    for (int x = 2; x + 4 < overlay.width; x += 2) {
      if (!solid(x, y) || !solid(x - 2, y) || !solid(x + 2, y) || !solid(x, y - 2) || !solid(x, y + 2)) continue;
      const std::uint8_t* const pair = overlay.chroma + y / 2 * overlay.width + x;
      blocks.push_back({overlay.x + x, overlay.y + y, overlay.luma[y * overlay.width + x], pair[0], pair[1]});
    }
  }
  return blocks;
}

/// Share of the blocks that a picture shows.
double share_shown(const film::Picture& picture, const std::vector<Block>& blocks, bool with_color) {
  std::size_t shown = 0;
  for (const Block& block : blocks) {
    const bool luma = std::abs(picture.y(block.x, block.y) - block.luma) < 24;
    const bool color =
        std::abs(picture.u(block.x, block.y) - block.u) < 16 && std::abs(picture.v(block.x, block.y) - block.v) < 16;
    if (luma && (color || !with_color)) ++shown;
  }
  return blocks.empty() ? 0 : static_cast<double>(shown) / static_cast<double>(blocks.size());
}

TEST_F(EndToEnd, FilterTextureAndStampAreInTheFilmAndTheChoicesStay) {
  pick("Screen Size", "960 x 540");
  ASSERT_TRUE(run_until([] { return _screen_wid == 960; }));
  pick("Color Filters", "Sepia");
  EXPECT_EQ(_cur_camera_filter, 5);
  pick("Default Textures", "Frame");
  ASSERT_TRUE(run_until([] { return logo_image.enabled; }));

  finger::type(Qt::Key_Comma, Qt::ControlModifier);
  ASSERT_TRUE(run_until([&] { return app->mSettingsSheet && app->mSettingsSheet->isOpened(); }));
  EXPECT_FALSE(logo_image.enabled);
  choose("timeformatDropdown", "DD-MM-YYYY");
  choose("colorDropdown", "White");
  choose("positionDropdown", "Middle");
  keep_picture("settings.png");
  tap_button("Save");
  EXPECT_FALSE(app->mSettingsSheet->isOpened());
  ASSERT_TRUE(run_until([] { return logo_image.enabled; }));
  ASSERT_TRUE(datetime_image.enabled);

  EXPECT_FALSE(app->control<QQuickItem>("playContainer")->isVisible());
  tap_control("imgbut_record_stop");
  ASSERT_TRUE(run_until([&] { return app->mVideoFd != -1; }));
  EXPECT_TRUE(app->control<QQuickItem>("RecordContainer")->isVisible());
  ASSERT_TRUE(run_until([&] { return app->mRecordLabel->text() == "00:03"; }));
  keep_picture("recording.png");
  const std::vector<Block> texture = solid_blocks(logo_image), stamp = solid_blocks(datetime_image);
  tap_control("imgbut_record_stop");
  EXPECT_EQ(app->mVideoFd, -1);
  EXPECT_TRUE(app->control<QQuickItem>("playContainer")->isVisible());

  const std::string path = app->mSettings.lastVideoPath;
  const film::Film film = film::play(path);
  EXPECT_EQ(film.error, "");
  ASSERT_GT(film.pictures.size(), 30U);
  ASSERT_GT(texture.size(), 50U);
  ASSERT_GT(stamp.size(), 20U);
  for (const std::size_t at : {film.pictures.size() / 3, film.pictures.size() - 2}) {
    const film::Picture& picture = film.pictures[at];
    EXPECT_EQ(picture.width, 960);
    EXPECT_EQ(picture.height, 540);
    for (const int x : {300, 400, 600}) {  // where nothing lies over the picture but the texture's transparent middle
      EXPECT_NEAR(picture.u(x, 200), 109, 4) << x;
      EXPECT_NEAR(picture.v(x, 200), 139, 4) << x;
    }
    EXPECT_GT(share_shown(picture, texture, true), 0.9);
    EXPECT_GT(share_shown(picture, stamp, false), 0.9);
  }

  app.reset();
  start();
  EXPECT_EQ(_screen_wid, 960);
  EXPECT_EQ(app->mSettings.timeFormat, 6);
  EXPECT_EQ(app->mSettings.timeColor, 5);
  EXPECT_EQ(app->mSettings.timePosition, 2);
  EXPECT_EQ(app->mSettings.lastVideoPath, path);
  EXPECT_TRUE(datetime_image.enabled);
  EXPECT_FALSE(logo_image.enabled);
  EXPECT_TRUE(app->control<QQuickItem>("playContainer")->isVisible());
  EXPECT_EQ(app->control<cascades::Label>("screensize")->text(), "960 x 540");
}

TEST_F(EndToEnd, TheLastFilmPlaysInTheWindowAndTheCameraComesBack) {
  finger::type(Qt::Key_R);
  ASSERT_TRUE(run_until([&] { return app->mRecordLabel->text() == "00:02"; }));
  finger::type(Qt::Key_Space);
  ASSERT_EQ(app->mVideoFd, -1);
  finger::tap(app->control<QQuickItem>("playContainer"));
  const auto card = [] { return handset::Stage::instance()->card(); };
  ASSERT_NE(card(), nullptr);
  EXPECT_EQ(app->mCameraHandle, CAMERA_HANDLE_INVALID);
  const auto middle = [] {
    const QImage display = Application::instance()->readDisplay();
    return display.copy(QRect(QPoint(0, display.height() / 3), QSize(display.width(), display.height() / 3)));
  };
  ASSERT_TRUE(run_until([&] { return card() && card()->property("position").toInt() > 300; }));
  const QImage early = middle();
  ASSERT_TRUE(run_until([&] { return card() && card()->property("position").toInt() > 1000; }));
  EXPECT_NE(middle(), early) << "the pictures stand still";
  keep_picture("playing.png");
  ASSERT_TRUE(run_until([&] { return card() == nullptr; })) << "the film has no end";
  EXPECT_TRUE(run_until([&] { return app->mViewfinderWindow->isBound(); }));
  EXPECT_EQ(app->mCameraUnit, CAMERA_UNIT_REAR);
}

TEST_F(EndToEnd, ALostCameraLeavesANoticeAndAFilmAndIsFoundAgain) {
  handset::CameraServiceConfig config = handset::config_from_device_profile();
  const handset::CameraServiceConfig before = config;
  config.front =
      "gst:videotestsrc is-live=true num-buffers=90 pattern=blue ! video/x-raw,width=640,height=480,framerate=30/1";
  handset::configure_camera_service(config);
  tap_control("menuIconImgButton");
  tap_button("Switch Camera");
  ASSERT_TRUE(run_until([&] { return app->mViewfinderWindow->isBound(); }));
  finger::type(Qt::Key_R);
  ASSERT_NE(app->mVideoFd, -1);
  ASSERT_TRUE(run_until([&] { return app->mViewfinderWindow->trouble().startsWith("The camera has stopped: "); }));
  EXPECT_FALSE(app->mViewfinderWindow->isBound());
  keep_picture("disconnected.png");
  finger::type(Qt::Key_R);
  EXPECT_EQ(app->mVideoFd, -1);
  const film::Film film = film::play(app->mSettings.lastVideoPath);
  EXPECT_EQ(film.error, "");
  EXPECT_GT(film.pictures.size(), 20U);
  // What is pressed meanwhile leaves nothing behind.
  finger::type(Qt::Key_R);
  EXPECT_EQ(app->mVideoFd, -1);
  EXPECT_EQ(films().size(), 1U);

  app->onStopCamera();
  app->restartCamera();
  EXPECT_TRUE(run_until([&] { return app->mViewfinderWindow->isBound(); }));
  EXPECT_EQ(app->mViewfinderWindow->trouble(), "");
  EXPECT_EQ(app->mCameraUnit, CAMERA_UNIT_FRONT);
  app.reset();
  handset::configure_camera_service(before);
}

TEST_F(EndToEnd, KeysDoWhatTheHelpSays) {
  finger::type(Qt::Key_M);
  EXPECT_EQ(app->mMenuMode, menu_main);
  ASSERT_TRUE(run_until([] { return finger::button("Screen Size") != nullptr; }));
  for (const Qt::Key key : {Qt::Key_R, Qt::Key_Space}) {
    finger::type(key);
    EXPECT_EQ(app->mVideoFd, -1) << "a recording from under the menu";
  }
  app->setMenuVisible(false);
  while (app->mListMenuContainer->isVisible()) finger::type(Qt::Key_Escape);

  finger::type(Qt::Key_F1);
  ASSERT_NE(app->mHelpPage, nullptr);
  EXPECT_EQ(app->mRoot->top(), app->mHelpPage);
  finger::type(Qt::Key_Escape);
  EXPECT_TRUE(run_until([&] { return app->mRoot->top() != app->mHelpPage; }));

  finger::type(Qt::Key_F10);
  EXPECT_TRUE(run_until([] { return finger::button("Private") != nullptr; }));
  finger::type(Qt::Key_Escape);

  ASSERT_TRUE(run_until([&] {
    finger::type(Qt::Key_R);
    return app->mVideoFd != -1;
  }));
  QTimer::singleShot(1500, app.get(), [] { finger::type(Qt::Key_Q, Qt::ControlModifier); });
  QElapsedTimer clock;
  clock.start();
  QTimer::singleShot(patience_ms, app.get(), &QCoreApplication::quit);
  QCoreApplication::exec();
  EXPECT_LT(clock.elapsed(), patience_ms / 2) << "Ctrl+Q does not quit";
  const std::string path = app->mSettings.lastVideoPath;
  app.reset();
  EXPECT_EQ(film::play(path).error, "");
}

TEST_F(EndToEnd, AScreenThatCannotBeFilmedGivesTheCameraBack) {
  ASSERT_FALSE(Surroundings::on_display());
  tap_control("moreButton");
  tap_button("Record the screen");
  auto* const recorder = app->control<QQuickItem>("screenrecorderContainer");
  EXPECT_TRUE(recorder->isVisible());
  ASSERT_TRUE(run_until([&] { return app->mViewfinderWindow->isBound() && app->mCameraUnit == CAMERA_UNIT_REAR; }));
  EXPECT_TRUE(recorder->isVisible()) << "nothing says why";
  keep_picture("no_screen.png");
  EXPECT_TRUE(run_until([&] { return !recorder->isVisible(); }));
}

/// With a portal whose user takes his time, and ends the sharing some seconds later.
TEST_F(EndToEnd, APortalIsWaitedForByAWindowThatLives) {
  setenv("WAYLAND_DISPLAY", "of-nobody", 1);
  tap_control("moreButton");
  int turns = 0;
  QTimer turn;
  QObject::connect(&turn, &QTimer::timeout, [&] {
    if (app->mCameraHandle != CAMERA_HANDLE_INVALID) return;
    ++turns;
    EXPECT_FALSE(Application::instance()->readDisplay().isNull());
    finger::type(Qt::Key_F1);
    app->restartCamera();  // as a timer might
  });
  turn.start(200);
  tap_button("Record the screen");
  turn.stop();
  unsetenv("WAYLAND_DISPLAY");
  EXPECT_GE(turns, 3);
  EXPECT_EQ(app->mHelpPage, nullptr) << "the window takes input while somebody else is asked";
  ASSERT_TRUE(_screen_recording);
  ASSERT_TRUE(run_until([&] { return app->mViewfinderWindow->isBound(); }));
  finger::type(Qt::Key_R);
  ASSERT_NE(app->mVideoFd, -1);
  ASSERT_TRUE(run_until([&] { return app->mViewfinderWindow->trouble().startsWith("The camera has stopped: "); }));
  tap_control("screenrecord_img");
  EXPECT_EQ(app->mVideoFd, -1);
  const film::Film film = film::play(app->mSettings.lastVideoPath);
  EXPECT_EQ(film.error, "");
  ASSERT_GT(film.pictures.size(), 30U);
  EXPECT_GT(film.pictures.back().v(film.pictures.back().width / 2, 100), 200) << "it is not red";
  EXPECT_TRUE(run_until([&] { return app->mCameraUnit == CAMERA_UNIT_REAR && app->mViewfinderWindow->isBound(); }));
}

/// With a display that is red but for the window.
TEST_F(EndToEnd, XvfbsScreenIsFilmedUnedited) {
  ASSERT_TRUE(Surroundings::on_display()) << "screen_recording.sh gives it a display";
  pick("Color Filters", "Sepia");
  tap_control("moreButton");
  tap_button("Record the screen");
  EXPECT_EQ(app->mCameraUnit, CAMERA_UNIT_DESKTOP);
  EXPECT_TRUE(_screen_recording);
  run_for(300);
  keep_picture("screen_mode.png");
  finger::type(Qt::Key_R);
  ASSERT_TRUE(run_until([&] { return app->mRecordLabel->text() == "00:02"; }));
  finger::type(Qt::Key_R);
  const film::Film film = film::play(app->mSettings.lastVideoPath);
  EXPECT_EQ(film.error, "");
  ASSERT_GT(film.pictures.size(), 20U);
  // The whole screen is in the picture, as large as it gets.
  const QSize screen = QGuiApplication::primaryScreen()->size();
  const film::Picture& picture = film.pictures.back();
  const double scale = std::min(picture.width / double(screen.width()), picture.height / double(screen.height()));
  const auto red = [&](QPoint point) {
    const auto on_picture = [&](int place, int whole, int size) {
      return static_cast<int>((size - whole * scale) / 2 + place * scale);
    };
    return picture.v(on_picture(point.x(), screen.width(), picture.width),
                     on_picture(point.y(), screen.height(), picture.height)) > 200;
  };
  EXPECT_TRUE(red({screen.width() - 12, 12}));
  EXPECT_TRUE(red({screen.width() - 12, screen.height() - 12}));
  // The window's middle shows the screen again; above that it is dark.
  const QRect window = Application::instance()->desktopWindow()->geometry();
  EXPECT_FALSE(red({window.center().x(), window.y() + window.height() / 5}));

  tap_control("screenrecord_img");
  EXPECT_TRUE(run_until([&] { return app->mCameraUnit == CAMERA_UNIT_REAR && app->mViewfinderWindow->isBound(); }));
  EXPECT_FALSE(_screen_recording);
  EXPECT_EQ(_cur_camera_filter, 5);
}

/// Uses whatever is on the screen, at random, from the event loop, dialogs and cards included.
class Monkey {
 public:
  /// Ends the event loop after a time, or later where that was too little for some hundred actions.
  Monkey(tarnelApp& app, int seconds) : app_(app) {
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this, seconds] {
      const qint64 end = seconds * qint64{1000};
      if (clock_.elapsed() > 4 * end || (clock_.elapsed() > end && actions_ >= 600)) return QCoreApplication::quit();
      act();
    });
    clock_.start();
    timer_.start(15);
  }

  /// @return whether a recording is under way
  bool note_film() {
    const bool recording = app_.mVideoFd != -1;
    if (recording) recorded_.insert(app_.mSettings.lastVideoPath);
    return recording;
  }

  int actions() const { return actions_; }
  const std::set<int>& menu_modes() const { return menu_modes_; }
  const std::set<std::string>& tapped() const { return tapped_; }
  const std::set<std::string>& recorded() const { return recorded_; }

 private:
  int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }

  QPointF anywhere() {
    const QQuickWindow* const window = Application::instance()->desktopWindow();
    return QPointF(below(window->width()), below(window->height()));
  }

  void tap_something() {
    const std::vector<QQuickItem*> targets = finger::targets();
    if (targets.empty()) return;
    QQuickItem* const target = targets[random_() % targets.size()];
    tapped_.insert((target->property("text").toString() + '/' + target->parentItem()->objectName()).toStdString());
    finger::tap(target);
  }

  void press_something() {
    struct Press {
      Qt::Key key;
      Qt::KeyboardModifiers modifiers = Qt::NoModifier;
    };
    static constexpr Press presses[] = {{Qt::Key_Escape},
                                        {Qt::Key_Return},
                                        {Qt::Key_Tab},
                                        {Qt::Key_Up},
                                        {Qt::Key_Down},
                                        {Qt::Key_Left},
                                        {Qt::Key_Right},
                                        {Qt::Key_M},
                                        {Qt::Key_F1},
                                        {Qt::Key_F10},
                                        {Qt::Key_Backspace},
                                        {Qt::Key_Comma, Qt::ControlModifier},
                                        {Qt::Key_Left, Qt::ControlModifier},
                                        {Qt::Key_Right, Qt::ControlModifier}};
    const Press& press = presses[below(int{std::size(presses)})];
    finger::type(press.key, press.modifiers);
  }

  void act() {
    ++actions_;
    menu_modes_.insert(app_.mMenuMode);
    const bool recording = note_film();
    const int choice = below(100);
    if (!recording && choice < 30) {
      app_.onStartStopRecording();
    } else if (choice < 70) {
      tap_something();
    } else if (choice < 90) {
      press_something();
    } else if (choice < 95) {
      finger::tap(anywhere());
    } else {
      finger::pinch(anywhere(), below(5) - 2);
    }
  }

  tarnelApp& app_;
  QTimer timer_;
  QElapsedTimer clock_;
  std::mt19937 random_{20261116};
  int actions_ = 0;
  std::set<int> menu_modes_;
  std::set<std::string> tapped_, recorded_;
};

/// Twenty seconds; MORVANE_MONKEY_SECONDS sets another time.
TEST_F(EndToEnd, WhateverIsTappedWhileRecordingNoFilmIsLost) {
  const char* const wanted = std::getenv("MORVANE_MONKEY_SECONDS");
  const int seconds = wanted ? std::atoi(wanted) : 20;
  Monkey monkey(*app, seconds);
  QCoreApplication::exec();
  monkey.note_film();
  keep_picture("monkey.png");
  app.reset();
  ASSERT_TRUE(handset::wait_for_films(std::chrono::seconds(15)));  // as the program does when it ends
  RecordProperty("actions", monkey.actions());
  std::printf("%d actions on %zu controls, %zu films\n", monkey.actions(), monkey.tapped().size(),
              monkey.recorded().size());
  EXPECT_GT(monkey.tapped().size(), 20U);
  EXPECT_GE(monkey.menu_modes().size(), 5U);
  EXPECT_FALSE(monkey.recorded().empty());
  for (const std::string& path : monkey.recorded()) {
    const film::Film film = film::play(path);
    EXPECT_EQ(film.error, "") << path;
    EXPECT_FALSE(film.pictures.empty()) << path;
  }
  EXPECT_EQ(films().size(), monkey.recorded().size());
}

}  // namespace

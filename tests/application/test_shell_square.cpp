// A handset with a square display. What a process's handset is, it reads once: hence a program of its own.

#include <cstdlib>
#include <filesystem>

#include "platform/device/info.h"
#include "platform/device/profile.h"
#include "tests/application/app_fixture.h"
#include "tests/application/fake_camera_service.h"

namespace {

/// Before the application is there, which asks for the display's size.
struct SquareProfile {
  SquareProfile() {
    setenv("XDG_CONFIG_HOME", dir.path().c_str(), 1);
    std::filesystem::create_directory(dir.file("morvane"));
    write_file(dir.file("morvane/device.ini"), "[display]\nwidth = 720\nheight = 720\n");
    device_profile();
  }
  const TempDir dir;
};
const SquareProfile profile;

using Square = AppTest;

TEST_F(Square, TheViewfinderAsksForItsSizeAndIsNotTurned) {
  ASSERT_EQ(bb::device::DisplayInfo().pixelSize(), QSize(720, 720));
  int rotation = -1;
  fake_camera::on_call("open", [&] {
    const auto* const shell = bb::cascades::Application::instance()->findChild<tarnelApp*>();
    screen_get_window_property_iv(shell->mViewfinderWindow->windowHandle(), SCREEN_PROPERTY_ROTATION, &rotation);
  });
  start();
  EXPECT_EQ(rotation, 0);
  EXPECT_FALSE(_device_z10);
  EXPECT_EQ(app->mViewfinderWindow->preferredWidth(), 1440);
  EXPECT_EQ(app->mViewfinderWindow->preferredHeight(), 1080);
}

TEST_F(Square, TheMenuHasNoRoomAboveIt) {
  start();
  app->setMenuVisible(true);
  EXPECT_EQ(on_page<bb::cascades::Container>("iconListViewContainer").topPadding(), 0);
  app->peformMenuAction({5});
  EXPECT_EQ(on_page<bb::cascades::Container>("iconListViewContainer").topPadding(), 10);
}

}  // namespace

// Playing the last film and showing pictures, with the camera around it.

#include <gmock/gmock.h>

#include <QMetaObject>
#include <cstring>

#include "engine/color_filter.h"
#include "platform/cascades/stage.h"
#include "platform/system/invoke.h"
#include "tests/application/app_fixture.h"
#include "tests/application/fake_camera_service.h"

using bb::cascades::Container;
using bb::cascades::ImageButton;
using handset::Stage;
using testing::Contains;
using testing::HasSubstr;

namespace {

class Playback : public AppTest {
 protected:
  ~Playback() override { close_card(); }

  void start_with(const std::string& film) {
    std::strncpy(settings.lastVideoPath, film.c_str(), sizeof settings.lastVideoPath - 1);
    start();
    fake_camera::clear_journal();
  }
  static QObject* card() { return Stage::instance()->card(); }
  static void close_card() {
    if (card()) QMetaObject::invokeMethod(card(), "close");
    EXPECT_TRUE(wait_until([] { return card() == nullptr; }));
  }
  bool shown(const char* container) const { return on_page<Container>(container).isVisible(); }
  bool menu_icon_shown() const { return on_page<ImageButton>("menuIconImgButton").isVisible(); }
};

TEST_F(Playback, TheCameraMakesWayForTheFilmAndComesBack) {
  start_with(sandbox.file("v.mp4"));
  app->mEffectContainer->setVisible(true);
  app->playVideo();
  EXPECT_TRUE(_busy);
  EXPECT_FALSE(fake_camera::is_open());
  ASSERT_NE(card(), nullptr);
  EXPECT_EQ(card()->property("title"), "v.mp4");
  EXPECT_TRUE(shown("videoContainer"));
  EXPECT_FALSE(shown("screensizeContainer"));
  EXPECT_FALSE(shown("effectContainer"));
  EXPECT_FALSE(menu_icon_shown());

  // There is no such film: the card says so and stays until it is closed.
  EXPECT_TRUE(wait_until([] { return card() && !card()->property("message").toString().isEmpty(); }));
  EXPECT_FALSE(fake_camera::is_open());
  close_card();
  EXPECT_TRUE(wait_until([] { return fake_camera::is_open(); }));
  EXPECT_EQ(app->mCameraUnit, CAMERA_UNIT_REAR);
  EXPECT_FALSE(_busy);
  EXPECT_FALSE(shown("videoContainer"));
  EXPECT_TRUE(shown("screensizeContainer"));
  EXPECT_FALSE(shown("effectContainer")) << "stays hidden";
  EXPECT_TRUE(menu_icon_shown());
}

TEST_F(Playback, ASecondFilmTakesTheFirstOnesPlaceWithoutTheCamera) {
  start_with("v.mp4");
  app->playVideo();
  app->playVideo();
  EXPECT_NE(card(), nullptr);
  EXPECT_TRUE(_busy);
  EXPECT_FALSE(fake_camera::is_open());
  EXPECT_TRUE(shown("videoContainer"));
  close_card();
  EXPECT_TRUE(wait_until([] { return fake_camera::is_open(); }));
}

TEST_F(Playback, ThePanelsCloseAsByATap) {
  start_with("v.mp4");
  app->mListMenuContainer->setVisible(true);
  app->setMenuVisible(true);
  ASSERT_EQ(app->mMenuMode, menu_main);
  app->playVideo();
  EXPECT_EQ(app->mMenuMode, menu_closed);
  EXPECT_FALSE(app->mListMenuContainer->isVisible());
}

TEST_F(Playback, TheFrontCameraComesBackAsTheFrontCamera) {
  start_with("v.mp4");
  app->onStopCamera();
  app->onStartFront();
  app->playVideo();
  ASSERT_NE(card(), nullptr);
  close_card();
  EXPECT_TRUE(wait_until([] { return fake_camera::is_open(); }));
  EXPECT_EQ(app->mCameraUnit, CAMERA_UNIT_FRONT);
}

TEST_F(Playback, ARelativePathIsTheWorkingDirectorys) {
  write_file(sandbox.file("v w.mp4"), "no film");
  start_with("v w.mp4");
  app->playVideo();
  // Found, and therefore looked into.
  EXPECT_TRUE(wait_until([] { return card() && !card()->property("message").toString().isEmpty(); }));
  EXPECT_THAT(card()->property("message").toString().toStdString(), testing::Not(HasSubstr("no such file")));
}

TEST_F(Playback, AUriThatIsTooLongIsNotInvokedAndTheCameraComesBack) {
  // 248 characters and "file://" are 255.
  const std::string longest = "/" + std::string(247, 'a');
  start_with(longest);
  app->playVideo();
  EXPECT_NE(card(), nullptr);
  close_card();
  EXPECT_TRUE(wait_until([] { return fake_camera::is_open(); }));

  std::strncpy(app->mSettings.lastVideoPath, (longest + "b").c_str(), sizeof app->mSettings.lastVideoPath - 1);
  EXPECT_THAT(errors_of([this] { app->playVideo(); }),
              HasSubstr("cannot play the film: its URI has more than 255 characters\n"));
  EXPECT_EQ(card(), nullptr);
  EXPECT_TRUE(fake_camera::is_open());
  EXPECT_FALSE(_busy);
  EXPECT_TRUE(menu_icon_shown());
}

TEST_F(Playback, APictureCardChangesNothing) {
  start_with("");
  const int handle = app->mCameraHandle;
  app->showPhotoInCard(QString::fromStdString(sandbox.file("none.png")));
  ASSERT_NE(card(), nullptr);
  EXPECT_EQ(app->findChildren<bb::system::InvokeTargetReply*>(Qt::FindDirectChildrenOnly).size(), 1);
  close_card();
  wait_for(50);
  EXPECT_EQ(app->mCameraHandle, handle);
  EXPECT_THAT(fake_camera::commands(), testing::IsEmpty());
  EXPECT_TRUE(menu_icon_shown());
}

TEST_F(Playback, WhateverItsNameAPictureIsShownAndNotPlayed) {
  start_with("");
  app->showPhotoInCard(QString::fromStdString(sandbox.file("picture")));
  ASSERT_NE(card(), nullptr);
  EXPECT_STREQ(card()->metaObject()->className(), "handset::PictureCard");
  close_card();
  EXPECT_THAT(errors_of([this] { app->showPhotoInCard({}); }), HasSubstr("InvokeTargetReply is NULL: targetReply = "));
  EXPECT_EQ(card(), nullptr);
}

TEST_F(Playback, PagesWithoutTheContainersPlayAllTheSame) {
  start_with("v.mp4");
  for (const char* name : {"videoContainer", "screensizeContainer", "menuIconImgButton"}) remove(name);
  app->playVideo();
  ASSERT_NE(card(), nullptr);
  close_card();
  EXPECT_TRUE(wait_until([] { return fake_camera::is_open(); }));
}

}  // namespace

// Textures and pictures over the frames: the picker, the delayed load, its questions.

#include <gmock/gmock.h>

#include <QTimer>

#include "engine/filter_thread.h"
#include "engine/overlay.h"
#include "engine/overlay_loader.h"
#include "tests/application/app_fixture.h"
#include "tests/application/dialogs.h"
#include "tests/application/fake_camera_service.h"

using testing::ElementsAre;
using testing::EndsWith;

namespace {

constexpr const char* question = "Resize texture to full screen?";
constexpr const char* alert = "Texture must be in ARG32 format.";

class Overlay : public AppTest {
 protected:
  Overlay() {
    start();
    fullscreen = false;
  }

  /// A PNG file in the sandbox.
  std::string picture(const char* name, int width, int height, QImage::Format format = QImage::Format_ARGB32) const {
    QImage image(width, height, format);
    image.fill(Qt::red);
    const std::string path = sandbox.file(name);
    EXPECT_TRUE(image.save(QString::fromStdString(path), "PNG"));
    return path;
  }
  void pick(const std::string& path) const {
    app->open_file_picker(0);
    app->onFilesSelected({QString::fromStdString(path)});
  }
  static bool wait_for_overlay() {
    return wait_until([] { return logo_image.enabled; });
  }
  void show_overlay() const {
    app->load_logo(picture("shown.png", 1280, 4).c_str());
    EXPECT_TRUE(wait_for_overlay());
  }
};

TEST_F(Overlay, APictureKeepsItsSizeOrFillsTheFrame) {
  const dialogs::Answers answers({dialogs::cancel, dialogs::confirm});
  app->mSettings.logoPosition = 3;
  const std::string path = picture("small.png", 1000, 700);
  pick(path);
  EXPECT_EQ(app->mSelectedFile.toStdString(), path);
  EXPECT_EQ(app->mSettings.overlayPath, path);
  EXPECT_FALSE(logo_image.enabled);
  ASSERT_TRUE(wait_for_overlay());
  EXPECT_EQ(logo_image.width, 1000);
  EXPECT_EQ(logo_image.height, 700);
  EXPECT_EQ(logo_image.x, 140);
  EXPECT_EQ(logo_image.y, 10);
  EXPECT_FALSE(fullscreen);

  pick(path);
  ASSERT_TRUE(wait_for_overlay());
  EXPECT_EQ(logo_image.width, 1280);
  EXPECT_EQ(logo_image.height, 720);
  EXPECT_TRUE(fullscreen);
  EXPECT_THAT(answers.bodies(), ElementsAre(question, question));

  pick(picture("wide.png", 1280, 100));
  ASSERT_TRUE(wait_for_overlay());
  EXPECT_EQ(logo_image.height, 100);
  EXPECT_EQ(answers.bodies().size(), 2U);
}

TEST_F(Overlay, WhatHasNoAlphaOrIsNoPictureIsRefused) {
  const dialogs::Answers answers({});
  show_overlay();
  const std::pair<std::string, const char*> files[] = {
      {picture("flat.png", 1280, 720, QImage::Format_RGB32), "logo not in argb32 format\n"},
      {sandbox.file("missing.png"), "logo is null\n"}};
  for (const auto& [path, line] : files) {
    const std::size_t before = answers.bodies().size();
    EXPECT_THAT(errors_of([&, &file = path] {
                  pick(file);
                  EXPECT_TRUE(wait_until([&] { return answers.bodies().size() > before; }));
                }),
                EndsWith(line));  // the start's late lines may come before
    EXPECT_FALSE(logo_image.enabled);
    EXPECT_EQ(logo_image.luma, nullptr);
  }
  EXPECT_THAT(answers.bodies(), ElementsAre(alert, alert));
}

TEST_F(Overlay, CancellingThePickerBringsTheOverlayBack) {
  show_overlay();
  app->open_file_picker(0);
  EXPECT_FALSE(logo_image.enabled);
  app->open_file_picker(0);  // while it is open
  app->onFileCanceled();
  EXPECT_TRUE(logo_image.enabled);
  app->open_file_picker(0);
  app->onFilesSelected({});
  EXPECT_TRUE(logo_image.enabled);
}

TEST_F(Overlay, APathThatDoesNotFitIsRefused) {
  show_overlay();
  const std::string before = app->mSettings.overlayPath;
  fullscreen = true;
  EXPECT_EQ(errors_of([&] { pick("/" + std::string(255, 'x')); }), "overlay path is longer than 255 bytes\n");
  EXPECT_EQ(app->mSettings.overlayPath, before);
  EXPECT_TRUE(logo_image.enabled);
  EXPECT_TRUE(fullscreen);
}

TEST_F(Overlay, ALoadThatComesDueDuringTheQuestionWaitsForTheAnswer) {
  const std::string next = picture("next.png", 1280, 200);
  const dialogs::Answers answers({[&](bb::system::SystemDialog& dialog) {
    app->load_logo(next.c_str());
    wait_for(1300);
    EXPECT_FALSE(logo_image.enabled);
    dialog.confirm();
  }});
  pick(picture("first.png", 100, 100));
  ASSERT_TRUE(wait_for_overlay());
  EXPECT_THAT(answers.bodies(), ElementsAre(question));
  EXPECT_EQ(logo_image.height, 200);
  EXPECT_FALSE(fullscreen);  // the answer was about the first one
}

TEST_F(Overlay, AnOverlayThatIsTakenBackDuringTheQuestionStaysAway) {
  const dialogs::Answers answers({[&](bb::system::SystemDialog& dialog) {
    app->mSettings.overlayPath[0] = '\0';
    dialog.confirm();
  }});
  pick(picture("first.png", 100, 100));
  ASSERT_TRUE(wait_until([&] { return !answers.bodies().empty(); }));
  wait_for(100);
  EXPECT_FALSE(logo_image.enabled);
  EXPECT_FALSE(fullscreen);
}

TEST_F(Overlay, TheProgramMayEndDuringTheQuestion) {
  const dialogs::Answers answers({[](bb::system::SystemDialog&) { QCoreApplication::quit(); }});
  pick(picture("first.png", 100, 100));
  EXPECT_EQ(QCoreApplication::exec(), 0);
  EXPECT_THAT(answers.bodies(), ElementsAre(question));
  end();
  EXPECT_EQ(logo_image.luma, nullptr);
}

TEST_F(Overlay, ALoadThatWasUnderWayWhenItWasSuspendedIsNotLost) {
  app->load_logo(picture("late.png", 1280, 4).c_str());
  app->open_file_picker(0);
  ASSERT_TRUE(wait_for_overlay());
  app->onFileCanceled();
  EXPECT_TRUE(logo_image.enabled);
}

TEST_F(Overlay, TheCameraMayGoDuringTheQuestion) {
  const dialogs::Answers answers({[](bb::system::SystemDialog& dialog) {
    fake_camera::revoke();
    dialog.cancel();
  }});
  pick(picture("first.png", 100, 100));
  ASSERT_TRUE(wait_for_overlay());
  EXPECT_EQ(logo_image.width, 100);
  EXPECT_TRUE(_major_error);
}

}  // namespace

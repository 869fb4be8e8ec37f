// Screenshots: the class that pages may use, and the application's action.

#include "capture/app_shot.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QMetaMethod>
#include <QMetaProperty>
#include <QQmlComponent>
#include <QRegularExpression>
#include <algorithm>
#include <cstdlib>
#include <vector>

#include "capture/screenshot_name.h"
#include "platform/system/dialogs.h"
#include "tests/application/app_fixture.h"

using bb::cascades::Container;
using bb::cascades::ImageButton;

namespace {

std::string name_at(int hour) {
  std::tm time{};
  time.tm_year = 2026 - 1900;
  time.tm_mon = 10;
  time.tm_mday = 16;
  time.tm_hour = hour;
  time.tm_min = 26;
  time.tm_sec = 29;
  char* const name = make_screenshot_name(time);
  const std::string copy = name;
  std::free(name);
  return copy;
}

TEST(AppShotClass, OffersPagesWhatItPromises) {
  const QMetaObject& meta = AppShot::staticMetaObject;
  QStringList methods;
  for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
    const QMetaMethod method = meta.method(i);
    methods << QString::number(method.methodType()) + ' ' + method.typeName() + ' ' + method.methodSignature() + ' ' +
                   method.parameterNames().join(',');
  }
  EXPECT_EQ(methods,
            (QStringList{"1 void saveFolderChanged(QString) saveFolder", "2 void setSaveFolder(QString) saveFolder",
                         "0 QString captureScreen(QString) fileName"}));
  ASSERT_EQ(meta.propertyCount() - meta.propertyOffset(), 1);
  const QMetaProperty folder = meta.property(meta.propertyOffset());
  EXPECT_STREQ(folder.name(), "saveFolder");
  EXPECT_STREQ(folder.notifySignal().name().constData(), "saveFolderChanged");
  EXPECT_TRUE(folder.isReadable() && folder.isWritable() && folder.isStored() && folder.isScriptable() &&
              folder.isDesignable());
}

TEST(ScreenshotName, HasTheDateAndTheTwelveHourClock) {
  EXPECT_EQ(name_at(16), "IMG_Nov-16-2026_04-26-29.png");
  EXPECT_EQ(name_at(4), name_at(16));
  EXPECT_EQ(name_at(0), "IMG_Nov-16-2026_12-26-29.png");
}

/// In an empty working directory.
class Shot : public AppTest {
 protected:
  std::string path(const std::string& name) const { return sandbox.file(name); }
  AppShot shot;
};

TEST_F(Shot, RowsAreCopiedByTheStrideAndNotAByteMore) {
  constexpr int width = 3;
  constexpr int height = 2;
  constexpr int stride = 20;  // five words, of which the last two are not the picture's
  // Exactly as much as belongs to the rows: whatever reads on is seen by the sanitizers.
  std::vector<std::uint32_t> words(2 * stride / 4 - 2, 0xdeadbeef);
  for (std::size_t x = 0; x < width; ++x) {
    words[x] = 0x00112233 + static_cast<std::uint32_t>(x);
    words[stride / 4 + x] = 0xff445566 + static_cast<std::uint32_t>(x);
  }
  const QString file = QString::fromStdString(path("rows.png"));
  ASSERT_TRUE(
      shot.saveImageBufferToFile(file, QSize(width, height), reinterpret_cast<unsigned char*>(words.data()), stride));
  const QImage image(file);
  ASSERT_EQ(image.size(), QSize(width, height));
  for (int x = 0; x < width; ++x) {
    EXPECT_EQ(image.pixel(x, 0), 0xff112233 + static_cast<unsigned>(x)) << "the top byte is no opacity";
    EXPECT_EQ(image.pixel(x, 1), 0xff445566 + static_cast<unsigned>(x));
  }
  // A stride that is too short gives what there is.
  EXPECT_TRUE(shot.saveImageBufferToFile(file, QSize(5, 2), reinterpret_cast<unsigned char*>(words.data()), 12));
  EXPECT_EQ(QImage(file).pixel(2, 0), 0xff112235);
  EXPECT_EQ(QImage(file).pixel(3, 0), 0xff000000);
}

TEST_F(Shot, WhatCannotBeWrittenLeavesNothing) {
  std::uint32_t word = 0xff00ff00;
  auto* const pixels = reinterpret_cast<unsigned char*>(&word);
  const QString nowhere = QString::fromStdString(path("none/a.png"));
  EXPECT_FALSE(shot.saveImageBufferToFile(nowhere, QSize(1, 1), pixels, 4));
  const QString file = QString::fromStdString(path("a.png"));
  EXPECT_FALSE(shot.saveImageBufferToFile(file, QSize(0, 1), pixels, 4));
  EXPECT_FALSE(shot.saveImageBufferToFile(file, QSize(1, 1), nullptr, 4));
  EXPECT_FALSE(shot.saveImageBufferToFile(file, QSize(1, 1), pixels, 0));
  EXPECT_FALSE(QFileInfo::exists(file));
  ASSERT_TRUE(QDir().mkdir(file));
  EXPECT_FALSE(shot.saveImageBufferToFile(file, QSize(1, 1), pixels, 4));
  EXPECT_EQ(QDir(QString::fromStdString(sandbox.path())).entryList({"*.png*"}, QDir::AllEntries).size(), 1);
}

TEST_F(Shot, TheFolderIsCreatedWhenItChanges) {
  EXPECT_EQ(shot.saveFolder(), "/shared/camera/");
  QStringList changed;
  bool was_there = true;
  QObject::connect(&shot, &AppShot::saveFolderChanged, [&](const QString& folder) {
    changed << folder;
    was_there = QFileInfo::exists("a/b");
  });
  shot.setSaveFolder("/shared/camera/");
  EXPECT_EQ(changed, QStringList());
  EXPECT_FALSE(QFileInfo::exists("shared")) << "nor is the folder touched";

  shot.setSaveFolder("/a/b/");
  EXPECT_EQ(changed, QStringList{"/a/b/"});
  EXPECT_FALSE(was_there) << "the news come before the folder";
  EXPECT_TRUE(QFileInfo("a/b").isDir());

  write_file(path("plain"), "a file");
  EXPECT_THAT(errors_of([&] { shot.setSaveFolder("/plain/sub/"); }),
              testing::HasSubstr("AppShot: Failed to create save directory, screen shots might not be saved.\n"));
  EXPECT_EQ(shot.saveFolder(), "/plain/sub/") << "used all the same";
}

class ScreenshotAction : public AppTest {
 protected:
  QStringList files() const {
    return QDir(QString::fromStdString(sandbox.file("shared/camera"))).entryList(QDir::Files);
  }
  QStringList toasts() const {
    QStringList texts;
    for (const auto* toast : app->findChildren<bb::system::SystemToast*>()) texts << toast->body();
    return texts;
  }
  std::vector<QQuickItem*> controls() const {
    return {&on_page<Container>("screensizeContainer"), &on_page<Container>("playContainer"),
            &on_page<ImageButton>("menuIconImgButton")};
  }
};

TEST_F(ScreenshotAction, SavesTheWindowWithoutTheControls) {
  start();
  ASSERT_TRUE(QDir().mkpath(QString::fromStdString(sandbox.file("shared/camera"))));
  const auto items = app->findChildren<bb::cascades::ActionItem*>(Qt::FindDirectChildrenOnly);
  const auto item =
      std::find_if(items.begin(), items.end(), [](const auto* any) { return any->title() == "ScreenShot"; });
  ASSERT_NE(item, items.end());
  EXPECT_EQ((*item)->imageSource(), QUrl("asset:///images/icon_camera.png"));
  Q_EMIT(*item)->triggered();
  for (const QQuickItem* control : controls()) EXPECT_FALSE(control->isVisible());
  wait_for(300);
  EXPECT_EQ(files(), QStringList()) << "not before the window is drawn anew";
  ASSERT_TRUE(wait_until([this] { return !files().isEmpty(); }));
  ASSERT_EQ(files().size(), 1);
  EXPECT_TRUE(
      QRegularExpression("^IMG_[A-Z][a-z]{2}-\\d\\d-\\d{4}_\\d\\d-\\d\\d-\\d\\d\\.png$").match(files()[0]).hasMatch())
      << files()[0].toStdString();
  const QImage saved(QString::fromStdString(sandbox.file("shared/camera/")) + files()[0]);
  EXPECT_EQ(saved.size(), QSize(768, 1280));
  EXPECT_EQ(toasts(), QStringList{"Screen shot saved to the Camera folder."});
  for (const QQuickItem* control : controls()) EXPECT_TRUE(control->isVisible()) << "whatever it was before";
}

TEST_F(ScreenshotAction, ThePictureHasTheWindowsColours) {
  start();
  ASSERT_TRUE(QDir().mkpath(QString::fromStdString(sandbox.file("shared/camera"))));
  const auto paint = [this](const char* colour) {
    QQmlComponent component(bb::cascades::Application::instance()->engine());
    component.setData("import QtQuick; Rectangle { width: 200; height: 100 }", {});
    auto* const item = qobject_cast<QQuickItem*>(component.create());
    item->setProperty("color", QColor(colour));
    item->setParent(app->mRoot);
    item->setParentItem(app->mRoot);
    item->setZ(100);
  };
  paint("#12a0f3");
  AppShot shot;
  const QString file = shot.captureScreen("colours.png");
  EXPECT_EQ(file.toStdString(), sandbox.path() + "/shared/camera/colours.png");
  const QImage saved(file);
  ASSERT_EQ(saved.size(), QSize(768, 1280));
  EXPECT_EQ(saved.pixelColor(100, 50), QColor("#12a0f3"));
  EXPECT_NE(saved.pixelColor(400, 600), QColor("#12a0f3"));
}

TEST_F(ScreenshotAction, AFailedWriteIsALineAndTheToastTheSame) {
  start();
  remove("playContainer");
  EXPECT_THAT(errors_of([this] { app->delay_screenshot(); }), testing::EndsWith("AppShot: Failed to save file.\n"));
  EXPECT_EQ(toasts(), QStringList{"Screen shot saved to the Camera folder."});
  AppShot shot;
  EXPECT_EQ(shot.captureScreen("a.png").toStdString(), sandbox.path() + "/shared/camera/a.png");
}

}  // namespace

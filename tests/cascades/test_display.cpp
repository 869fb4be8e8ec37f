// The display in its window: to scale, turned, and read back.

#include <QSignalSpy>

#include "platform/cascades/display_window.h"
#include "platform/cascades/window_geometry.h"
#include "platform/screen/screen_window.h"
#include "tests/cascades/fixture.h"

using namespace bb::cascades;

namespace {

constexpr char four_colours[] = R"(Page {
  Grid { columns: 2
    Repeater { model: ["red", "lime", "blue", "yellow"]
      Rectangle { required property color modelData; width: 384; height: 640; color: modelData } } } })";

using DisplayTest = CascadesTest;

QRectF on_screen(const QQuickItem* display) {
  return display->mapRectToScene(QRectF(0, 0, display->width(), display->height()));
}

}  // namespace

TEST(WindowGeometry, FitsTheDesktopAndKeepsTheDisplaysShape) {
  const QSize display(768, 1280);
  EXPECT_EQ(handset::first_window_size(display, {1920, 1080}), QSize(551, 918));
  EXPECT_EQ(handset::first_window_size(display, {3840, 2160}), display);
  EXPECT_EQ(handset::first_window_size({1280, 768}, {800, 1200}), QSize(680, 408));
  EXPECT_EQ(handset::turned_display(display, 90), QSize(1280, 768));
  EXPECT_EQ(handset::turned_display(display, 180), display);
  EXPECT_EQ(handset::reshaped_window_size({551, 918}, {1280, 768}, {1920, 1080}), QSize(918, 551));
  EXPECT_EQ(handset::reshaped_window_size({551, 918}, {1280, 768}, {640, 480}), QSize(640, 384));
}

TEST_F(DisplayTest, IsScaledUniformlyIntoTheMiddleOfAnyWindow) {
  const QQuickItem* display = app().display();
  for (const QSize size : {QSize(408, 680), QSize(900, 480), QSize(300, 900), QSize(1536, 2560)}) {
    window()->resize(size);
    settle();
    const QRectF shown = on_screen(display);
    EXPECT_EQ(display->size(), QSizeF(768, 1280));
    EXPECT_NEAR(shown.width() / shown.height(), 0.6, 1e-6);
    EXPECT_NEAR(shown.center().x(), size.width() / 2.0, 0.01);
    EXPECT_NEAR(shown.center().y(), size.height() / 2.0, 0.01);
    EXPECT_TRUE(qFuzzyCompare(shown.width(), size.width()) || qFuzzyCompare(shown.height(), size.height()));
  }
}

TEST_F(DisplayTest, TurnsByKeysAndTellsBeforeItIsLaidOutAnew) {
  AbstractPane* page = show("Page { }");
  OrientationSupport* support = OrientationSupport::instance();
  QList<QSizeF> sizes_when_told;
  QList<int> told;
  const auto connection =
      QObject::connect(support, &OrientationSupport::orientationAboutToChange, [&](UIOrientation::Type orientation) {
        told.append(orientation);
        sizes_when_told.append(app().display()->size());
      });
  press(Qt::Key_Right, Qt::ControlModifier);
  EXPECT_EQ(support->displayDirection(), DisplayDirection::East);
  EXPECT_EQ(support->orientation(), UIOrientation::Landscape);
  EXPECT_EQ(app().display()->size(), QSizeF(1280, 768));
  EXPECT_EQ(page->size(), QSizeF(1280, 768));
  EXPECT_EQ(window()->size(), QSize(680, 408));
  press(Qt::Key_Right, Qt::ControlModifier);
  press(Qt::Key_Left, Qt::ControlModifier);
  press(Qt::Key_Left, Qt::ControlModifier);
  press(Qt::Key_Left, Qt::ControlModifier);
  EXPECT_EQ(support->displayDirection(), DisplayDirection::West);
  EXPECT_EQ(told, QList<int>({1, 0, 1, 0, 1}));
  EXPECT_EQ(sizes_when_told.first(), QSizeF(768, 1280));
  support->turnTo(45);
  support->turnTo(-90);
  support->turnTo(270);
  EXPECT_EQ(told.size(), 5);
  QObject::disconnect(connection);
}

TEST_F(DisplayTest, KeepsItsSceneInFrontOfTheWindowsBezelAtEveryDirection) {
  show("Page { Rectangle { anchors.fill: parent; color: \"red\" } }");
  for (const int direction : {0, 90, 180, 270}) {
    OrientationSupport::instance()->turnTo(direction);
    settle();
    const QImage shown = window()->grabWindow();
    EXPECT_EQ(shown.pixelColor(shown.rect().center()), QColor("red")) << direction;
  }
}

TEST_F(DisplayTest, IsReadUprightInItsOwnResolution) {
  show(four_colours);
  const auto read = [] { return app().mainWindow()->handle()->read(); };
  window()->resize(500, 480);
  settle();
  QImage image = read();
  ASSERT_EQ(image.size(), QSize(768, 1280));
  EXPECT_EQ(image.format(), QImage::Format_ARGB32);
  EXPECT_EQ(image.pixelColor(2, 400), QColor("red"));
  EXPECT_EQ(image.pixelColor(766, 400), QColor("lime"));
  EXPECT_EQ(image.pixelColor(2, 1278), QColor("blue"));
  EXPECT_EQ(image.pixelColor(766, 1278), QColor("yellow"));
  EXPECT_EQ(image.pixelColor(383, 639), QColor("red"));
  EXPECT_EQ(image.pixelColor(384, 640), QColor("yellow"));

  OrientationSupport::instance()->turnTo(90);
  settle();
  image = read();
  ASSERT_EQ(image.size(), QSize(1280, 768));
  EXPECT_EQ(image.pixelColor(2, 400), QColor("red"));
}

TEST_F(DisplayTest, IsReadWithWhatLiesOverTheScene) {
  show("Page { Rectangle { anchors.fill: parent; color: \"red\" } }");
  FakeDialog dialog;
  stage()->open_dialog(&dialog);
  settle();
  const QImage image = app().readDisplay();
  EXPECT_NE(image.pixelColor(20, 1000), QColor("red"));
  stage()->close_dialog(&dialog);
}

TEST_F(DisplayTest, StaysAwakeWithoutABus) {
  app().mainWindow()->setScreenIdleMode(ScreenIdleMode::KeepAwake);
  EXPECT_EQ(app().mainWindow()->screenIdleMode(), ScreenIdleMode::KeepAwake);
  app().mainWindow()->setScreenIdleMode(ScreenIdleMode::Normal);
}

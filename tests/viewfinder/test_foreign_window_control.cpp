#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QQuickWindow>
#include <QSignalSpy>
#include <thread>

#include "platform/camera/viewfinder_slot.h"
#include "platform/cascades/foreign_window_control.h"
#include "platform/cascades/orientation.h"
#include "tests/viewfinder/posted_frame.h"

using bb::cascades::ForeignWindowControl;
using bb::cascades::OrientationSupport;

namespace {

const QColor colours[4] = {Qt::red, Qt::green, Qt::blue, Qt::white};

bool near(const QColor& a, const QColor& b) {
  return std::abs(a.red() - b.red()) <= colour_tolerance && std::abs(a.green() - b.green()) <= colour_tolerance &&
         std::abs(a.blue() - b.blue()) <= colour_tolerance;
}

/// A window of the display's size with nothing but the control in it.
class Control : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    static int argc = 1;
    static char name[] = "test_viewfinder";
    static char* argv[] = {name, nullptr};
    if (qApp == nullptr) new QGuiApplication(argc, argv);
    qRegisterMetaType<screen_window_t>("screen_window_t");
  }
  Control() : slot_(handset::viewfinder_slot("morvane", "view")) {
    window_.resize(240, 400);
    window_.show();
    control_ = new ForeignWindowControl(window_.contentItem());
    control_->setSize({240, 400});
    control_->setWindowId("view");
  }
  ~Control() override {
    delete control_;
    OrientationSupport::instance()->turnTo(0);
  }

  void post(int width = 320, int height = 180) { slot_->post(quadrants(width, height, colours)); }
  static void settle() {
    for (int i = 0; i < 3; ++i) QCoreApplication::processEvents();
  }
  QImage grab() {
    settle();
    return window_.grabWindow();
  }
  void resize(int width, int height) {
    window_.resize(width, height);
    control_->setSize(QSizeF(width, height));
  }
  /// Colours of the quadrants of the picture, which fills `area`.
  std::vector<QColor> seen(QRect area) {
    const QImage image = grab();
    std::vector<QColor> result;
    for (const auto& [x, y] : {std::pair{1, 1}, {3, 1}, {3, 3}, {1, 3}}) {
      result.push_back(image.pixelColor(area.x() + area.width() * x / 4, area.y() + area.height() * y / 4));
    }
    return result;
  }
  void expect_quadrants(QRect area, const std::vector<QColor>& expected) {
    const std::vector<QColor> got = seen(area);
    for (std::size_t i = 0; i < 4; ++i) {
      EXPECT_TRUE(near(got[i], expected[i])) << i << " is " << got[i].name().toStdString();
    }
  }
  void set(int property, int value) {
    EXPECT_EQ(screen_set_window_property_iv(control_->windowHandle(), property, &value), 0);
  }

  QQuickWindow window_;
  std::shared_ptr<handset::ViewfinderSlot> slot_;
  ForeignWindowControl* control_;
};

TEST_F(Control, AttachesToEachProducer) {
  QSignalSpy attached(control_, &ForeignWindowControl::windowAttached);
  QSignalSpy detached(control_, &ForeignWindowControl::windowDetached);
  ASSERT_NE(control_->windowHandle(), nullptr);
  settle();
  EXPECT_FALSE(control_->isBound());
  post();
  post();
  EXPECT_TRUE(attached.empty());  // it comes with the event loop
  settle();
  ASSERT_EQ(attached.count(), 1);
  EXPECT_TRUE(control_->isBound());
  EXPECT_EQ(attached[0][0].value<screen_window_t>(), control_->windowHandle());
  EXPECT_EQ(attached[0][1].toString(), control_->windowGroup());
  EXPECT_EQ(attached[0][2].toString(), "view");
  // Closed and opened again between two looks.
  slot_->clear();
  post();
  settle();
  EXPECT_EQ(attached.count(), 2);
  EXPECT_EQ(detached.count(), 1);
  slot_->clear();
  settle();
  EXPECT_EQ(detached.count(), 2);
  EXPECT_FALSE(control_->isBound());
}

TEST_F(Control, FindsAProducerThatWasThereBefore) {
  handset::viewfinder_slot("morvane", "view");
  const auto other = handset::viewfinder_slot("morvane", "other");
  other->post(quadrants(64, 48, colours));
  QSignalSpy attached(control_, &ForeignWindowControl::windowAttached);
  control_->setWindowId("other");
  settle();
  EXPECT_EQ(attached.count(), 1);
  post();  // to a slot without a listener
  control_->setWindowId("");
  settle();
  EXPECT_FALSE(control_->isBound());
}

TEST_F(Control, ShowsTheWholePictureInTheMiddleWithAGlowAroundIt) {
  post();
  expect_quadrants({0, 132, 240, 135}, {Qt::red, Qt::green, Qt::blue, Qt::white});
  const QImage image = grab();
  const QColor top = image.pixelColor(30, 20);
  EXPECT_GT(top.red(), top.green() + 10);
  EXPECT_LT(top.red(), 140);
}

TEST_F(Control, KeepsItsPlaceInAScaledDisplay) {
  QQuickItem display(window_.contentItem());
  display.setSize({480, 800});
  display.setTransformOrigin(QQuickItem::TopLeft);
  display.setScale(0.5);
  control_->setParentItem(&display);
  control_->setSize({480, 800});
  // Each picture and each notice after the first comes into a scene that has been drawn before.
  for (int producer = 0; producer < 3; ++producer) {
    post();
    expect_quadrants({0, 132, 240, 135}, {Qt::red, Qt::green, Qt::blue, Qt::white});
    slot_->clear();
    slot_->set_notice("camera disconnected");
    const QImage image = grab();
    int left = image.width(), right = 0;
    for (int y = 190; y < 210; ++y) {
      for (int x = 0; x < image.width(); ++x) {
        if (image.pixelColor(x, y).lightness() < 200) continue;
        left = std::min(left, x);
        right = std::max(right, x);
      }
    }
    EXPECT_NEAR(left + right, image.width(), 8) << "the notice stands in the middle";
    slot_->set_notice("");
    grab();
  }
  control_->setParentItem(window_.contentItem());
}

TEST_F(Control, TurnsAndMirrors) {
  resize(200, 200);
  slot_->post(quadrants(160, 160, colours));
  settle();
  const QRect all(0, 0, 200, 200);
  expect_quadrants(all, {Qt::red, Qt::green, Qt::blue, Qt::white});
  set(SCREEN_PROPERTY_ROTATION, 90);
  expect_quadrants(all, {Qt::white, Qt::red, Qt::green, Qt::blue});
  set(SCREEN_PROPERTY_ROTATION, 0);
  set(SCREEN_PROPERTY_MIRROR, 1);
  expect_quadrants(all, {Qt::green, Qt::red, Qt::white, Qt::blue});
  // The stream turns before the mirror does, the window and the handset after it.
  slot_->set_rotation(90);
  expect_quadrants(all, {Qt::red, Qt::white, Qt::blue, Qt::green});
  set(SCREEN_PROPERTY_ROTATION, 90);
  expect_quadrants(all, {Qt::green, Qt::red, Qt::white, Qt::blue});
  slot_->set_rotation(0);
  set(SCREEN_PROPERTY_ROTATION, 270);
  OrientationSupport::instance()->turnTo(90);
  expect_quadrants(all, {Qt::green, Qt::red, Qt::white, Qt::blue});
}

TEST_F(Control, StretchesASimilarShape) {
  resize(400, 240);
  slot_->post(quadrants(320, 240, colours));
  expect_quadrants({0, 0, 400, 240}, {Qt::red, Qt::green, Qt::blue, Qt::white});
  const QImage image = grab();
  EXPECT_TRUE(near(image.pixelColor(2, 2), Qt::red));
  EXPECT_TRUE(near(image.pixelColor(397, 237), Qt::blue));
}

TEST_F(Control, KeepsThePixelsOfAFrameOfItsSize) {
  resize(320, 180);
  const QColor greys[4] = {QColor(10, 10, 10), QColor(200, 200, 200), QColor(90, 90, 90), QColor(30, 30, 30)};
  slot_->post(quadrants(320, 180, greys));
  const QImage image = grab();
  for (int x = 0; x < 320; ++x) ASSERT_EQ(qGreen(image.pixel(x, 45)), x < 160 ? 10 : 200) << x;
}

TEST_F(Control, GoesDarkWithANoticeWhenTheProducerIsGone) {
  QSignalSpy notices(control_, &ForeignWindowControl::noticeChanged);
  post();
  settle();
  slot_->clear();
  slot_->set_notice("camera disconnected");
  const QImage image = grab();
  EXPECT_EQ(notices.count(), 1);
  EXPECT_EQ(control_->notice(), "camera disconnected");
  EXPECT_LT(image.pixelColor(60, 80).lightness(), 20);
  int bright = 0;
  for (int x = 0; x < image.width(); ++x) {
    for (int y = 180; y < 220; ++y) bright += image.pixelColor(x, y).lightness() > 200;
  }
  EXPECT_GT(bright, 100);
  slot_->set_notice("");
  const QImage after = grab();
  EXPECT_LT(after.pixelColor(120, 200).lightness(), 20);
}

TEST_F(Control, ShowsAHintWithThePictureOnly) {
  slot_->set_hint("No camera found: this is the built-in scene");
  settle();
  EXPECT_EQ(control_->hint(), "");
  post();
  settle();
  EXPECT_EQ(control_->hint(), "No camera found: this is the built-in scene");
  slot_->clear();
  settle();
  EXPECT_EQ(control_->hint(), "");
  slot_->set_hint("");
}

TEST_F(Control, PassesAStatusOnAsLongAsItHolds) {
  QSignalSpy changes(control_, &ForeignWindowControl::statusChanged);
  post();
  slot_->set_status("no sound");
  settle();
  EXPECT_EQ(control_->status(), "no sound");
  control_->setWindowId("other");
  EXPECT_EQ(control_->status(), "");
  control_->setWindowId("view");
  settle();
  EXPECT_EQ(control_->status(), "no sound") << "the slot's status is older than the control's interest";
  slot_->set_status("");
  settle();
  EXPECT_EQ(control_->status(), "");
  EXPECT_EQ(changes.count(), 4);
}

TEST_F(Control, HasTheWindowsZOrder) {
  set(SCREEN_PROPERTY_ZORDER, -1);
  EXPECT_EQ(control_->z(), -1);
  void* context = nullptr;
  EXPECT_EQ(screen_get_window_property_pv(control_->windowHandle(), SCREEN_PROPERTY_CONTEXT, &context), 0);
  EXPECT_EQ(screen_flush_context(static_cast<screen_context_t>(context), 0), 0);
  EXPECT_EQ(screen_destroy_context(static_cast<screen_context_t>(context)), 0);
}

TEST_F(Control, MayGoAwayWhileFramesArrive) {
  const handset::Frame frames[2] = {quadrants(64, 48, colours), quadrants(96, 32, colours)};
  std::atomic<bool> stop{false};
  std::thread producer([&] {
    for (int i = 0; !stop; ++i) {
      slot_->post(frames[i % 2]);
      if (i % 50 == 0) slot_->clear();
      if (i % 30 == 0) slot_->set_notice(i % 60 == 0 ? "gone" : "");
    }
    slot_->clear();
  });
  for (int round = 0; round < 60; ++round) {
    delete control_;
    control_ = new ForeignWindowControl(window_.contentItem());
    control_->setSize({240, 400});
    control_->setWindowId("view");
    QCoreApplication::processEvents();
    if (round % 10 == 0) {
      EXPECT_FALSE(window_.grabWindow().isNull());
    }
  }
  stop = true;
  producer.join();
  slot_->set_notice("");
  settle();
  EXPECT_FALSE(control_->isBound());
}

}  // namespace

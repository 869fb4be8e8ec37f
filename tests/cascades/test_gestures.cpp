// Taps and pinches, by mouse, fingers and wheel.

#include <QSignalSpy>
#include <algorithm>

#include "platform/cascades/container.h"
#include "platform/cascades/gestures.h"
#include "tests/cascades/fixture.h"

using namespace bb::cascades;

namespace {

constexpr char scene[] = R"(Page {
  Container { objectName: "area"; anchors.fill: parent
    ImageButton { objectName: "button"; accessibleName: "b"; x: 40; y: 40; width: 200; height: 200 }
    Slider { objectName: "slider"; accessibleName: "s"; x: 40; y: 300; width: 600; height: 100 }
    Rectangle { objectName: "passive"; x: 40; y: 500; width: 200; height: 200; color: "gray"
      TapHandler { } } } })";

class GestureTest : public CascadesTest {
 protected:
  void SetUp() override {
    CascadesTest::SetUp();
    show(scene);
    area_ = static_cast<Container*>(item("area"));
    area_->addGestureHandler(tap_);
    area_->addGestureHandler(pinch_);
    QObject::connect(tap_, &TapHandler::tapped, [this](TapEvent* event) {
      log_.append("tap");
      tapped_at_ = {event->localX(), event->localY()};
    });
    QObject::connect(pinch_, &PinchHandler::pinchStarted, [this](PinchEvent* event) { note("start", event); });
    QObject::connect(pinch_, &PinchHandler::pinchUpdated, [this](PinchEvent* event) { note("update", event); });
    QObject::connect(pinch_, &PinchHandler::pinchEnded, [this](PinchEvent* event) { note("end", event); });
    QObject::connect(pinch_, &PinchHandler::pinchCancelled, [this] { log_.append("cancel"); });
  }

  void note(const char* what, const PinchEvent* event) {
    EXPECT_TRUE(std::isfinite(event->pinchRatio()) && event->pinchRatio() > 0);
    log_.append(what);
    ratios_.append(event->pinchRatio());
  }

  QPoint place(qreal x, qreal y) const { return at(area_, {x, y}); }

  Container* area_ = nullptr;
  TapHandler* tap_ = new TapHandler;
  PinchHandler* pinch_ = new PinchHandler;
  QStringList log_;
  QList<float> ratios_;
  QPointF tapped_at_;
};

QPointingDevice* touchscreen() {
  static QPointingDevice* device = QTest::createTouchDevice();
  return device;
}

}  // namespace

TEST_F(GestureTest, ClickInPlaceIsATapAtThePixelOfTheDisplay) {
  QTest::mouseClick(window(), Qt::LeftButton, {}, place(500, 1000));
  EXPECT_EQ(log_, QStringList("tap"));
  EXPECT_NEAR(tapped_at_.x(), 500, 2);
  EXPECT_NEAR(tapped_at_.y(), 1000, 2);
}

TEST_F(GestureTest, DragsAndOtherButtonsAreNoTap) {
  QTest::mousePress(window(), Qt::LeftButton, {}, place(300, 1000));
  QTest::mouseMove(window(), place(500, 1000));
  QTest::mouseMove(window(), place(300, 1000));
  QTest::mouseRelease(window(), Qt::LeftButton, {}, place(300, 1000));
  QTest::mouseClick(window(), Qt::RightButton, {}, place(500, 1000));
  EXPECT_EQ(log_, QStringList());
}

TEST_F(GestureTest, ControlsOnTopKeepTheirClicks) {
  QSignalSpy clicked(item("button"), SIGNAL(clicked()));
  QTest::mouseClick(window(), Qt::LeftButton, {}, middle(item("button")));
  QTest::mouseClick(window(), Qt::LeftButton, {}, middle(item("slider")));
  QTest::mouseClick(window(), Qt::LeftButton, {}, middle(item("passive")));
  QTest::touchEvent(window(), touchscreen()).press(0, middle(item("button")));
  QTest::touchEvent(window(), touchscreen()).release(0, middle(item("button")));
  QTest::touchEvent(window(), touchscreen()).press(0, middle(item("passive")));
  QTest::touchEvent(window(), touchscreen()).release(0, middle(item("passive")));
  EXPECT_EQ(clicked.count(), 2);
  EXPECT_EQ(log_, QStringList());
}

TEST_F(GestureTest, OneFingerTapsOnce) {
  QTest::touchEvent(window(), touchscreen()).press(0, place(500, 1000));
  QTest::touchEvent(window(), touchscreen()).release(0, place(500, 1000));
  settle();
  EXPECT_EQ(log_, QStringList("tap"));
}

TEST_F(GestureTest, TwoFingersPinchAndNeverTap) {
  // One sequence: a finger that rests has its place from the event before.
  QTest::QTouchEventSequence fingers = QTest::touchEvent(window(), touchscreen(), false);
  const auto happen = [this, &fingers] {
    fingers.commit();
    settle(50);
  };
  fingers.press(0, place(300, 1000));
  happen();
  fingers.stationary(0).press(1, place(500, 1000));
  happen();
  fingers.stationary(0).move(1, place(700, 1000));
  happen();
  fingers.move(0, place(700, 1000)).stationary(1);
  happen();
  fingers.stationary(0).release(1, place(700, 1000));
  happen();
  fingers.release(0, place(700, 1000));
  happen();
  ASSERT_EQ(log_, QStringList({"start", "update", "update", "end"}));
  EXPECT_EQ(ratios_[0], 1);
  EXPECT_NEAR(ratios_[1], 2, 0.03);
  EXPECT_NEAR(ratios_[2], 1 / 200.0, 1e-3);
  EXPECT_EQ(ratios_[3], ratios_[2]);
}

TEST_F(GestureTest, LosingTheFingersCancelsThePinch) {
  QTest::touchEvent(window(), touchscreen()).press(0, place(300, 1000)).press(1, place(500, 1000));
  ASSERT_EQ(log_, QStringList("start"));
  area_->setVisible(false);
  EXPECT_EQ(log_, QStringList({"start", "cancel"}));
  QTest::touchEvent(window(), touchscreen()).release(0, place(300, 1000)).release(1, place(500, 1000));
  EXPECT_EQ(log_, QStringList({"start", "cancel"}));
}

TEST_F(GestureTest, CtrlAndWheelAreOnePinchUntilAPause) {
  wheel(place(500, 1000), 120, Qt::NoModifier);
  EXPECT_EQ(log_, QStringList());
  wheel(place(500, 1000), 120, Qt::ControlModifier);
  wheel(place(500, 1000), 120, Qt::ControlModifier);
  wheel(place(500, 1000), -60, Qt::ControlModifier);
  ASSERT_EQ(log_, QStringList({"start", "update", "update", "update", "update"}));
  EXPECT_EQ(ratios_[1], 1);  // from which the handlers measure
  EXPECT_NEAR(ratios_[2], 1.1, 1e-3);
  EXPECT_NEAR(ratios_[3], 1.2, 1e-3);
  EXPECT_NEAR(ratios_[4], 1.15, 1e-3);
  EXPECT_TRUE(QTest::qWaitFor([this] { return log_.last() == "end"; }, 2000));
  EXPECT_NEAR(ratios_.last(), 1.15, 1e-3);
}

TEST_F(GestureTest, LettingCtrlGoEndsThePinchAtOnce) {
  QTest::keyPress(window(), Qt::Key_Control);
  for (int i = 0; i < 30; ++i) wheel(place(500, 1000), -120, Qt::ControlModifier);
  QTest::keyRelease(window(), Qt::Key_Control);
  ASSERT_EQ(log_.last(), "end");
  // No ratio of fingers gets to zero: thirty notches are several pinches.
  EXPECT_GE(log_.count("start"), 4);
  EXPECT_GE(*std::min_element(ratios_.begin(), ratios_.end()), 0.1F);
  const qsizetype before = log_.size();
  settle(500);
  EXPECT_EQ(log_.size(), before);
}

TEST_F(GestureTest, PinchEndsWithTheControlUnderIt) {
  wheel(place(500, 1000), 120, Qt::ControlModifier);
  item("area")->setEnabled(false);
  EXPECT_EQ(log_.last(), "cancel");
}

TEST_F(GestureTest, HandlersMayDeleteTheControl) {
  QPointer<Container> area = area_;
  QObject::connect(tap_, &TapHandler::tapped, [area] { area->deleteLater(); });
  QTest::mouseClick(window(), Qt::LeftButton, {}, place(500, 1000));
  settle();
  EXPECT_EQ(area, nullptr);
  QTest::mouseClick(window(), Qt::LeftButton, {}, QPoint(300, 600));
}

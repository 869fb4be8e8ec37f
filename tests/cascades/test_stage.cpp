// Dialogs, toasts, cards and the application menu over the scene.

#include <QSignalSpy>

#include "platform/cascades/menu.h"
#include "tests/cascades/fixture.h"

using namespace bb::cascades;

namespace {

class StageTest : public CascadesTest {
 protected:
  void SetUp() override {
    CascadesTest::SetUp();
    show("Page { Button { objectName: \"under\"; focus: true; text: \"u\"; y: 600; width: 300; height: 200 } }");
    item("under")->forceActiveFocus();
  }
};

/// A menu with three actions, of which the middle one is disabled, and the titles of those that were chosen.
struct ThreeActions {
  ThreeActions() {
    for (const char* title : {"Help", "Setting", "Private"}) {
      auto* action = new ActionItem;
      action->setTitle(title);
      QObject::connect(action, &ActionItem::triggered, [this, action] { chosen.append(action->title()); });
      menu->addAction(action);
    }
    menu->actions()[1]->setEnabled(false);
  }
  Menu* menu = new Menu;
  QStringList chosen;
};

class FakeCard : public QObject {
  Q_OBJECT
  Q_PROPERTY(QUrl document MEMBER document CONSTANT)

 public:
  Q_INVOKABLE void close() {
    ++closed;
    handset::Stage::instance()->close_card(this);
  }
  QUrl document;
  int closed = 0;
};

}  // namespace

TEST_F(StageTest, EnterConfirmsAndEscCancelsOrConfirmsWhereThereIsNoCancel) {
  FakeDialog question("Cancel");
  stage()->open_dialog(&question);
  settle();
  press(Qt::Key_Return);
  EXPECT_EQ(question.confirmed, 1);
  stage()->open_dialog(&question);
  press(Qt::Key_Escape);
  EXPECT_EQ(question.cancelled, 1);
  stage()->open_dialog(&question);
  press(Qt::Key_Tab);
  press(Qt::Key_Return);
  EXPECT_EQ(question.cancelled, 2);
  FakeDialog alert;
  stage()->open_dialog(&alert);
  press(Qt::Key_Tab);
  press(Qt::Key_Escape);
  EXPECT_EQ(alert.confirmed, 1);
  EXPECT_EQ(stage()->dialog(), nullptr);
}

TEST_F(StageTest, DialogsStackAndKeepInputFromTheScene) {
  QSignalSpy clicked(item("under"), SIGNAL(clicked()));
  FakeDialog first;
  FakeDialog second;
  stage()->open_dialog(&first);
  stage()->open_dialog(&second);
  EXPECT_EQ(stage()->dialog(), &second);
  settle();
  QTest::mouseClick(window(), Qt::LeftButton, {}, at(app().display(), {20, 700}));
  for (int i = 0; i < 5; ++i) press(Qt::Key_Tab);
  press(Qt::Key_Space);
  EXPECT_EQ(second.confirmed, 1);
  EXPECT_EQ(stage()->dialog(), &first);
  press(Qt::Key_Return);
  EXPECT_EQ(first.confirmed, 1);
  EXPECT_EQ(clicked.count(), 0);
  settle();
  EXPECT_TRUE(item("under")->hasActiveFocus());
  press(Qt::Key_Return);
  EXPECT_EQ(clicked.count(), 1);
}

TEST_F(StageTest, DialogThatIsDeletedGoesAway) {
  FakeDialog lower;
  stage()->open_dialog(&lower);
  {
    FakeDialog upper;
    stage()->open_dialog(&upper);
  }
  EXPECT_EQ(stage()->dialog(), &lower);
  stage()->close_dialog(&lower);
  stage()->close_dialog(&lower);
}

TEST_F(StageTest, LongDialogStaysOnTheDisplayWithItsButtons) {
  FakeDialog dialog("Cancel");
  dialog.body = QString("many words ").repeated(600);
  for (const int direction : {0, 90}) {
    OrientationSupport::instance()->turnTo(direction);
    stage()->open_dialog(&dialog);
    settle();
    const QQuickItem* button = item("dialogConfirm");
    const QRectF place = button->mapRectToItem(app().display(), button->boundingRect());
    EXPECT_TRUE(app().display()->boundingRect().contains(place)) << direction;
    QTest::mouseClick(window(), Qt::LeftButton, {}, middle(button));
    EXPECT_EQ(stage()->dialog(), nullptr);
  }
  EXPECT_EQ(dialog.confirmed, 2);
}

TEST_F(StageTest, ToastsWaitForEachOther) {
  FakeToast one("one");
  FakeToast three("three");
  QSignalSpy changed(stage(), &handset::Stage::toastChanged);
  stage()->show_toast(&one, 100);
  stage()->show_toast(&one, 100);
  {
    FakeToast two("two");
    stage()->show_toast(&two, 60000);
    stage()->show_toast(&three, 100);
    EXPECT_EQ(stage()->toast(), &one);
    ASSERT_TRUE(QTest::qWaitFor([&] { return stage()->toast() == &two; }, 2000));
  }
  EXPECT_EQ(stage()->toast(), &three);
  ASSERT_TRUE(QTest::qWaitFor([] { return stage()->toast() == nullptr; }, 2000));
  EXPECT_EQ(changed.count(), 4);
  stage()->show_toast(&one, 10);
  EXPECT_EQ(stage()->toast(), &one);
  ASSERT_TRUE(QTest::qWaitFor([] { return stage()->toast() == nullptr; }, 2000));
}

TEST_F(StageTest, MenuByKeysSkipsWhatIsDisabled) {
  ThreeActions actions;
  app().setMenu(actions.menu);
  press(Qt::Key_F10);
  EXPECT_TRUE(stage()->menu_open());
  settle(300);
  press(Qt::Key_Right);
  press(Qt::Key_Right);
  press(Qt::Key_Return);
  EXPECT_EQ(actions.chosen, QStringList("Private"));
  EXPECT_FALSE(stage()->menu_open());
  press(Qt::Key_F10);
  press(Qt::Key_Left);
  press(Qt::Key_Enter);
  EXPECT_EQ(actions.chosen, QStringList({"Private", "Help"}));
  press(Qt::Key_F10);
  press(Qt::Key_Escape);
  EXPECT_FALSE(stage()->menu_open());
  settle();
  EXPECT_TRUE(item("under")->hasActiveFocus());
  EXPECT_EQ(actions.chosen.size(), 2);
}

TEST_F(StageTest, MenuIsPulledFromTheTopEdgeAndClosedByATapElsewhere) {
  ThreeActions actions;
  app().setMenu(actions.menu);
  settle(400);
  QTest::mousePress(window(), Qt::LeftButton, {}, at(app().display(), {100, 6}));
  QTest::mouseMove(window(), at(app().display(), {100, 60}));
  QTest::mouseMove(window(), at(app().display(), {100, 120}));
  QTest::mouseRelease(window(), Qt::LeftButton, {}, at(app().display(), {100, 120}));
  EXPECT_TRUE(stage()->menu_open());
  settle(400);
  QTest::mouseClick(window(), Qt::LeftButton, {}, at(app().display(), {384, 900}));
  EXPECT_FALSE(stage()->menu_open());
  settle(400);
  QTest::mouseClick(window(), Qt::LeftButton, {}, at(app().display(), {384, 10}));
  EXPECT_TRUE(stage()->menu_open());
  settle(400);
  QTest::mouseClick(window(), Qt::LeftButton, {}, at(app().display(), {130, 90}));
  EXPECT_EQ(actions.chosen, QStringList("Help"));
  EXPECT_FALSE(stage()->menu_open());
}

TEST_F(StageTest, MenuStaysShutUnderADialogAndLosesDeletedActions) {
  ThreeActions actions;
  app().setMenu(actions.menu);
  FakeDialog dialog;
  stage()->open_dialog(&dialog);
  press(Qt::Key_F10);
  EXPECT_FALSE(stage()->menu_open());
  stage()->close_dialog(&dialog);
  press(Qt::Key_F10);
  EXPECT_TRUE(stage()->menu_open());
  delete actions.menu->actions().first();
  EXPECT_EQ(actions.menu->actions().size(), 2);
  settle();
  stage()->open_dialog(&dialog);
  EXPECT_FALSE(stage()->menu_open());
  stage()->close_dialog(&dialog);
  app().setMenu(nullptr);
  settle();
}

TEST_F(StageTest, CardIsDrawnByItsDocumentAndClosedByEsc) {
  write_asset("Card.qml",
              "import QtQuick\nRectangle { required property var card; objectName: \"card\"; color: \"red\" }");
  FakeCard card;
  card.document = QUrl("asset:///Card.qml");
  stage()->open_card(&card);
  settle();
  EXPECT_EQ(app().readDisplay().pixelColor(300, 600), QColor("red"));
  FakeDialog dialog;
  stage()->open_dialog(&dialog);
  press(Qt::Key_Escape);
  EXPECT_EQ(stage()->card(), &card);
  press(Qt::Key_Escape);
  EXPECT_EQ(card.closed, 1);
  EXPECT_EQ(stage()->card(), nullptr);
  settle();
  EXPECT_TRUE(item("under")->hasActiveFocus());
}

TEST_F(StageTest, CardWithoutADocumentClosesByItself) {
  FakeCard card;
  card.document = QUrl("asset:///NoCard.qml");
  stage()->open_card(&card);
  ASSERT_TRUE(QTest::qWaitFor([&] { return card.closed == 1; }, 2000));
}

#include "test_stage.moc"

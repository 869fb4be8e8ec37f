// The navigation pane and sheets.

#include <QSignalSpy>

#include "tests/cascades/fixture.h"

using namespace bb::cascades;

namespace {

constexpr char scene[] = R"(NavigationPane {
  Page { objectName: "bottom"
    ImageButton { objectName: "under"; accessibleName: "u"; width: 300; height: 300; y: 600; focus: true } } })";

class PagesTest : public CascadesTest {
 protected:
  void SetUp() override {
    CascadesTest::SetUp();
    pane_ = static_cast<NavigationPane*>(show(scene));
    bottom_ = static_cast<Page*>(item("bottom"));
    write_asset("Help.qml", "import QtQuick\nimport bb.cascades 1.0\nPage { title: \"Help\" }");
    help_document_.reset(QmlDocument::create("asset:///Help.qml"));
  }

  Page* new_page() { return help_document_->createRootObject<Page>(); }

  NavigationPane* pane_ = nullptr;
  Page* bottom_ = nullptr;
  std::unique_ptr<QmlDocument> help_document_;
};

}  // namespace

TEST_F(PagesTest, PushedPageCoversTheOneBelowWhichStaysInTheScene) {
  EXPECT_EQ(pane_->count(), 1);
  EXPECT_EQ(pane_->top(), bottom_);
  Page* help = new_page();
  pane_->push(help);
  pane_->push(help);
  pane_->push(nullptr);
  settle();
  EXPECT_EQ(pane_->count(), 2);
  EXPECT_TRUE(bottom_->isVisible());
  QSignalSpy clicked(item("under"), SIGNAL(clicked()));
  QTest::mouseClick(window(), Qt::LeftButton, {}, middle(item("under")));
  EXPECT_EQ(clicked.count(), 0);
  pane_->push(bottom_);
  EXPECT_EQ(pane_->top(), bottom_);
  settle();
  QTest::mouseClick(window(), Qt::LeftButton, {}, middle(item("under")));
  EXPECT_EQ(clicked.count(), 1);
}

TEST_F(PagesTest, EscPopsAndTheHandlerMayDelete) {
  QPointer<Page> help = new_page();
  QList<Page*> popped;
  QObject::connect(pane_, &NavigationPane::popTransitionEnded, [&](Page* page) {
    EXPECT_EQ(pane_->count(), 1);
    popped.append(page);
    delete page;
  });
  pane_->push(help);
  settle();
  press(Qt::Key_Escape);
  EXPECT_EQ(pane_->count(), 1);
  settle();
  EXPECT_EQ(popped.size(), 1);
  EXPECT_EQ(help, nullptr);
  press(Qt::Key_Escape);
  pane_->pop();
  settle();
  EXPECT_EQ(popped.size(), 1);
  EXPECT_EQ(pane_->top(), bottom_);
}

TEST_F(PagesTest, ThePagesOwnBackControlPops) {
  Page* help = new_page();
  QSignalSpy popped(pane_, &NavigationPane::popTransitionEnded);
  pane_->push(help);
  settle();
  QTest::mouseClick(window(), Qt::LeftButton, {}, at(help, {50, 50}));
  settle();
  EXPECT_EQ(popped.count(), 1);
  EXPECT_EQ(pane_->count(), 1);
}

TEST_F(PagesTest, PagesThatAreDeletedLeaveTheStack) {
  Page* first = new_page();
  Page* second = new_page();
  pane_->push(first);
  pane_->push(second);
  delete first;
  EXPECT_EQ(pane_->count(), 2);
  EXPECT_EQ(pane_->top(), second);
  delete second;
  EXPECT_EQ(pane_->top(), bottom_);
  delete bottom_;
  EXPECT_EQ(pane_->count(), 0);
  EXPECT_EQ(pane_->top(), nullptr);
  pane_->pop();
}

TEST_F(PagesTest, PoppedPageThatNobodyTakesIsDeletedAndOnePushedAgainStays) {
  QPointer<Page> page = new_page();
  pane_->push(page);
  pane_->pop();
  pane_->push(page);
  settle();
  ASSERT_NE(page, nullptr);
  EXPECT_EQ(pane_->top(), page);
  pane_->pop();
  settle();
  EXPECT_EQ(page, nullptr);
}

TEST_F(PagesTest, SheetTakesTheKeyboardAndAsksBeforeItGoesBack) {
  write_asset("Sheet.qml",
              "import QtQuick\nimport bb.cascades 1.0\nSheet { Page { title: \"Settings\"\n"
              "Button { objectName: \"inside\"; focus: true; y: 300; width: 300; height: 100 } } }");
  const std::unique_ptr<QmlDocument> document(QmlDocument::create("asset:///Sheet.qml"));
  auto* sheet = document->createRootObject<Sheet>();
  ASSERT_NE(sheet, nullptr);
  item("under")->forceActiveFocus();
  QQuickItem* before = window()->activeFocusItem();
  QSignalSpy back(sheet, &Sheet::backRequested);
  QSignalSpy clicked(item("under"), SIGNAL(clicked()));
  sheet->open();
  sheet->open();
  settle(400);
  EXPECT_EQ(stage()->sheet(), sheet);
  ASSERT_NE(window()->activeFocusItem(), nullptr);
  EXPECT_TRUE(sheet->content()->isAncestorOf(window()->activeFocusItem()));
  EXPECT_EQ(sheet->content()->width(), 768);
  QTest::mouseClick(window(), Qt::LeftButton, {}, middle(item("under")));
  EXPECT_EQ(clicked.count(), 0);
  press(Qt::Key_Escape);
  QTest::mouseClick(window(), Qt::LeftButton, {}, at(app().display(), {50, 50}));
  EXPECT_EQ(back.count(), 2);
  EXPECT_TRUE(sheet->isOpened());
  sheet->close();
  settle(400);
  EXPECT_EQ(window()->activeFocusItem(), before);
  QTest::mouseClick(window(), Qt::LeftButton, {}, middle(item("under")));
  EXPECT_EQ(clicked.count(), 1);
  sheet->open();
  delete sheet;
  EXPECT_EQ(stage()->sheet(), nullptr);
  settle(400);
}

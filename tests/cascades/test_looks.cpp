// State classes and their looks, and the transition.

#include <QSignalSpy>

#include "platform/cascades/animation.h"
#include "platform/cascades/controls.h"
#include "platform/cascades/list_view.h"
#include "tests/cascades/fixture.h"

using namespace bb::cascades;

namespace {

using LooksTest = CascadesTest;

}  // namespace

TEST_F(LooksTest, ListTellsWhichRowWasChosenAndForgetsItWithTheRows) {
  show("Page { ListView { objectName: \"list\"; anchors.fill: parent } }");
  auto* list = static_cast<ListView*>(item("list"));
  GroupDataModel model;
  for (const char* title : {"one", "two"}) model.insert({{"title", title}, {"image", ""}});
  list->setDataModel(&model);
  settle();
  QList<QVariantList> chosen;
  QObject::connect(list, &ListView::triggered, [&](const QVariantList& path) {
    EXPECT_EQ(list->selected(), path);
    chosen.append(path);
  });
  QTest::mouseClick(window(), Qt::LeftButton, {}, at(list, {100, 130}));
  ASSERT_EQ(chosen.size(), 1);
  EXPECT_EQ(model.data(chosen[0]).toMap()["title"], "two");
  model.clear();
  EXPECT_TRUE(list->selected().isEmpty());
  EXPECT_FALSE(model.data(QVariantList{0}).isValid());
  EXPECT_FALSE(model.data(QVariantList{"x"}).isValid());
  list->setDataModel(nullptr);
}

TEST_F(LooksTest, DropDownSelectsOnlyWhatThereIs) {
  DropDown box;
  box.setOptions({"a", "b", "c"});
  box.setSelectedIndex(2);
  box.setSelectedIndex(7);
  EXPECT_EQ(box.selectedIndex(), -1);
  box.setSelectedIndex(2);
  box.setOptions({"a"});
  EXPECT_EQ(box.selectedIndex(), -1);
}

TEST_F(LooksTest, TransitionStartsAtItsOffsetAndEndsExactlyAtRest) {
  show(
      "Page { Rectangle { objectName: \"moving\"; x: 10; y: 20; width: 50; height: 50\n"
      "TranslateTransition { objectName: \"slide\"; fromX: -300; fromY: 40; duration: 60 } } }");
  QQuickItem* moving = item("moving");
  auto* slide = moving->findChild<TranslateTransition*>("slide");
  QSignalSpy ended(slide, &TranslateTransition::ended);
  const auto place = [moving] { return moving->mapToItem(moving->parentItem(), QPointF()); };
  slide->play();
  EXPECT_EQ(place(), QPointF(-290, 60));
  EXPECT_EQ(moving->position(), QPointF(10, 20));
  slide->play();
  ASSERT_TRUE(ended.wait(2000));
  EXPECT_EQ(place(), QPointF(10, 20));
  slide->setProperty("duration", 0);
  slide->play();
  EXPECT_EQ(ended.count(), 2);
  slide->setProperty("duration", 5000);
  slide->play();
  delete moving;
}

// The file picker, with the card that is drawn in the window.

#include "platform/cascades/pickers.h"

#include <QColor>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QQuickWindow>
#include <QSettings>
#include <memory>

#include "platform/cascades/application.h"
#include "platform/cascades/stage.h"
#include "tests/system/window_test.h"

using namespace bb::cascades::pickers;
using handset::Stage;

namespace {

class Pickers : public WindowTest {
 protected:
  Pickers() : folder(QString::fromStdString(home() + "/Pictures")) {
    QDir(folder).removeRecursively();
    QDir().mkpath(folder + "/other");
    QImage image(8, 8, QImage::Format_ARGB32);
    image.fill(Qt::red);
    image.save(folder + "/a 50% #1.png");
    image.save(folder + "/B.JPG");
    image.save(folder + "/other/c.png");
    write_file((folder + "/notes.txt").toStdString(), "no picture");
    QFile::remove(memory);
    picker.setTitle("Select a Picture");
    picker.setMode(FilePickerMode::Picker);
    picker.setType(FileType::Picture);
    QObject::connect(&picker, &FilePicker::fileSelected, [this](const QStringList& files) { picked << files; });
    QObject::connect(&picker, &FilePicker::canceled, [this] { ++canceled; });
  }

  static QObject* card() { return Stage::instance()->card(); }
  static QString shown_folder() { return card() ? card()->property("folder").toString() : QString("no card"); }
  static QStringList names() {
    QStringList names;
    const QVariantList rows = card() ? card()->property("rows").toList() : QVariantList();
    for (const QVariant& row : rows) names << row.toMap()["name"].toString();
    return names;
  }
  bool over() const { return canceled > 0 || !picked.isEmpty(); }

  const QString folder;
  const QString memory = QString::fromStdString(home()) + "/XDG_STATE_HOME/morvane/picker.ini";
  FilePicker picker;
  QStringList picked;
  int canceled = 0;
};

TEST_F(Pickers, PicksAPictureByTheKeyboard) {
  picker.open();
  picker.open();
  EXPECT_EQ(shown_folder(), folder) << "the user's Pictures";
  ASSERT_EQ(names().size(), 4);
  EXPECT_EQ(names().mid(1), (QStringList{"other", "a 50% #1.png", "B.JPG"})) << "folders first, pictures only";
  press(Qt::Key_Down);
  press(Qt::Key_Return, "\r");
  ASSERT_TRUE(wait_until([this] { return over(); }));
  wait_for(50);
  EXPECT_EQ(picked, QStringList{folder + "/a 50% #1.png"});
  EXPECT_EQ(canceled, 0);
  EXPECT_EQ(card(), nullptr);
}

TEST_F(Pickers, ShowsPicturesAsTheyLook) {
  picker.open();
  // The small picture of the third row. Its colour is nowhere else in a list.
  EXPECT_TRUE(wait_until([] {
    const QImage display = bb::cascades::Application::instance()->readDisplay();
    for (int y = 200; y < 700; y += 20) {
      const QColor colour = display.pixelColor(60, y);
      if (colour.red() > 240 && colour.green() < 30) return true;
    }
    return false;
  }));
  press(Qt::Key_Escape);
  EXPECT_TRUE(wait_until([this] { return over(); }));
}

TEST_F(Pickers, WalksThroughFoldersAndRemembersTheLastOne) {
  picker.open();
  press(Qt::Key_Return, "\r");
  EXPECT_EQ(shown_folder(), folder + "/other");
  press(Qt::Key_Backspace);
  EXPECT_EQ(shown_folder(), folder);
  EXPECT_EQ(card()->property("first").toInt(), 1) << "one is where one came from";
  press(Qt::Key_Return, "\r");
  press(Qt::Key_Return, "\r");
  ASSERT_TRUE(wait_until([this] { return over(); }));
  EXPECT_EQ(picked, QStringList{folder + "/other/c.png"});

  FilePicker next;  // as after a restart
  next.setType(FileType::Picture);
  next.open();
  EXPECT_EQ(shown_folder(), folder + "/other");
  press(Qt::Key_Escape);
  EXPECT_TRUE(wait_until([] { return card() == nullptr; }));
  QDir(folder + "/other").removeRecursively();
  next.open();
  EXPECT_EQ(shown_folder(), folder) << "the remembered one is gone";
  for (int i = 0; i < 50; ++i) press(Qt::Key_Backspace);
  EXPECT_EQ(shown_folder(), "/") << "and not further";
}

TEST_F(Pickers, EscCancelsOnceAndItOpensAgain) {
  for (int round = 1; round <= 2; ++round) {
    picker.open();
    press(Qt::Key_Escape);
    press(Qt::Key_Escape);
    ASSERT_TRUE(wait_until([&] { return canceled == round; }));
    picker.open();
    wait_for(50);
    EXPECT_EQ(canceled, round) << "the second key was the old card's";
    EXPECT_NE(card(), nullptr);
    QMetaObject::invokeMethod(card(), "close");
    ASSERT_TRUE(wait_until([&] { return canceled == round + 1; }));
    canceled = round;
  }
  EXPECT_EQ(picked, QStringList());
}

TEST_F(Pickers, ACardThatIsOpenGoesWithItsPickerOrForAnother) {
  auto shortlived = std::make_unique<FilePicker>();
  shortlived->open();
  ASSERT_NE(card(), nullptr);
  shortlived.reset();
  EXPECT_EQ(card(), nullptr);

  picker.open();
  FilePicker other;
  other.open();
  EXPECT_TRUE(wait_until([this] { return canceled == 1; })) << "its card was replaced";
  EXPECT_NE(card(), nullptr);
}

TEST_F(Pickers, ThereAreNoSavers) {
  picker.setMode(FilePickerMode::Saver);
  picker.open();
  EXPECT_EQ(canceled, 0) << "not before open() has returned";
  EXPECT_TRUE(wait_until([this] { return canceled == 1; }));
}

}  // namespace

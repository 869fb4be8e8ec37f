// The file picker, with the dialog that is drawn in the window.

#include <QColor>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSettings>
#include <QUrl>

#include "platform/cascades/application.h"
#include "platform/cascades/pickers.h"
#include "tests/system/window_test.h"

using namespace bb::cascades::pickers;

namespace {

class Pickers : public WindowTest {
 protected:
  Pickers() : folder(QString::fromStdString(home() + "/Pictures")) {
    QImage image(8, 8, QImage::Format_ARGB32);
    image.fill(Qt::red);
    image.save(folder + "/a picture.png");
    image.save(folder + "/B.JPG");
    write_file((folder + "/notes.txt").toStdString(), "no picture");
    picker.setTitle("Select a Picture");
    picker.setMode(FilePickerMode::Picker);
    picker.setType(FileType::Picture);
    QObject::connect(&picker, &FilePicker::fileSelected, [this](const QStringList& files) { picked << files; });
    QObject::connect(&picker, &FilePicker::canceled, [this] { ++canceled; });
  }

  /// What is seen of the dialog; null while it is not there.
  static QObject* popup() {
    const QObjectList all = bb::cascades::Application::instance()->desktopWindow()->findChildren<QObject*>();
    for (QObject* object : all) {
      if (object->inherits("QQuickFileDialogImpl") && object->property("visible").toBool()) return object;
    }
    return nullptr;
  }
  static bool wait_open() {
    return wait_until([] {
      const QObject* const seen = popup();
      const auto* list = seen ? seen->findChild<QQuickItem*>("fileDialogListView") : nullptr;
      return list && list->property("count").toInt() > 0;
    });
  }
  QString current_folder() const { return popup()->property("currentFolder").toUrl().toLocalFile(); }

  const QString folder;
  FilePicker picker;
  QStringList picked;
  int canceled = 0;
};

TEST_F(Pickers, PicksAPictureByTheKeyboard) {
  picker.open();
  picker.open();
  ASSERT_TRUE(wait_open());
  EXPECT_EQ(current_folder(), folder) << "the user's Pictures";
  const auto* const list = popup()->findChild<QQuickItem*>("fileDialogListView");
  EXPECT_EQ(list->property("count").toInt(), 2) << "pictures only";
  press(Qt::Key_Down);
  press(Qt::Key_Return, "\r");
  ASSERT_TRUE(wait_until([this] { return !picked.isEmpty(); }));
  EXPECT_TRUE(QFileInfo(picked[0]).isAbsolute());
  EXPECT_TRUE(picked[0].startsWith(folder + "/")) << picked[0].toStdString();
  EXPECT_EQ(picked.size(), 1);
  wait_for(100);
  EXPECT_EQ(picked.size(), 1);
  EXPECT_EQ(canceled, 0);
  EXPECT_EQ(popup(), nullptr);
}

TEST_F(Pickers, EscCancelsOnceAndItOpensAgain) {
  for (int round = 1; round <= 2; ++round) {
    picker.open();
    ASSERT_TRUE(wait_open());
    press(Qt::Key_Escape);
    ASSERT_TRUE(wait_until([&] { return canceled == round; }));
    wait_for(100);
    EXPECT_EQ(canceled, round);
  }
  EXPECT_EQ(picked, QStringList());
}

TEST_F(Pickers, RemembersTheFolderOfTheLastPickUntilItIsGone) {
  const QString other = folder + "/other";
  QDir().mkpath(other);
  ASSERT_TRUE(QFile::copy(folder + "/a picture.png", other + "/c.png"));
  {
    QSettings memory(QString::fromStdString(home()) + "/XDG_STATE_HOME/morvane/picker.ini", QSettings::IniFormat);
    memory.setValue("pictures/folder", other);
  }
  picker.open();
  ASSERT_TRUE(wait_open());
  EXPECT_EQ(current_folder(), other);
  press(Qt::Key_Escape);
  ASSERT_TRUE(wait_until([this] { return canceled == 1; }));
  QDir(other).removeRecursively();
  picker.open();
  ASSERT_TRUE(wait_open());
  EXPECT_EQ(current_folder(), folder);
  press(Qt::Key_Escape);
  ASSERT_TRUE(wait_until([this] { return canceled == 2; }));
}

TEST_F(Pickers, ADialogThatIsOpenGoesWithItsPicker) {
  auto shortlived = std::make_unique<FilePicker>();
  shortlived->setType(FileType::Picture);
  shortlived->open();
  ASSERT_TRUE(wait_open());
  shortlived.reset();
  EXPECT_TRUE(wait_until([] { return popup() == nullptr; }));
}

TEST_F(Pickers, ThereAreNoSavers) {
  picker.setMode(FilePickerMode::Saver);
  picker.open();
  EXPECT_EQ(canceled, 0) << "not before open() has returned";
  EXPECT_TRUE(wait_until([this] { return canceled == 1; }));
}

}  // namespace

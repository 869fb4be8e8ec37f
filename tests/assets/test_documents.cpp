// The documents of the package: they load without a complaint, hold what the program looks up, and call only what the
// program has.

#include <QDir>
#include <QFile>
#include <QPointer>
#include <QQmlPropertyMap>
#include <QRegularExpression>
#include <QSet>

#include "platform/camera/viewfinder_slot.h"
#include "platform/cascades/animation.h"
#include "platform/cascades/application.h"
#include "platform/cascades/assets.h"
#include "platform/cascades/container.h"
#include "platform/cascades/controls.h"
#include "platform/cascades/foreign_window_control.h"
#include "platform/cascades/list_view.h"
#include "platform/cascades/pages.h"
#include "platform/cascades/qml_document.h"
#include "tests/assets/package.h"

using namespace bb::cascades;

namespace {

QStringList complaints;

void collect_complaint(QtMsgType type, const QMessageLogContext&, const QString& text) {
  if (type != QtDebugMsg && type != QtInfoMsg) complaints.append(text);
}

/// Loads documents as the program does, with an application object that has only its list model.
class DocumentsTest : public testing::Test {
 protected:
  void SetUp() override {
    complaints.clear();
    previous_ = qInstallMessageHandler(collect_complaint);
  }
  void TearDown() override {
    document_.reset();
    qInstallMessageHandler(previous_);
    EXPECT_TRUE(complaints.isEmpty()) << complaints.join('\n').toStdString();
  }

  template <typename Root>
  Root* load(const char* url) {
    application_.insert("model", QVariant::fromValue(&model_));
    document_.reset(QmlDocument::create(QLatin1String(url)));
    document_->setContextProperty("_mainApp", &application_);
    return document_->createRootObject<Root>();
  }

  GroupDataModel model_;
  QQmlPropertyMap application_;
  std::unique_ptr<QmlDocument> document_;
  QtMessageHandler previous_ = nullptr;
};

/// The one object of this name, which has to be a T.
template <typename T>
T* the(const QObject* root, const char* name) {
  const QList<T*> found = root->findChildren<T*>(QLatin1String(name));
  EXPECT_EQ(found.size(), 1) << name;
  return found.isEmpty() ? nullptr : found.first();
}

template <typename T>
void expect_all(const QObject* root, std::initializer_list<const char*> names) {
  for (const char* name : names) the<T>(root, name);
}

QString text_of(const QString& path) {
  QFile file(path);
  EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
  return QString::fromUtf8(file.readAll());
}

QSet<QString> matches(const char* pattern, const QString& text) {
  QSet<QString> found;
  for (auto all = QRegularExpression(QLatin1String(pattern)).globalMatch(text); all.hasNext();)
    found.insert(all.next().captured(1));
  return found;
}

}  // namespace

TEST_F(DocumentsTest, MainScreenHoldsWhatIsLookedUp) {
  auto* root = load<NavigationPane>("asset:///Settings.qml");
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(root->count(), 1);
  expect_all<Container>(
      root, {"cameraContainer", "mainContainer", "listMenuContainer", "iconListViewContainer", "effectContainer",
             "setColorContainer", "setYUVContainer", "screensizeContainer", "RecordContainer", "playContainer",
             "videoContainer", "privatebackground", "screenrecorderContainer"});
  expect_all<ImageView>(root, {"sceneImg", "modeImg", "effectImg", "recordRedDotImg"});
  expect_all<ImageButton>(root, {"menuIconImgButton", "screenImg", "imgbut_record_stop", "screenrecord_img"});
  expect_all<Label>(root, {"recordLabel", "screensize"});
  expect_all<TranslateTransition>(root, {"menuAnim"});
  EXPECT_EQ(the<ListView>(root, "menuListview")->dataModel(), &model_);
}

TEST_F(DocumentsTest, MainScreenBeginsWithTheViewfinderFree) {
  auto* root = load<NavigationPane>("asset:///Settings.qml");
  ASSERT_NE(root, nullptr);
  for (const char* name :
       {"listMenuContainer", "RecordContainer", "playContainer", "effectContainer", "setColorContainer",
        "setYUVContainer", "videoContainer", "privatebackground", "sceneImg", "modeImg", "screenrecorderContainer"})
    EXPECT_FALSE(the<Control>(root, name)->isVisible()) << name;
  for (const char* name : {"screensizeContainer", "menuIconImgButton", "imgbut_record_stop", "mainContainer"})
    EXPECT_TRUE(the<Control>(root, name)->isVisible()) << name;
}

TEST_F(DocumentsTest, TheSizeButtonIsNamedAfterWhatItDoes) {
  auto* root = load<NavigationPane>("asset:///Settings.qml");
  ASSERT_NE(root, nullptr);
  auto* button = the<ImageButton>(root, "screenImg");
  const auto name = [button] { return button->property("accessibleName").toString(); };
  EXPECT_EQ(name(), "Size of the film: ");
  the<Container>(root, "RecordContainer")->setVisible(true);
  EXPECT_EQ(name(), "Brighten the picture");
  button->setProperty("lightIsLamp", true);
  EXPECT_EQ(name(), "Video light");
}

// Hiding the effect's panel must leave the slider to whoever asks whether it is visible.
TEST_F(DocumentsTest, ToleranceSliderIsIndependentOfTheEffectPanel) {
  auto* root = load<NavigationPane>("asset:///Settings.qml");
  ASSERT_NE(root, nullptr);
  auto* slider = the<Container>(root, "setColorContainer");
  slider->setVisible(true);
  the<Container>(root, "effectContainer")->setVisible(false);
  EXPECT_TRUE(slider->isVisible());
}

// The control that shows the camera is added by the program, and is as large as the display.
TEST_F(DocumentsTest, ViewfinderFillsTheDisplayWhateverItAsksFor) {
  auto* root = load<NavigationPane>("asset:///Settings.qml");
  ASSERT_NE(root, nullptr);
  QQuickItem display;
  display.setSize({720, 720});
  root->setParentItem(&display);
  auto* camera = the<Container>(root, "cameraContainer");
  auto* viewfinder = new ForeignWindowControl;
  camera->add(viewfinder);
  EXPECT_EQ(viewfinder->size(), QSizeF(720, 720));
  viewfinder->setPreferredWidth(1440);
  viewfinder->setPreferredHeight(1080);
  EXPECT_EQ(viewfinder->size(), QSizeF(720, 720));
  display.setSize({1280, 768});
  EXPECT_EQ(viewfinder->size(), QSizeF(1280, 768));
  root->setParentItem(nullptr);
}

// Over the record button, or beside it; taps go through it.
TEST_F(DocumentsTest, StatusOfTheRecordingStandsAtTheLowerEdge) {
  auto* root = load<NavigationPane>("asset:///Settings.qml");
  ASSERT_NE(root, nullptr);
  QQuickItem display;
  root->setParentItem(&display);
  auto* viewfinder = new ForeignWindowControl;
  viewfinder->setWindowId("status");
  the<Container>(root, "cameraContainer")->add(viewfinder);
  auto* pill = the<QQuickItem>(root, "statusPill");
  EXPECT_FALSE(pill->isVisible());
  const auto slot = handset::viewfinder_slot(viewfinder->windowGroup().toStdString(), "status");
  slot->set_status("no sound");
  QCoreApplication::processEvents();
  EXPECT_TRUE(pill->isVisible());
  auto* button = the<ImageButton>(root, "imgbut_record_stop");
  for (const QSizeF size : {QSizeF(768, 1280), QSizeF(1280, 768), QSizeF(720, 720)}) {
    display.setSize(size);
    QCoreApplication::processEvents();
    const QRectF place = pill->mapRectToItem(&display, pill->boundingRect());
    EXPECT_GT(place.width(), 100);
    EXPECT_GT(place.top(), size.height() * 0.6);
    EXPECT_LE(place.bottom(), size.height());
    EXPECT_FALSE(place.intersects(button->mapRectToItem(&display, button->boundingRect()))) << size.width();
  }
  slot->set_status("");
  QCoreApplication::processEvents();
  EXPECT_FALSE(pill->isVisible());
  root->setParentItem(nullptr);
}

TEST_F(DocumentsTest, SettingsSheetHoldsWhatIsLookedUp) {
  auto* root = load<Sheet>("asset:///Prefs.qml");
  ASSERT_NE(root, nullptr);
  for (const auto& [name, options] : {std::pair{"timeformatDropdown", 9}, std::pair{"colorDropdown", 6},
                                      std::pair{"positionDropdown", 5}, std::pair{"position", 7}})
    EXPECT_EQ(the<DropDown>(root, name)->options().size(), options) << name;
  expect_all<CheckBox>(root, {"shuttersound", "includelogo", "logooriginalcolor"});
  expect_all<Container>(root, {"logooriginalcolor_container"});
}

TEST_F(DocumentsTest, SettingsSheetHidesWhatDoesNotApply) {
  auto* root = load<Sheet>("asset:///Prefs.qml");
  ASSERT_NE(root, nullptr);
  auto* format = the<DropDown>(root, "timeformatDropdown");
  auto* texture = the<CheckBox>(root, "includelogo");
  for (const bool on : {true, false, true}) {
    format->setSelectedIndex(on ? 6 : 0);
    texture->setChecked(on);
    EXPECT_EQ(the<DropDown>(root, "colorDropdown")->isVisible(), on);
    EXPECT_EQ(the<DropDown>(root, "positionDropdown")->isVisible(), on);
    EXPECT_EQ(the<Container>(root, "logooriginalcolor_container")->isVisible(), on);
  }
}

TEST_F(DocumentsTest, HelpIsAPage) {
  auto* root = load<Page>("asset:///about.qml");
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(root->title(), "Help");
}

TEST_F(DocumentsTest, CallOnlySlotsThatThereAre) {
  const QString header = text_of(MORVANE_SOURCE_DIR "/app/tarnelapp.h");
  const qsizetype begin = header.indexOf("public Q_SLOTS:");
  QSet<QString> known = matches("void (\\w+)\\(", header.mid(begin, header.indexOf("public:", begin) - begin));
  EXPECT_EQ(known.size(), 43);
  known.insert("model");
  QSet<QString> called;
  const QDir folder(MORVANE_PACKAGE_DIR "/native/assets");
  for (const QString& name : folder.entryList({"*.qml"}))
    called |= matches("_mainApp\\.(\\w+)", text_of(folder.filePath(name)));
  EXPECT_GT(called.size(), 20);
  for (const QString& name : called - known) ADD_FAILURE() << name.toStdString() << " is no slot";
}

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  set_package_dir(MORVANE_PACKAGE_DIR);
  const Application application(argc, argv);
  return RUN_ALL_TESTS();
}

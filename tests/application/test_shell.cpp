// The application object's construction, teardown and face to the pages.

#include <gmock/gmock.h>

#include <QMetaMethod>
#include <QMetaProperty>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QTimer>
#include <cstring>
#include <filesystem>
#include <optional>

#include "engine/color_filter.h"
#include "engine/filter_thread.h"
#include "engine/overlay.h"
#include "engine/overlay_loader.h"
#include "platform/cascades/animation.h"
#include "platform/cascades/stage.h"
#include "platform/device/info.h"
#include "tests/application/app_fixture.h"
#include "tests/application/dialogs.h"
#include "tests/application/fake_camera_service.h"

namespace cascades = bb::cascades;
namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;

namespace {

constexpr const char* slots_in_order[] = {
    "handleSettingAction()",
    "handleHelpAction()",
    "handlePrivateAction()",
    "handleScreenShotAction()",
    "onFileCanceled()",
    "onFilesSelected(QStringList)",
    "delay_load_logo()",
    "delay_screenshot()",
    "generate_datetime()",
    "bbmFinishRegister()",
    "onWindowAttached(screen_window_t,QString,QString)",
    "onStartFront()",
    "onStartRear()",
    "onStopCamera()",
    "onStartStopRecording()",
    "handleSwitchCameraAction()",
    "handleFlashLightAction()",
    "handlePopTransitionEnded(bb::cascades::Page*)",
    "onTap(bb::cascades::TapEvent*)",
    "onPinchStart(bb::cascades::PinchEvent*)",
    "onPinchEnd(bb::cascades::PinchEvent*)",
    "onPinchUpdate(bb::cascades::PinchEvent*)",
    "onPinchCancel()",
    "onOrientationAboutToChange(bb::cascades::UIOrientation::Type)",
    "peformMenuAction(QVariantList)",
    "setMenuVisible(bool)",
    "setScreenSize()",
    "changeFilterColor(float)",
    "setModifyEffectColor()",
    "changeCustomColor(int,float)",
    "playVideo()",
    "restartCamera()",
    "invitedownload()",
    "saveSettings()",
    "cancelSettings()",
    "showPhotoInCard(QString)",
    "startScreenRecorder()",
    "record_stop()",
    "updateClockTimer()",
    "showError()",
    "startRecording()",
    "onFinishedPing()",
    "onCardDone(bb::system::CardDoneMessage)",
};

TEST(MetaObject, HasTheSlotsInTheirOrderAndOneProperty) {
  const QMetaObject& meta = tarnelApp::staticMetaObject;
  std::vector<std::string> found;
  for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
    EXPECT_EQ(meta.method(i).methodType(), QMetaMethod::Slot) << i;
    found.push_back(meta.method(i).methodSignature().toStdString());
  }
  EXPECT_THAT(found, ElementsAreArray(slots_in_order));

  ASSERT_EQ(meta.propertyCount() - meta.propertyOffset(), 1);
  const QMetaProperty model = meta.property(meta.propertyOffset());
  EXPECT_STREQ(model.name(), "model");
  EXPECT_STREQ(model.typeName(), "bb::cascades::GroupDataModel*");
  EXPECT_TRUE(model.isConstant());
  EXPECT_FALSE(model.isWritable());
}

class Shell : public AppTest {
 protected:
  static std::vector<std::string> menu_titles() {
    std::vector<std::string> titles;
    for (const cascades::ActionItem* item : cascades::Application::instance()->menu()->actions()) {
      titles.push_back(item->title().toStdString());
    }
    return titles;
  }
  /// Puts a document in the place of the package's.
  void replace_document(const char* name, const std::string& text) const {
    const std::string path = sandbox.file(std::string("app/native/assets/") + name);
    fs::remove(path);
    write_file(path, text);
    cascades::Application::instance()->engine()->clearComponentCache();
  }
};

TEST_F(Shell, TheFirstStartWritesTheDefaultsAndPreparesTheEngine) {
  _cur_camera_filter = -1;
  ASSERT_FALSE(fs::exists(prefs_path));
  start_as_it_is();
  const PrefsRecord stored = stored_settings(), fresh = default_settings();
  EXPECT_EQ(fs::file_size(prefs_path), sizeof(PrefsRecord));
  EXPECT_EQ(std::memcmp(&stored, &fresh, sizeof stored), 0);
  EXPECT_TRUE(_include_logo);
  EXPECT_TRUE(_include_logo_original_color);
  EXPECT_FALSE(_busy);
  EXPECT_EQ(app->mResolutionIndex, 1);  // 1280 x 720
  EXPECT_STREQ(_menuSaveLogosIconNames[12], "No Texture");

  std::uint8_t mask[filter_bitmask_size];
  std::memcpy(mask, filter_bitmask, sizeof mask);
  filter_init(0.5, filter_match_red);
  EXPECT_EQ(std::memcmp(mask, filter_bitmask, sizeof mask), 0);
}

TEST_F(Shell, PagesMayUseTheirOwnScreenshotsAndTimers) {
  start();
  QQmlComponent component(cascades::Application::instance()->engine());
  component.setData("import com.appshot 1.0\nQTimer { property AppShot shot: AppShot {} }", {});
  const std::unique_ptr<QObject> timer(component.create());
  ASSERT_NE(timer, nullptr) << component.errorString().toStdString();
  EXPECT_NE(qobject_cast<QTimer*>(timer.get()), nullptr);
  EXPECT_EQ(timer->property("shot").value<QObject*>()->property("saveFolder"), "/shared/camera/");
}

TEST_F(Shell, TheCameraOpensWhenAllElseIsThere) {
  struct Seen {
    bool busy, scene, menu;
    int rows;
    std::string overlay;
  };
  std::optional<Seen> seen;
  fake_camera::on_call("open", [&] {
    const cascades::Application& application = *cascades::Application::instance();
    const auto* const shell = application.findChild<tarnelApp*>();
    seen = {_busy, application.scene() == shell->mRoot, application.menu() != nullptr, shell->model()->size(),
            shell->mSettings.overlayPath};
  });
  std::strcpy(settings.overlayPath, "data/picture.png");
  settings.timeFormat = 1;
  start();
  ASSERT_TRUE(seen);
  EXPECT_TRUE(seen->busy);
  EXPECT_TRUE(seen->scene);
  EXPECT_TRUE(seen->menu);
  EXPECT_EQ(seen->rows, 8);
  EXPECT_EQ(seen->overlay, "");
  EXPECT_FALSE(logo_image.enabled);
  EXPECT_STREQ(stored_settings().overlayPath, "data/picture.png");  // until the next save
  EXPECT_TRUE(datetime_image.enabled);
  EXPECT_EQ(datetime_image.width, 700);
  EXPECT_EQ(cascades::Application::instance()->mainWindow()->screenIdleMode(), cascades::ScreenIdleMode::KeepAwake);
}

TEST_F(Shell, TheEngineFollowsTheRecord) {
  settings.includeLogo = 0;
  settings.logoOriginalColor = 0;
  settings.logoPosition = 5;
  start();
  EXPECT_FALSE(_include_logo);
  EXPECT_FALSE(_include_logo_original_color);
  EXPECT_EQ(logo_pos, 5);
  EXPECT_FALSE(datetime_image.enabled);
  EXPECT_TRUE(app->mDatetimeImage.isNull());
  end();
  settings.logoPosition = 70;
  settings.timeFormat = -3;
  start();
  EXPECT_EQ(logo_pos, 0);
  EXPECT_FALSE(datetime_image.enabled);
  EXPECT_EQ(app->mSettings.logoPosition, 70);
}

TEST_F(Shell, ATallDisplayTurnsTheViewfinder) {
  std::optional<int> rotation;
  fake_camera::on_call("open", [&] {
    const auto* const shell = cascades::Application::instance()->findChild<tarnelApp*>();
    int value = -1;
    screen_get_window_property_iv(shell->mViewfinderWindow->windowHandle(), SCREEN_PROPERTY_ROTATION, &value);
    rotation = value;
  });
  start();
  EXPECT_TRUE(_device_z10);
  EXPECT_EQ(rotation, 270);
  EXPECT_EQ(app->mViewfinderWindow->windowId(), "cameraViewfinder");
  EXPECT_EQ(app->mViewfinderWindow->preferredWidth(), 0);
  EXPECT_EQ(app->mViewfinderWindow->updatedProperties().toInt(), 11);
  EXPECT_EQ(app->mViewfinderWindow->parentItem(), app->control<QQuickItem>("cameraContainer"));
}

TEST_F(Shell, TheApplicationMenuHasThreeActions) {
  start();
  EXPECT_THAT(menu_titles(), ElementsAre("Help", "Setting", "Private"));
  const auto actions = cascades::Application::instance()->menu()->actions();
  EXPECT_EQ(actions[0]->imageSource(), QUrl("asset:///images/ic_help.png"));
  EXPECT_EQ(actions[1]->imageSource(), QUrl("asset:///images/ic_settings.png"));
  EXPECT_EQ(actions[2]->imageSource(), QUrl("asset:///images/ic_private.png"));
  Q_EMIT actions[2]->triggered();
  EXPECT_TRUE(app->mPrivateMode);
  Q_EMIT actions[1]->triggered();
  EXPECT_TRUE(app->mSettingsSheet && app->mSettingsSheet->isOpened());
  Q_EMIT actions[0]->triggered();
  EXPECT_TRUE(app->mHelpPage && app->mRoot->top() == app->mHelpPage);
}

TEST_F(Shell, NamedControlsAreFoundAndMissingOnesAreSkipped) {
  start();
  EXPECT_TRUE(app->mRecordLabel && app->mSceneIcon && app->mModeIcon && app->mRecordRedDotImg && app->mMainContainer &&
              app->mListMenuContainer && app->mEffectContainer && app->mSetYUVContainer && app->mMenuAnim);
  end();
  replace_document("Settings.qml", "import bb.cascades.state 1.0\nNavigationPane { Page {} }\n");
  start();
  EXPECT_FALSE(app->mRecordLabel || app->mMainContainer || app->mMenuAnim);
  EXPECT_FALSE(app->mViewfinderWindow->parentItem());
  app->setMenuVisible(true);
  app->setModifyEffectColor();
  app->onTap(nullptr);
  app->peformMenuAction({0});
  app->handlePrivateAction();
  EXPECT_FALSE(app->mPrivateMode);
  EXPECT_EQ(app->mPrivateAction->title(), "Private");
  app->onStartStopRecording();
}

TEST_F(Shell, AMainScreenOfAnotherKindEndsTheProgram) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";  // the engine has a thread of its own
  replace_document("Settings.qml", "import bb.cascades.state 1.0\nPage {}\n");
  EXPECT_EXIT(start(), testing::ExitedWithCode(1), "^asset:///Settings.qml is no NavigationPane\n$");
  replace_document("Settings.qml", "nonsense");
  EXPECT_EXIT(start(), testing::ExitedWithCode(1), "\nasset:///Settings.qml is no NavigationPane\n$");
}

TEST_F(Shell, RevokedResourcesAreReportedThreeSecondsLater) {
  fake_camera::on_call("enable", [] { _major_error = true; });
  dialogs::Answers answers({dialogs::confirm});
  start();
  EXPECT_TRUE(answers.bodies().empty());
  ASSERT_TRUE(wait_until([&] { return !answers.bodies().empty() && !handset::Stage::instance()->dialog(); }));
  EXPECT_EQ(answers.bodies().front(), "Not enough resources.  Quit Morvane and restart it again.");
  EXPECT_EQ(answers.titles().front(), "Morvane");
}

TEST_F(Shell, TeardownStopsEverything) {
  settings.timeFormat = 1;
  start();
  app->onStartStopRecording();
  ASSERT_NE(app->mVideoFd, -1);
  ASSERT_TRUE(app->mRecordTimer && app->mDatetimeTimer);
  end();
  EXPECT_FALSE(fake_camera::is_open());
  EXPECT_FALSE(datetime_image.enabled);
  EXPECT_EQ(datetime_image.luma, nullptr);
  EXPECT_TRUE(filter_stop);
  EXPECT_THAT(fake_camera::commands(), testing::Not(testing::Contains(HasSubstr("without camera"))));
  start();  // and once more in the same process
  EXPECT_EQ(fake_camera::announce(), 0);
  EXPECT_TRUE(fake_camera::wait_returned(1));
}

TEST_F(Shell, MessagesGoToTheErrorStreamAsTheyAre) {
  start();
  const std::string text = errors_of([] {
    qDebug("a %d", 1);
    qWarning("b");
    qCritical() << "c";
  });
  EXPECT_EQ(text, "a 1\nb\nc\n");
}

}  // namespace

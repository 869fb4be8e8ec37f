#include "app/tarnelapp.h"

#include <QtQml/qqml.h>
#include <QTimer>
#include <QUuid>
#include <cstdio>
#include <cstdlib>

#include "capture/app_shot.h"
#include "engine/color_filter.h"
#include "engine/filter_thread.h"
#include "engine/overlay.h"
#include "engine/overlay_loader.h"
#include "engine/stamp.h"
#include "platform/camera/camera_config.h"
#include "platform/cascades/animation.h"
#include "platform/cascades/qml_document.h"
#include "platform/cascades/stage.h"
#include "platform/device/info.h"
#include "social/invite_to_download.h"
#include "social/registration_handler.h"

int _num_menu_choices = main_menu_count;
int _num_screen_res = 0;
bool _device_z10 = false;
int last_zoom = 0;
bool _modify_color = false;

namespace {

namespace cascades = bb::cascades;

constexpr const char* main_screen = "asset:///Settings.qml";
constexpr const char* application_uuid = "0f3a7c21-5b9e-4d6a-8c12-7e4b9a0d3f65";
constexpr int late_start_ms = 3000;
constexpr int natural_rotation = 270;
constexpr float square_viewfinder_width = 1440;
constexpr float square_viewfinder_height = 1080;
constexpr auto followed_properties = cascades::ForeignWindowControl::Position | cascades::ForeignWindowControl::Size |
                                     cascades::ForeignWindowControl::SourcePosition;

void register_qml_types() {
  qmlRegisterType<AppShot>("com.appshot", 1, 0, "AppShot");
  qmlRegisterType<QTimer>("com.appshot", 1, 0, "QTimer");
}

/// Ends the program at once: the pages, half built, are not to be taken down by static destructors.
[[noreturn]] void refuse_main_screen() {
  std::fprintf(stderr, "%s is no NavigationPane\n", main_screen);
  std::fflush(nullptr);
  std::_Exit(EXIT_FAILURE);
}

template <typename T>
void delete_and_clear(T*& object) {
  delete object;
  object = nullptr;
}

}  // namespace

void log_to_stderr(QtMsgType, const QMessageLogContext&, const QString& message) {
  std::fprintf(stderr, "%s\n", message.toUtf8().constData());
}

// Each step relies on those before it: flags on the settings, the list on the page, the stamp on the camera's size.
tarnelApp::tarnelApp(cascades::Application* app) : QObject(app), mModel(new cascades::GroupDataModel(this)) {
  const bb::device::DisplayInfo display;
  register_qml_types();
  qInstallMessageHandler(log_to_stderr);
  _busy = true;
  create_invoke_manager();
  read_settings();
  apply_overlay_settings();
  fill_main_menu();
  filter_init(static_cast<double>(_color_filter_value), filter_match_red);
  _num_menu_choices = main_menu_count;
  create_file_picker();
  cascades::Menu* const menu = create_application_menu();
  create_screenshot_action();
  last_zoom = 0;
  create_viewfinder_window(display.pixelSize());
  load_main_screen();
  find_controls();
  place_viewfinder();
  attach_gestures();
  mModel->setGrouping(cascades::ItemGrouping::None);
  updateTrackInformation();
  register_bbm(app);
  app->setScene(mRoot);
  app->mainWindow()->setScreenIdleMode(cascades::ScreenIdleMode::KeepAwake);
  app->setMenu(menu);
  onStartRear();
  show_stored_stamp();
  QTimer::singleShot(late_start_ms, this, &tarnelApp::bbmFinishRegister);
  _busy = false;
  if (_major_error) QTimer::singleShot(late_start_ms, this, &tarnelApp::showError);
  follow_cameras();
}

// The camera is stopped after everything that it could still call for, and before the window that it posts to is gone.
tarnelApp::~tarnelApp() {
  handset::set_reopen_listener({});
  free_logo_image();
  free_datetime_image();
  delete_and_clear(mRegistrationHandler);
  delete_and_clear(mInvite);
  delete_and_clear(mRecordTimer);
  delete_and_clear(mDatetimeTimer);
  onStopCamera();
  if (mVideoFd != -1) onStartStopRecording();
  delete[] mResolutions;
  mResolutions = nullptr;
  kill_thread();
  delete_and_clear(mViewfinderWindow);
  delete_and_clear(mSettingsSheet);
  delete_and_clear(mHelpPage);
  delete_and_clear(mFilePicker);
  // The pages go while what they are bound to is still there, and with nothing of them left to reach.
  mRoot = nullptr;
  find_controls();
  qDeleteAll(findChildren<cascades::QmlDocument*>(Qt::FindDirectChildrenOnly));
}

void tarnelApp::create_invoke_manager() {
  mInvokeManager = new bb::system::InvokeManager(this);
  connect(mInvokeManager, &bb::system::InvokeManager::childCardDone, this, &tarnelApp::onCardDone);
}

void tarnelApp::apply_overlay_settings() {
  _include_logo_original_color = mSettings.logoOriginalColor != 0;
  _include_logo = mSettings.includeLogo != 0;
  mSettings.overlayPath[0] = '\0';
  free_logo_image();
  free_datetime_image();
}

void tarnelApp::create_file_picker() {
  namespace pickers = cascades::pickers;
  mFilePicker = new pickers::FilePicker;
  mFilePicker->setTitle(QStringLiteral("Select a Picture"));
  mFilePicker->setMode(pickers::FilePickerMode::Picker);
  mFilePicker->setType(pickers::FileType::Picture);
  connect(mFilePicker, &pickers::FilePicker::fileSelected, this, &tarnelApp::onFilesSelected);
  connect(mFilePicker, &pickers::FilePicker::canceled, this, &tarnelApp::onFileCanceled);
}

cascades::ActionItem* tarnelApp::action_item(const char* title, const char* image, void (tarnelApp::*slot)()) {
  auto* item = new cascades::ActionItem(this);
  item->setTitle(QString::fromUtf8(title));
  item->setImageSource(QUrl(QString::fromUtf8(image)));
  connect(item, &cascades::ActionItem::triggered, this, slot);
  return item;
}

cascades::Menu* tarnelApp::create_application_menu() {
  auto* menu = new cascades::Menu;
  cascades::ActionItem* const setting =
      action_item("Setting", "asset:///images/ic_settings.png", &tarnelApp::handleSettingAction);
  mPrivateAction = action_item("Private", "asset:///images/ic_private.png", &tarnelApp::handlePrivateAction);
  cascades::ActionItem* const help = action_item("Help", "asset:///images/ic_help.png", &tarnelApp::handleHelpAction);
  for (cascades::ActionItem* const item : {help, setting, mPrivateAction}) menu->addAction(item);
  return menu;
}

/// Not in the menu, which has three items; pages call its slot by themselves.
void tarnelApp::create_screenshot_action() {
  action_item("ScreenShot", "asset:///images/icon_camera.png", &tarnelApp::handleScreenShotAction);
}

void tarnelApp::create_viewfinder_window(QSize display) {
  _device_z10 = display.height() != display.width();
  mViewfinderWindow = new cascades::ForeignWindowControl;
  mViewfinderWindow->setWindowId(QStringLiteral("cameraViewfinder"));
  if (_device_z10) {
    screen_set_window_property_iv(mViewfinderWindow->windowHandle(), SCREEN_PROPERTY_ROTATION, &natural_rotation);
  } else {
    mViewfinderWindow->setPreferredWidth(square_viewfinder_width);
    mViewfinderWindow->setPreferredHeight(square_viewfinder_height);
  }
  mViewfinderWindow->setUpdatedProperties(followed_properties);
  connect(mViewfinderWindow, &cascades::ForeignWindowControl::windowAttached, this, &tarnelApp::onWindowAttached);
}

/// Cameras come back, and come anew; and the user may want to try again.
void tarnelApp::follow_cameras() {
  connect(handset::Stage::instance(), &handset::Stage::retryRequested, this, &tarnelApp::reopen_camera);
  handset::set_reopen_listener([this](camera_unit_t unit) {
    QMetaObject::invokeMethod(
        this,
        [this, unit] {
          if (unit == mCameraUnit) reopen_camera();
        },
        Qt::QueuedConnection);
  });
}

void tarnelApp::load_main_screen() {
  cascades::QmlDocument* const document = cascades::QmlDocument::create(QString::fromUtf8(main_screen), this);
  document->setContextProperty(QStringLiteral("_mainApp"), this);
  mRoot = document->createRootObject<cascades::NavigationPane>();
  if (!mRoot) refuse_main_screen();
}

void tarnelApp::find_controls() {
  mRecordLabel = control<cascades::Label>("recordLabel");
  mSceneIcon = control<cascades::ImageView>("sceneImg");
  mModeIcon = control<cascades::ImageView>("modeImg");
  mRecordRedDotImg = control<cascades::ImageView>("recordRedDotImg");
  mListMenuContainer = control<cascades::Container>("listMenuContainer");
  mEffectContainer = control<cascades::Container>("effectContainer");
  mSetYUVContainer = control<cascades::Container>("setYUVContainer");
  mMainContainer = control<cascades::Container>("mainContainer");
  mMenuAnim = control<cascades::TranslateTransition>("menuAnim");
}

void tarnelApp::place_viewfinder() {
  if (auto* const container = control<cascades::Container>("cameraContainer")) container->add(mViewfinderWindow);
}

void tarnelApp::attach_gestures() {
  auto* const tap = new cascades::TapHandler(this);
  connect(tap, &cascades::TapHandler::tapped, this, &tarnelApp::onTap);
  auto* const pinch = new cascades::PinchHandler(this);
  connect(pinch, &cascades::PinchHandler::pinchStarted, this, &tarnelApp::onPinchStart);
  connect(pinch, &cascades::PinchHandler::pinchUpdated, this, &tarnelApp::onPinchUpdate);
  connect(pinch, &cascades::PinchHandler::pinchEnded, this, &tarnelApp::onPinchEnd);
  connect(pinch, &cascades::PinchHandler::pinchCancelled, this, &tarnelApp::onPinchCancel);
  if (!mMainContainer) return;
  mMainContainer->addGestureHandler(tap);
  mMainContainer->addGestureHandler(pinch);
}

void tarnelApp::register_bbm(cascades::Application* app) {
  mRegistrationHandler = new RegistrationHandler(QUuid(QString::fromUtf8(application_uuid)), app);
  mRegistrationHandler->registerApplication();
}

void tarnelApp::show_stored_stamp() {
  logo_pos = logo_position(mSettings);
  if (time_format(mSettings) == 0) return;
  load_datetime_template();
  generate_datetime();
}

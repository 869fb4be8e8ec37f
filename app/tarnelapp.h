#pragma once

// The application object: builds the user interface, owns the state that the slots share, and configures the engine.
// Everything here is for the UI thread. The slots are thin; each subsystem's stand in its folder:
//
//   app/      dialogs.cpp, settings_sheet.cpp, overlay_slots.cpp, stamp_slots.cpp; app/menu/menu_slots.cpp
//   camera/   viewfinder_slots.cpp, rotation_slots.cpp, resolution_slots.cpp, scene_slots.cpp, light_slots.cpp,
//             zoom_slots.cpp
//   capture/  recording_slots.cpp, screen_recording_slots.cpp, screenshot_slots.cpp, playback_slots.cpp
//   social/   social_slots.cpp, attribution_slots.cpp

#include <QImage>
#include <QNetworkAccessManager>
#include <QObject>
#include <QStringList>
#include <QVariantList>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "app/menu/menu_tables.h"
#include "app/preferences.h"
#include "camera/rotation.h"
#include "camera/zoom.h"
#include "platform/camera/camera.h"
#include "platform/camera/camera_roll.h"
#include "platform/cascades/application.h"
#include "platform/cascades/container.h"
#include "platform/cascades/controls.h"
#include "platform/cascades/data_model.h"
#include "platform/cascades/foreign_window_control.h"
#include "platform/cascades/gestures.h"
#include "platform/cascades/menu.h"
#include "platform/cascades/orientation.h"
#include "platform/cascades/pages.h"
#include "platform/cascades/pickers.h"
#include "platform/screen/screen.h"
#include "platform/system/invoke.h"

class InviteToDownload;
class QNetworkReply;
class QTimer;
class RegistrationHandler;

namespace bb::cascades {
class TranslateTransition;
}

/// Rows of the list that the action menu shows.
extern int _num_menu_choices;
/// Entries of tarnelApp::mResolutions.
extern int _num_screen_res;
/// The display is not square.
extern bool _device_z10;
/// Zoom step last applied during the current pinch.
extern int last_zoom;
/// The tolerance panel was brought up by a tap, and the next tap closes it.
extern bool _modify_color;

/// The message handler: the text and a line end to the error stream, whatever the message's type. Any thread.
void log_to_stderr(QtMsgType type, const QMessageLogContext& context, const QString& message);

class tarnelApp : public QObject {
  Q_OBJECT
  Q_PROPERTY(bb::cascades::GroupDataModel* model READ model CONSTANT)

 public:
  /// Builds everything and starts the rear camera. A main screen that is no NavigationPane ends the program with one
  /// line on the error stream and status 1. The sandbox has to be entered before.
  explicit tarnelApp(bb::cascades::Application* app);
  ~tarnelApp() override;

  bb::cascades::GroupDataModel* model() const { return mModel; }

  // The order of the slots is their order in the meta-object.
 public Q_SLOTS:
  void handleSettingAction();
  void handleHelpAction();
  void handlePrivateAction();
  void handleScreenShotAction();
  void onFileCanceled();
  void onFilesSelected(QStringList list);
  void delay_load_logo();
  void delay_screenshot();
  void generate_datetime();
  void bbmFinishRegister();
  void onWindowAttached(screen_window_t win, QString group, QString id);
  void onStartFront();
  void onStartRear();
  void onStopCamera();
  void onStartStopRecording();
  void handleSwitchCameraAction();
  void handleFlashLightAction();
  void handlePopTransitionEnded(bb::cascades::Page* page);
  void onTap(bb::cascades::TapEvent* tapEvent);
  void onPinchStart(bb::cascades::PinchEvent* pinchEvent);
  void onPinchEnd(bb::cascades::PinchEvent* pinchEvent);
  void onPinchUpdate(bb::cascades::PinchEvent* pinchEvent);
  void onPinchCancel();
  void onOrientationAboutToChange(bb::cascades::UIOrientation::Type orientation);
  void peformMenuAction(QVariantList indexPath);
  void setMenuVisible(bool visible);
  void setScreenSize();
  void changeFilterColor(float value);
  void setModifyEffectColor();
  void changeCustomColor(int type, float value);
  void playVideo();
  void restartCamera();
  void invitedownload();
  void saveSettings();
  void cancelSettings();
  void showPhotoInCard(QString fileName);
  void startScreenRecorder();
  void record_stop();
  void updateClockTimer();
  void showError();
  void startRecording();
  void onFinishedPing();
  void onCardDone(bb::system::CardDoneMessage message);

  // Shared by the slots of all subsystems.
 public:
  // dialogs.cpp
  void showToast(const char* text);
  void showAlert(const char* text);
  bool AskAlert(const char* text);
  void do_help();
  // settings_sheet.cpp
  void openSettings();
  int read_settings();
  void save_settings();
  // menu_slots.cpp
  void hide_menu();
  void showMenuIcon(bool visible);
  void updateTrackInformation();
  // overlay_slots.cpp
  /// Takes the overlay away and loads the file in its place, overlay_delay_ms later. A path that does not fit the
  /// settings is refused with one line on the error stream, and the overlay stays.
  /// @return false when it was refused
  bool load_logo(const char* path);
  /// Stops drawing the overlay and remembers in mSavedOverlayEnabled whether it was drawn.
  void suspend_overlay();
  void open_file_picker(int unused);
  // stamp_slots.cpp
  void load_datetime_template();
  void start_datetime_timer();
  // viewfinder_slots.cpp
  int createViewfinder(camera_unit_t unit, const QString& group, const QString& id);
  void turnon_stabilization();
  void choose_mode_row(int row);
  /// The camera service's news of the running viewfinder: what the filter thread has to know of it first, then what the
  /// page shows. `arg` is not used. Any thread but the filter thread.
  static void status_callback(camera_handle_t handle, camera_devstatus_t status, std::uint16_t extra, void* arg);
  /// Closes the camera and opens the one that there is now, with the light and the overlay as they were. Not during a
  /// recording, a film, or while the screen is the camera.
  void reopen_camera();
  // rotation_slots.cpp
  void querySupportedRotations();
  void updateAngles(int displayDirection);
  void applyRotations(bool flush);
  // resolution_slots.cpp
  void get_video_size(bb::cascades::DropDown* unused);
  void set_screen_size_label();
  void choose_resolution_row(int row);
  // scene_slots.cpp, light_slots.cpp
  void apply_stored_scene();
  void choose_scene_row(int row);
  void show_light_state(bb::cascades::ImageButton* button);
  // recording_slots.cpp
  void start_record_timer();
  /// Completes films that a killed run left in the camera roll, on a separate thread, and names them in a toast.
  void tidy_films(const handset::CompleteFilm& complete);
  /// The recording's stop, film and look; where the camera is closed, that has completed the film. mVideoFd is open.
  void end_recording();
  // screen_recording_slots.cpp
  void handleScreenRecordingAction();
  // screenshot_slots.cpp
  /// A newly allocated name that the caller frees; null when there is no memory.
  char* get_new_filename();
  // attribution_slots.cpp
  bool isInternetConnected();
  QString getLocalIp();
  void ping_kochava_server();

  /// The sizes of the camera that opened last.
  std::span<const camera_res_t> resolutions() const {
    return {mResolutions, mResolutions ? static_cast<std::size_t>(_num_screen_res) : 0};
  }
  /// A control of the main screen by its object name; null when there is none.
  template <typename T>
  T* control(const char* name) const {
    return mRoot ? mRoot->findChild<T*>(QLatin1String(name)) : nullptr;
  }

  rotation_state_s mRotation;  ///< mDisplayAngle, mCaptureAngle, mVideoAngle, mVfAngle, mWindowAngle, mMirror
  bool mChooseVideoAngle = false;
  bool mSeparateVfRotation = false;
  int mNumVideoRotations = 0;
  std::unique_ptr<int[]> mVideoRotations;
  bb::cascades::ForeignWindowControl* mViewfinderWindow = nullptr;
  bb::cascades::ImageView* mSceneIcon = nullptr;
  bb::cascades::ImageView* mModeIcon = nullptr;
  bb::cascades::ImageView* mRecordRedDotImg = nullptr;
  bb::cascades::Label* mRecordLabel = nullptr;
  bb::cascades::Page* mHelpPage = nullptr;
  bb::cascades::Sheet* mSettingsSheet = nullptr;
  camera_handle_t mCameraHandle = CAMERA_HANDLE_INVALID;
  camera_unit_t mCameraUnit = CAMERA_UNIT_NONE;
  int mVideoFd = -1;
  std::string mVideoBefore;  ///< lastVideoPath when the recording began
  int mMenuMode = menu_closed;
  int mRecordSeconds = 0;
  int mResolutionIndex = 0;
  bb::cascades::NavigationPane* mRoot = nullptr;
  bb::cascades::Container* mMainContainer = nullptr;
  bb::cascades::Container* mListMenuContainer = nullptr;
  bb::cascades::Container* mEffectContainer = nullptr;
  bb::cascades::Container* mSetYUVContainer = nullptr;
  camera_res_t* mResolutions = nullptr;
  bb::cascades::TranslateTransition* mMenuAnim = nullptr;
  QString mSelectedFile;
  bb::cascades::ActionItem* mPrivateAction = nullptr;
  bool mLightOn = false;
  bool mSavedOverlayEnabled = false;
  bool mPrivateMode = false;
  bool mPrivateHintShown = false;
  zoom_state_s mZoomState;  ///< mZoom, mPinching, mPinchStartRatio; last_zoom and busy are copied to their globals
  zoom_limits_s mZoomLimits{0, 0};
  PrefsRecord mSettings{};
  QTimer* mRecordTimer = nullptr;
  QTimer* mDatetimeTimer = nullptr;
  QImage mDatetimeImage;
  bb::cascades::pickers::FilePicker* mFilePicker = nullptr;
  bb::cascades::GroupDataModel* mModel = nullptr;
  InviteToDownload* mInvite = nullptr;
  RegistrationHandler* mRegistrationHandler = nullptr;
  bb::system::InvokeManager* mInvokeManager = nullptr;
  QNetworkAccessManager mNetworkManager;
  QNetworkReply* mPingReply = nullptr;

 private:
  // tarnelapp.cpp: steps of the construction
  void create_invoke_manager();
  void apply_overlay_settings();
  void create_file_picker();
  bb::cascades::ActionItem* action_item(const char* title, const char* image, void (tarnelApp::*slot)());
  bb::cascades::Menu* create_application_menu();
  void create_screenshot_action();
  void create_viewfinder_window(QSize display);
  void follow_cameras();
  void load_main_screen();
  void find_controls();
  void place_viewfinder();
  void attach_gestures();
  void register_bbm(bb::cascades::Application* app);
  void show_stored_stamp();

  // settings_sheet.cpp
  bb::cascades::Sheet* load_settings_sheet();
  void fill_settings_sheet() const;
  void read_settings_sheet();
  void apply_settings();

  // menu_slots.cpp
  void open_list(MenuMode mode);
  void choose_main_row(int row);
  void choose_filter_row(int row);
  void choose_texture_row(int row);
  void show_mixer();
  void close_mixer();

  // overlay_slots.cpp
  void replace_overlay(const char* path, bool fill_frame);
  bool wants_resize(const char* path);
  void build_overlay();

  bool mPickerOpen = false;
  bool mBuildingOverlay = false;  ///< a question about the overlay is open
  bool mOverlayOutdated = false;  ///< another load came due meanwhile
};

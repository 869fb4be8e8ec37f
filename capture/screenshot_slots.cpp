#include <QFile>
#include <QTimer>
#include <cstdlib>
#include <ctime>
#include <memory>

#include "app/page_controls.h"
#include "app/tarnelapp.h"
#include "capture/app_shot.h"
#include "capture/screenshot_name.h"

namespace {

/// By then the window has been drawn without the controls.
constexpr int settling_ms = 500;

/// What does not belong on a screenshot. Afterwards all of it is visible, whatever it was before.
void show_controls(const tarnelApp& app, bool visible) {
  set_visible(app.control<bb::cascades::Container>("screensizeContainer"), visible);
  set_visible(app.control<bb::cascades::Container>("playContainer"), visible);
  set_visible(app.control<bb::cascades::ImageButton>("menuIconImgButton"), visible);
}

}  // namespace

void tarnelApp::handleScreenShotAction() {
  show_controls(*this, false);
  QTimer::singleShot(settling_ms, this, &tarnelApp::delay_screenshot);
}

void tarnelApp::delay_screenshot() {
  AppShot shot;
  const std::unique_ptr<char, decltype(&std::free)> name(get_new_filename(), std::free);
  if (name) {
    shot.captureScreen(QFile::decodeName(name.get()));
    showToast("Screen shot saved to the Camera folder.");
  } else {
    showToast("Can't allocate memory.");
  }
  show_controls(*this, true);
}

char* tarnelApp::get_new_filename() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return make_screenshot_name(local);
}

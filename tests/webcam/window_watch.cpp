// The program's window with a stopwatch: while it is shown a key is pressed again as soon as the last one was answered,
// and the slowest answer is printed at the end. SIGTERM ends it, as it ends the program.

#include <QCoreApplication>
#include <QInputDevice>
#include <QKeyEvent>
#include <QQuickWindow>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "app/tarnelapp.h"
#include "platform/camera/camera_config.h"
#include "platform/device/sandbox.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds pause_between{15};
/// A modifier by itself: the window has to look at it, and nothing comes of it.
constexpr int harmless_key = Qt::Key_Shift;

/// Presses keys from a thread of its own, and times the answers.
class Stopwatch : public QObject {
 public:
  explicit Stopwatch(QObject* window) : window_(window) {
    QInputDevice::primaryKeyboard();  // made here, since the first event of its own thread would make it there
    window->installEventFilter(this);
  }
  ~Stopwatch() override {
    stop_ = true;
    if (thread_.joinable()) thread_.join();
  }

  /// Seconds from the window's first sight to the press, and milliseconds that its answer took.
  double at() const { return slowest_at_; }
  double slowest() const { return slowest_; }
  int answers() const { return answers_; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Show && !thread_.joinable()) thread_ = std::thread([this] { press_keys(); });
    if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == harmless_key) answered_ = true;
    return QObject::eventFilter(watched, event);
  }

 private:
  void press_keys() {
    const auto shown = Clock::now();
    while (!stop_) {
      const auto pressed = Clock::now();
      answered_ = false;
      QCoreApplication::postEvent(window_, new QKeyEvent(QEvent::KeyPress, harmless_key, Qt::NoModifier),
                                  Qt::HighEventPriority);
      while (!answered_ && !stop_) std::this_thread::sleep_for(std::chrono::milliseconds(1));
      const double took = std::chrono::duration<double, std::milli>(Clock::now() - pressed).count();
      if (took > slowest_) {
        slowest_ = took;
        slowest_at_ = std::chrono::duration<double>(pressed - shown).count();
      }
      ++answers_;
      std::this_thread::sleep_for(pause_between);
    }
  }

  QObject* const window_;
  std::atomic<bool> stop_{false};
  std::atomic<bool> answered_{false};
  std::atomic<double> slowest_{0};
  std::atomic<double> slowest_at_{0};
  std::atomic<int> answers_{0};
  std::thread thread_;
};

int run(int argc, char** argv) {
  const std::string package = find_package_dir();
  if (package.empty() || enter_sandbox(package) != 0) return EXIT_FAILURE;
  handset::CameraServiceConfig cameras = handset::config_from_device_profile();
  cameras.wait_for_picture = false;
  handset::configure_camera_service(cameras);
  handset::begin_camera_search();
  bb::cascades::Application app(argc, argv);
  const Stopwatch watch(app.desktopWindow());
  new tarnelApp(&app);
  const int status = app.exec();
  std::printf("slowest answer %.0f ms after %.1f s, of %d\n", watch.slowest(), watch.at(), watch.answers());
  std::fflush(stdout);
  return watch.answers() > 0 ? status : EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) {
  handset::end_process(run(argc, argv));
}

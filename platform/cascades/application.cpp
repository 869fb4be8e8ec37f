#include "platform/cascades/application.h"

#include <QEventLoop>
#include <QFile>
#include <QIcon>
#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickItemGrabResult>
#include <QScreen>
#include <QTimer>
#include <cstdio>

#include "platform/camera/long_wait.h"
#include "platform/cascades/assets.h"
#include "platform/cascades/display_window.h"
#include "platform/cascades/end_signals.h"
#include "platform/cascades/graphics.h"
#include "platform/cascades/keep_awake.h"
#include "platform/cascades/orientation.h"
#include "platform/cascades/pages.h"
#include "platform/cascades/register.h"
#include "platform/cascades/stage.h"
#include "platform/cascades/window_geometry.h"
#include "platform/device/profile.h"
#include "platform/screen/screen_window.h"

namespace bb::cascades {

namespace {

Application* the_application = nullptr;

QSize display_size() {
  const DeviceProfile& profile = device_profile();
  return handset::turned_display({profile.display_width, profile.display_height},
                                 OrientationSupport::instance()->displayDirection());
}

/// Blocks the user's input to a window, except closing it.
class InputStop : public QObject {
 public:
  explicit InputStop(QObject* window) : window_(window) { window->installEventFilter(this); }
  void lift() { window_->removeEventFilter(this); }

 protected:
  bool eventFilter(QObject*, QEvent* event) override { return event->isInputEvent(); }

 private:
  QObject* const window_;
};

/// Keeps the window drawn but without input while the user is busy elsewhere.
void wait_drawn(const std::function<bool()>& done) {
  if (done()) return;
  InputStop stop(the_application->desktopWindow());
  QEventLoop loop;
  QTimer turn;
  QObject::connect(&turn, &QTimer::timeout, &loop, [&] {
    if (!done()) return;
    // A dialog opened by a timer meanwhile has to be answered first.
    stop.lift();
    loop.quit();
  });
  turn.start(std::chrono::milliseconds(10));
  loop.exec();
  // The program was to end: a loop that had not started yet has missed that.
  if (!done()) QMetaObject::invokeMethod(the_application, &QCoreApplication::quit, Qt::QueuedConnection);
}

}  // namespace

struct Window::State {
  screen_window_s handle;
  handset::KeepAwake keep_awake;
};

Window::Window(QObject* parent) : QObject(parent), state_(std::make_unique<State>()) {
  state_->handle.read = [] { return Application::instance()->readDisplay(); };
}

Window::~Window() = default;

screen_window_t Window::handle() const {
  return &state_->handle;
}

void Window::setScreenIdleMode(ScreenIdleMode::Type mode) {
  idle_mode_ = mode;
  state_->keep_awake.set(mode == ScreenIdleMode::KeepAwake);
}

struct Application::State {
  QObjectList qt_children;  ///< the ones Qt deletes itself
  QPointer<handset::Stage> stage;
  // In reverse order of destruction.
  std::unique_ptr<QQmlEngine> engine;
  std::unique_ptr<handset::DisplayWindow> desktop_window;
  std::unique_ptr<Window> main_window;
  QPointer<Menu> menu;
  QPointer<AbstractPane> scene;
  QQuickItem* display = nullptr;      ///< in the desktop window, like everything below
  QQuickItem* scene_layer = nullptr;  ///< holds the scene
};

Application::Application(int& argc, char** argv) : QGuiApplication(argc, argv), state_(std::make_unique<State>()) {
  setApplicationName(QStringLiteral("morvane"));
  setApplicationDisplayName(QStringLiteral("Morvane"));
  setDesktopFileName(QStringLiteral("morvane"));
  the_application = this;
  handset::choose_graphics();
  handset::quit_on_signals(this);
  handset::set_long_wait(wait_drawn);
  state_->stage = handset::Stage::instance();
  state_->qt_children = children();
  state_->engine = std::make_unique<QQmlEngine>();
  register_cascades(*state_->engine);
  state_->desktop_window = std::make_unique<handset::DisplayWindow>();
  state_->main_window.reset(new Window(nullptr));
  create_display();
  connect(OrientationSupport::instance(), &OrientationSupport::orientationChanged, this, [this] {
    lay_out();
    state_->desktop_window->reshape(display_size());
  });
}

Application::~Application() {
  // The application's objects use the scene, the menu and the engine until they are gone. Any of them may delete
  // others.
  const QList<QPointer<QObject>> all(children().begin(), children().end());
  for (const QPointer<QObject>& child : all) {
    if (child && !state_->qt_children.contains(child)) delete child.data();
  }
  delete state_->scene.data();
  delete state_->menu.data();
  state_->main_window.reset();
  state_->desktop_window.reset();
  state_->engine.reset();
  delete state_->stage.data();
  handset::set_long_wait({});
  the_application = nullptr;
}

Application* Application::instance() {
  return the_application;
}

void Application::create_display() {
  handset::DisplayWindow* window = state_->desktop_window.get();
  QQmlComponent component(engine(), QUrl(QStringLiteral("qrc:/bb/cascades/window/Bezel.qml")));
  if (!component.isReady())
    qFatal("the window cannot be drawn: %s", qUtf8Printable(component.errorString().simplified()));
  QObject* root =
      component.createWithInitialProperties({{QStringLiteral("stage"), QVariant::fromValue(state_->stage.data())},
                                             {QStringLiteral("application"), QVariant::fromValue(this)}});
  auto* bezel = qobject_cast<QQuickItem*>(root);
  bezel->setParent(window);
  bezel->setParentItem(window->contentItem());
  state_->display = bezel->findChild<QQuickItem*>(QStringLiteral("display"));
  state_->scene_layer = bezel->findChild<QQuickItem*>(QStringLiteral("sceneLayer"));
  lay_out();
  window->resize(handset::first_window_size(display_size(), window->screen()->availableSize()));
  window->setTitle(QStringLiteral("Morvane"));
  const QString icon = resolve_asset(QUrl(QStringLiteral("asset:///images/icon_app.png"))).toLocalFile();
  if (QFile::exists(icon)) setWindowIcon(QIcon(icon));
  connect(window, &handset::DisplayWindow::backUnused, this, &Application::go_back_in_scene);
}

void Application::lay_out() {
  // Both sides at once: no layout sees one without the other.
  state_->display->setSize(display_size());
}

void Application::go_back_in_scene() {
  if (auto* pane = qobject_cast<NavigationPane*>(scene())) pane->pop();
}

void Application::setScene(AbstractPane* scene) {
  if (state_->scene == scene) return;
  delete state_->scene.data();
  state_->scene = scene;
  if (scene) {
    scene->setParentItem(state_->scene_layer);
    state_->desktop_window->show();
  }
  Q_EMIT sceneChanged();
}

AbstractPane* Application::scene() const {
  return state_->scene;
}

void Application::setMenu(Menu* menu) {
  if (state_->menu == menu) return;
  delete state_->menu.data();
  state_->menu = menu;
  if (menu) connect(menu, &QObject::destroyed, this, &Application::menuChanged);
  Q_EMIT menuChanged();
}

Menu* Application::menu() const {
  return state_ ? state_->menu : nullptr;
}

Window* Application::mainWindow() const {
  return state_->main_window.get();
}

QQmlEngine* Application::engine() const {
  return state_->engine.get();
}

QQuickWindow* Application::desktopWindow() const {
  return state_->desktop_window.get();
}

QQuickItem* Application::display() const {
  return state_->display;
}

QImage Application::readDisplay() const {
  const QSharedPointer<QQuickItemGrabResult> result = display()->grabToImage(display_size());
  if (!result) return {};
  // The item is drawn into its own image with the window's next frame, which this requests.
  desktopWindow()->grabWindow();
  return result->image().convertToFormat(QImage::Format_ARGB32);
}

void Application::bringToFront() {
  state_->desktop_window->bring_to_front();
}

}  // namespace bb::cascades

#pragma once

// The application and its window: the handset's display, drawn to scale in a resizable desktop window.

#include <QGuiApplication>
#include <QPointer>
#include <memory>

#include "platform/cascades/menu.h"
#include "platform/screen/screen.h"

class QQmlEngine;
class QQuickItem;
class QQuickWindow;

namespace bb::cascades {

class AbstractPane;

class ScreenIdleMode {
  Q_GADGET

 public:
  enum Type { Normal = 0, KeepAwake = 1 };
  Q_ENUM(Type)
};

/// The application's main window.
class Window : public QObject {
  Q_OBJECT

 public:
  ~Window() override;
  /// Returns what the display shows, upright and at the display's own resolution.
  screen_window_t handle() const;
  ScreenIdleMode::Type screenIdleMode() const { return idle_mode_; }
  /// KeepAwake: keeps the desktop from dimming the screen, best effort, until it is reset or the program ends.
  void setScreenIdleMode(ScreenIdleMode::Type mode);

 private:
  friend class Application;
  explicit Window(QObject* parent);
  struct State;
  std::unique_ptr<State> state_;
  ScreenIdleMode::Type idle_mode_ = ScreenIdleMode::Normal;
};

/// SIGTERM and SIGINT end its event loop, like closing the window and Ctrl+Q.
class Application : public QGuiApplication {
  Q_OBJECT
  Q_PROPERTY(bb::cascades::Menu* menu READ menu NOTIFY menuChanged)

 public:
  /// At most one per process at a time. Chooses how the window is drawn: by a GPU if there is one, else by the CPU.
  Application(int& argc, char** argv);
  /// Destroys its children first, then the scene, the menu, the window and the engine.
  ~Application() override;
  /// Null if there is none.
  static Application* instance();

  /// Also shows the window. The application owns the scene and deletes the previous one.
  void setScene(AbstractPane* scene);
  AbstractPane* scene() const;
  /// The application owns the menu and deletes the previous one.
  void setMenu(Menu* menu);
  Menu* menu() const;
  Window* mainWindow() const;

  /// The engine that creates documents and looks.
  QQmlEngine* engine() const;
  /// The desktop window, for tests and for the desktop's dialogs.
  QQuickWindow* desktopWindow() const;
  /// The display: the root of everything drawn. Its size is the display's, turned with the handset.
  QQuickItem* display() const;

  /// What the display shows, upright and at the display's own resolution; a null image if it cannot be drawn.
  QImage readDisplay() const;

 public Q_SLOTS:
  /// Raises the window above the desktop's other windows, as far as the desktop allows.
  void bringToFront();

 Q_SIGNALS:
  void menuChanged();
  void sceneChanged();

 private:
  void create_display();
  void lay_out();
  void go_back_in_scene();

  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace bb::cascades

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
  /// Reading it gives what the display shows, upright and in the display's own resolution.
  screen_window_t handle() const;
  ScreenIdleMode::Type screenIdleMode() const { return idle_mode_; }
  /// KeepAwake: the desktop does not dim the screen, best effort, until it is set back or the program ends.
  void setScreenIdleMode(ScreenIdleMode::Type mode);

 private:
  friend class Application;
  explicit Window(QObject* parent);
  struct State;
  std::unique_ptr<State> state_;
  ScreenIdleMode::Type idle_mode_ = ScreenIdleMode::Normal;
};

/// SIGTERM and SIGINT end its event loop, as closing the window and Ctrl+Q do.
class Application : public QGuiApplication {
  Q_OBJECT
  Q_PROPERTY(bb::cascades::Menu* menu READ menu NOTIFY menuChanged)

 public:
  /// One per process at a time. Chooses how the window is drawn: by a GPU where there is one, else by the CPU.
  Application(int& argc, char** argv);
  /// Destroys its children first, then the scene, the menu, the window and the engine.
  ~Application() override;
  /// Null when there is none.
  static Application* instance();

  /// Shows the window as well. The application owns the scene; the one before is deleted.
  void setScene(AbstractPane* scene);
  AbstractPane* scene() const;
  /// The application owns the menu; the one before is deleted.
  void setMenu(Menu* menu);
  Menu* menu() const;
  Window* mainWindow() const;

  /// The engine that documents and looks are created with.
  QQmlEngine* engine() const;
  /// The desktop window, for tests and for dialogs of the desktop.
  QQuickWindow* desktopWindow() const;
  /// The display: the root of everything that is drawn. Its size is the display's, turned with the handset.
  QQuickItem* display() const;

  /// What the display shows, upright and in the display's own resolution; a null image when it cannot be drawn.
  QImage readDisplay() const;

 public Q_SLOTS:
  /// Shows the window above the desktop's other windows, as far as the desktop lets a program do that.
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

#pragma once

#include <gtest/gtest.h>

#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

#include "platform/cascades/application.h"
#include "platform/cascades/orientation.h"
#include "platform/cascades/pages.h"
#include "platform/cascades/qml_document.h"
#include "platform/cascades/stage.h"

/// What the window's documents ask of a dialog.
class FakeDialog : public QObject {
  Q_OBJECT
  Q_PROPERTY(QString title MEMBER title CONSTANT)
  Q_PROPERTY(QString body MEMBER body CONSTANT)
  Q_PROPERTY(QString confirmLabel MEMBER confirm_label CONSTANT)
  Q_PROPERTY(QString cancelLabel MEMBER cancel_label CONSTANT)

 public:
  explicit FakeDialog(const QString& cancel = {}) : cancel_label(cancel) {}
  Q_INVOKABLE void confirm();
  Q_INVOKABLE void cancel();

  QString title = "Morvane";
  QString body = "Text";
  QString confirm_label = "OK";
  QString cancel_label;
  int confirmed = 0;
  int cancelled = 0;
};

class FakeToast : public QObject {
  Q_OBJECT
  Q_PROPERTY(QString body MEMBER body NOTIFY bodyChanged)

 public:
  explicit FakeToast(const QString& text) : body(text) {}
  QString body;

 Q_SIGNALS:
  void bodyChanged();
};

/// The one application of the test program, with a package of its own. Every test begins with an upright handset, an
/// empty stage and a scene of its own.
class CascadesTest : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  static bb::cascades::Application& app() { return *bb::cascades::Application::instance(); }
  static QQuickWindow* window() { return app().desktopWindow(); }
  static handset::Stage* stage() { return handset::Stage::instance(); }

  /// Writes native/assets/NAME of the package.
  static void write_asset(const QString& name, const QByteArray& content);
  /// Makes a document with this text, after the imports, the scene. Its root has to be an AbstractPane.
  bb::cascades::AbstractPane* show(const QByteArray& qml);
  QQuickItem* item(const char* name) const;

  /// Lets the event loop run until the window has drawn what there is.
  static void settle(int milliseconds = 20) { QTest::qWait(milliseconds); }
  /// Where a point of an item is in the window.
  static QPoint at(const QQuickItem* item, QPointF point);
  static QPoint middle(const QQuickItem* item);
  static void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
  /// A turn of the wheel over a point, without an event loop in between.
  static void wheel(QPoint where, int units, Qt::KeyboardModifiers modifiers);

  std::unique_ptr<bb::cascades::QmlDocument> document_;
};

/// The package's folder, for the whole program.
QString test_package();
/// Runs this program again, in one of main.cpp's roles.
QStringList role(const QString& name, const QStringList& arguments = {});

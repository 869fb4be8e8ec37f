#include "tests/cascades/fixture.h"

#include <QDir>
#include <QFile>
#include <QWheelEvent>

using namespace bb::cascades;

void FakeDialog::confirm() {
  ++confirmed;
  handset::Stage::instance()->close_dialog(this);
}

void FakeDialog::cancel() {
  ++cancelled;
  handset::Stage::instance()->close_dialog(this);
}

void CascadesTest::SetUp() {
  OrientationSupport::instance()->turnTo(0);
  window()->resize(408, 680);
  window()->show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window()));
}

void CascadesTest::TearDown() {
  document_.reset();
  app().setScene(nullptr);
  app().setMenu(nullptr);
  ASSERT_EQ(stage()->dialog(), nullptr);
  ASSERT_EQ(stage()->sheet(), nullptr);
  ASSERT_EQ(stage()->card(), nullptr);
  stage()->set_menu_open(false);
}

void CascadesTest::write_asset(const QString& name, const QByteArray& content) {
  const QString path = test_package() + "/native/assets/" + name;
  QDir().mkpath(QFileInfo(path).path());
  QFile file(path);
  ASSERT_TRUE(file.open(QFile::WriteOnly));
  file.write(content);
}

AbstractPane* CascadesTest::show(const QByteArray& qml) {
  // Another name each time: the engine keeps what it has read.
  static int count = 0;
  const QString name = QString("Scene%1.qml").arg(++count);
  write_asset(name, "import QtQuick\nimport bb.cascades 1.0\n" + qml);
  document_.reset(QmlDocument::create("asset:///" + name));
  auto* pane = document_->createRootObject<AbstractPane>();
  EXPECT_NE(pane, nullptr);
  app().setScene(pane);
  settle();
  return pane;
}

QQuickItem* CascadesTest::item(const char* name) const {
  auto* found = app().display()->findChild<QQuickItem*>(name);
  if (!found && app().scene()) found = app().scene()->findChild<QQuickItem*>(name);
  EXPECT_NE(found, nullptr) << name;
  return found;
}

QPoint CascadesTest::at(const QQuickItem* item, QPointF point) {
  return item->mapToScene(point).toPoint();
}

QPoint CascadesTest::middle(const QQuickItem* item) {
  return at(item, QPointF(item->width() / 2, item->height() / 2));
}

void CascadesTest::press(Qt::Key key, Qt::KeyboardModifiers modifiers) {
  QTest::keyClick(window(), key, modifiers);
}

void CascadesTest::wheel(QPoint where, int units, Qt::KeyboardModifiers modifiers) {
  QWheelEvent event(where, window()->mapToGlobal(where), {}, {0, units}, Qt::NoButton, modifiers, Qt::NoScrollPhase,
                    false);
  QCoreApplication::sendEvent(window(), &event);
}

// Documents and the package's files.

#include <gmock/gmock.h>

#include <QDir>
#include <QQmlEngine>

#include "platform/cascades/assets.h"
#include "platform/cascades/controls.h"
#include "tests/cascades/fixture.h"

using namespace bb::cascades;
using testing::HasSubstr;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace {

using DocumentTest = CascadesTest;

std::string resolved(const char* url) {
  return resolve_asset(QUrl(url)).toString().replace(test_package(), "PACKAGE").toStdString();
}

qsizetype lines(const std::string& text) {
  return std::count(text.begin(), text.end(), '\n');
}

}  // namespace

TEST_F(DocumentTest, AssetsResolveIntoThePackageOnly) {
  EXPECT_EQ(resolved("asset:///images/icon.png"), "file://PACKAGE/native/assets/images/icon.png");
  EXPECT_EQ(resolved("asset:///../../etc/passwd"), "file://PACKAGE/native/assets/etc/passwd");
  EXPECT_EQ(resolved("asset:///images/../../../x"), "file://PACKAGE/native/assets/x");
  EXPECT_EQ(resolved("asset:///%2e%2e/%2E%2E/x"), "file://PACKAGE/native/assets/x");
  EXPECT_EQ(resolved("asset:///a/%2e%2e%2f%2e%2e%2fx"), "file://PACKAGE/native/assets/x");
  EXPECT_EQ(resolved("asset:///./a//b/./c.qml"), "file://PACKAGE/native/assets/a/b/c.qml");
  EXPECT_EQ(resolved("asset:///100%25%23.png"), "file://PACKAGE/native/assets/100%25%23.png");
  EXPECT_EQ(resolved("file:///etc/passwd"), "file:///etc/passwd");
  EXPECT_EQ(resolved("asset://images/icon.png"), "asset://images/icon.png");
}

TEST_F(DocumentTest, FindsNeighboursContextAndPictures) {
  QImage picture(3, 2, QImage::Format_RGB32);
  picture.fill(Qt::green);
  QDir().mkpath(test_package() + "/native/assets/images");
  ASSERT_TRUE(picture.save(test_package() + "/native/assets/images/three.png"));
  write_asset("Leaf.qml", "import bb.cascades 1.0\nLabel { text: helper.objectName }");
  write_asset("Root.qml",
              "import QtQuick\nimport bb.cascades 1.0\nPage { Leaf { objectName: \"leaf\" }\n"
              "ImageView { objectName: \"view\"; imageSource: \"asset:///images/three.png\" }\n"
              "Image { objectName: \"plain\"; source: \"asset:///images/three.png\" } }");
  QObject helper;
  helper.setObjectName("from the program");
  document_.reset(QmlDocument::create("asset:///Root.qml"));
  EXPECT_FALSE(document_->hasErrors());
  document_->setContextProperty("helper", &helper);
  auto* page = document_->createRootObject<Page>();
  ASSERT_NE(page, nullptr);
  EXPECT_EQ(page->findChild<Label*>("leaf")->text(), "from the program");
  EXPECT_EQ(page->findChild<QQuickItem*>("plain")->implicitWidth(), 3);
  auto* view = page->findChild<ImageView*>("view");
  EXPECT_EQ(view->implicitHeight(), 2);
  view->setImage(QUrl("asset:///images/none.png"));
  view->setImage(QUrl("asset:///images/three.png"));
  EXPECT_EQ(view->implicitWidth(), 3);
}

TEST_F(DocumentTest, SaysInOneLineEachWhatIsWrong) {
  CaptureStderr();
  document_.reset(QmlDocument::create("asset:///Missing.qml"));
  EXPECT_TRUE(document_->hasErrors());
  EXPECT_EQ(document_->createRoot(), nullptr);
  std::string said = GetCapturedStderr();
  EXPECT_THAT(said, HasSubstr("Missing.qml"));
  EXPECT_EQ(lines(said), 1) << said;

  write_asset("Broken.qml", "import bb.cascades 1.0\nPage {\n  nonsense: 1\n}\n");
  CaptureStderr();
  document_.reset(QmlDocument::create("asset:///Broken.qml"));
  EXPECT_TRUE(document_->hasErrors());
  EXPECT_EQ(document_->createRootObject<Page>(), nullptr);
  said = GetCapturedStderr();
  EXPECT_THAT(said, HasSubstr("Broken.qml:3"));
  EXPECT_EQ(lines(said), 1) << said;
}

TEST_F(DocumentTest, DeletesARootOfAnotherKind) {
  write_asset("Kind.qml", "import bb.cascades 1.0\nPage { }");
  document_.reset(QmlDocument::create("asset:///Kind.qml"));
  EXPECT_EQ(document_->createRootObject<NavigationPane>(), nullptr);
  EXPECT_FALSE(document_->hasErrors());
  EXPECT_NE(document_->createRootObject<Page>(), nullptr);
}

TEST_F(DocumentTest, TakesItsLivingRootsAlong) {
  write_asset("Roots.qml", "import bb.cascades 1.0\nPage { }");
  document_.reset(QmlDocument::create("asset:///Roots.qml"));
  QPointer<Page> one = document_->createRootObject<Page>();
  QPointer<Page> other = document_->createRootObject<Page>();
  delete one.data();
  ASSERT_NE(other, nullptr);
  document_.reset();
  EXPECT_EQ(other, nullptr);
}

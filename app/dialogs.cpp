#include "platform/system/dialogs.h"
#include "app/tarnelapp.h"
#include "platform/cascades/qml_document.h"

namespace cascades = bb::cascades;
using bb::system::SystemDialog;
using bb::system::SystemToast;
using bb::system::SystemUiResult;

namespace {

constexpr const char* product_name = "Morvane";
constexpr const char* help_document = "asset:///about.qml";

/// What the action of the application menu says while private mode is off and while it is on.
struct private_action_s {
  const char* title;
  const char* image;
};
constexpr private_action_s private_action[] = {{"Private", "asset:///images/ic_private.png"},
                                               {"Normal", "asset:///images/ic_normal.png"}};

SystemUiResult::Type ask(SystemDialog& dialog, const char* text) {
  dialog.setTitle(QString::fromUtf8(product_name));
  dialog.setBody(QString::fromUtf8(text));
  return dialog.exec();
}

}  // namespace

void tarnelApp::showToast(const char* text) {
  auto* const toast = new SystemToast(this);
  toast->setBody(QString::fromUtf8(text));
  toast->show();
}

void tarnelApp::showAlert(const char* text) {
  SystemDialog dialog(QStringLiteral("OK"));
  ask(dialog, text);
}

bool tarnelApp::AskAlert(const char* text) {
  SystemDialog dialog;
  return ask(dialog, text) == SystemUiResult::ConfirmButtonSelection;
}

void tarnelApp::showError() {
  showAlert("Not enough resources.  Quit Morvane and restart it again.");
}

void tarnelApp::handleHelpAction() {
  do_help();
}

void tarnelApp::do_help() {
  if (!mHelpPage) {
    cascades::QmlDocument* const document = cascades::QmlDocument::create(QString::fromUtf8(help_document), this);
    document->setContextProperty(QStringLiteral("_mainApp"), this);
    mHelpPage = document->createRootObject<cascades::Page>();
    if (!mHelpPage) {
      delete document;
      return;
    }
    connect(mHelpPage, &QObject::destroyed, this, [this, page = mHelpPage, document] {
      if (mHelpPage == page) mHelpPage = nullptr;
      document->deleteLater();
    });
  }
  mRoot->push(mHelpPage);
}

void tarnelApp::handlePopTransitionEnded(cascades::Page* page) {
  if (page == mHelpPage) mHelpPage = nullptr;
  if (!page) return;
  // The pane may be in the middle of the signal that brought the page here. Until the page goes, nobody is to find it.
  page->setParentItem(nullptr);
  page->setParent(nullptr);
  page->deleteLater();
}

void tarnelApp::handlePrivateAction() {
  if (auto* const cover = control<QQuickItem>("privatebackground")) {
    mPrivateMode = !mPrivateMode;
    cover->setVisible(mPrivateMode);
  }
  if (mPrivateMode && !mPrivateHintShown) {
    mPrivateHintShown = true;
    showToast("To go back to Normal mode swipe down from the top and select the Normal Icon.");
  }
  const private_action_s& action = private_action[mPrivateMode ? 1 : 0];
  mPrivateAction->setImageSource(QUrl(QString::fromUtf8(action.image)));
  mPrivateAction->setTitle(QString::fromUtf8(action.title));
}

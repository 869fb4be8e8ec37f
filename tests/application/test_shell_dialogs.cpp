// Toasts, dialogs, the help page and private mode.

#include <gmock/gmock.h>

#include <QQmlEngine>
#include <QTimer>
#include <filesystem>

#include "platform/cascades/stage.h"
#include "platform/system/dialogs.h"
#include "tests/application/app_fixture.h"
#include "tests/application/dialogs.h"
#include "tests/application/fake_camera_service.h"

namespace cascades = bb::cascades;
using bb::system::SystemToast;
using testing::ElementsAre;

namespace {

constexpr const char* hint = "To go back to Normal mode swipe down from the top and select the Normal Icon.";

class Dialogs : public AppTest {
 protected:
  Dialogs() { start(); }

  std::vector<std::string> toasts() const {
    std::vector<std::string> texts;
    for (const SystemToast* toast : app->findChildren<SystemToast*>()) texts.push_back(toast->body().toStdString());
    return texts;
  }
  std::string private_action() const {
    return app->mPrivateAction->title().toStdString() + ' ' +
           app->mPrivateAction->imageSource().toString().toStdString();
  }
  void replace_help(const char* text) const {
    const std::string path = sandbox.file("app/native/assets/about.qml");
    std::filesystem::remove(path);
    write_file(path, text);
    cascades::Application::instance()->engine()->clearComponentCache();
  }
};

TEST_F(Dialogs, OnlyTheConfirmButtonIsAYes) {
  for (const auto& [answer, expected] :
       {std::pair{dialogs::Answer(dialogs::confirm), true}, {dialogs::Answer(dialogs::cancel), false}}) {
    const dialogs::Answers answers({answer});
    EXPECT_EQ(app->AskAlert("really?"), expected);
    EXPECT_THAT(answers.bodies(), ElementsAre("really?"));
    EXPECT_THAT(answers.titles(), ElementsAre("Morvane"));
  }
  const dialogs::Answers dismissed({dialogs::dismiss});
  EXPECT_FALSE(app->AskAlert("really?"));
  EXPECT_EQ(handset::Stage::instance()->dialog(), nullptr);
}

TEST_F(Dialogs, AnAlertHasOneButtonAndReturnsWhenItIsDismissed) {
  const dialogs::Answers answers({dialogs::dismiss});
  app->showAlert("so it is");
  EXPECT_THAT(answers.bodies(), ElementsAre("so it is"));
  EXPECT_THAT(answers.buttons(), ElementsAre("OK|"));
}

TEST_F(Dialogs, TheCameraMayGoWhileADialogIsOpen) {
  const dialogs::Answers answers({[](bb::system::SystemDialog& dialog) {
    fake_camera::revoke();
    dialog.confirm();
  }});
  EXPECT_TRUE(app->AskAlert("still there?"));
  app->onStopCamera();
}

TEST_F(Dialogs, TheProgramMayEndWhileADialogIsOpen) {
  bool answer = true;
  QTimer::singleShot(0, app.get(), [&] {
    answer = app->AskAlert("end?");
    app->showAlert("after the end");  // returns at once
  });
  const dialogs::Answers answers({[](bb::system::SystemDialog&) { QCoreApplication::quit(); }});
  EXPECT_EQ(QCoreApplication::exec(), 0);
  EXPECT_FALSE(answer);
  EXPECT_EQ(handset::Stage::instance()->dialog(), nullptr);
}

TEST_F(Dialogs, PrivateModeCoversAndHintsOncePerRun) {
  const QQuickItem& cover = on_page<QQuickItem>("privatebackground");
  fake_camera::clear_journal();
  EXPECT_EQ(private_action(), "Private asset:///images/ic_private.png");
  app->handlePrivateAction();
  EXPECT_TRUE(app->mPrivateMode && cover.isVisible());
  EXPECT_EQ(private_action(), "Normal asset:///images/ic_normal.png");
  EXPECT_THAT(toasts(), ElementsAre(hint));
  EXPECT_EQ(handset::Stage::instance()->toast()->property("body").toString(), hint);
  app->handlePrivateAction();
  EXPECT_FALSE(app->mPrivateMode || cover.isVisible());
  EXPECT_EQ(private_action(), "Private asset:///images/ic_private.png");
  app->handlePrivateAction();
  EXPECT_TRUE(cover.isVisible());
  EXPECT_THAT(toasts(), ElementsAre(hint));
  EXPECT_THAT(fake_camera::journal(), ElementsAre());
  remove("privatebackground");
  app->handlePrivateAction();
  EXPECT_TRUE(app->mPrivateMode);
  EXPECT_EQ(private_action(), "Normal asset:///images/ic_normal.png");
}

TEST_F(Dialogs, TheHelpPageIsBuiltOncePerVisit) {
  QObject::connect(app->mRoot, &cascades::NavigationPane::popTransitionEnded, app.get(),
                   &tarnelApp::handlePopTransitionEnded);
  app->handleHelpAction();
  const QPointer<cascades::Page> page = app->mHelpPage;
  ASSERT_TRUE(page);
  EXPECT_EQ(app->mRoot->count(), 2);
  app->handleHelpAction();
  EXPECT_EQ(app->mHelpPage, page);
  EXPECT_EQ(app->mRoot->count(), 2);
  EXPECT_EQ(app->mRoot->top(), page);
  app->mRoot->pop();
  ASSERT_TRUE(wait_until([&] { return page.isNull(); }));
  EXPECT_EQ(app->mHelpPage, nullptr);
  EXPECT_EQ(app->mRoot->count(), 1);
  app->handleHelpAction();
  EXPECT_TRUE(app->mHelpPage && app->mRoot->top() == app->mHelpPage);
}

TEST_F(Dialogs, APoppedPageIsGoneAtOnceAndWhoeverDeletesIt) {
  app->handlePopTransitionEnded(nullptr);
  app->handleHelpAction();
  app->handlePopTransitionEnded(app->mHelpPage);
  EXPECT_EQ(app->control<QObject>("helpPage"), nullptr);
  app->handleHelpAction();
  const QPointer<cascades::Page> page = app->mHelpPage;
  ASSERT_TRUE(page);
  app->mRoot->pop();  // the screen does not say so: the pane deletes the page
  ASSERT_TRUE(wait_until([&] { return page.isNull(); }));
  EXPECT_EQ(app->mHelpPage, nullptr);
}

TEST_F(Dialogs, HelpThatCannotBeShownIsNotShown) {
  for (const char* const text : {"import bb.cascades.state 1.0\nContainer {}\n", "nonsense"}) {
    replace_help(text);
    app->handleHelpAction();
    EXPECT_EQ(app->mHelpPage, nullptr);
    EXPECT_EQ(app->mRoot->count(), 1);
  }
}

}  // namespace

// Dialogs and toasts, by the keys that a user presses and by what may happen while they are open.

#include <QTimer>
#include <memory>

#include "platform/cascades/stage.h"
#include "platform/system/dialogs.h"
#include "tests/system/window_test.h"

using bb::system::SystemDialog;
using bb::system::SystemToast;
using bb::system::SystemUiResult;
using handset::Stage;

namespace {

class Dialogs : public WindowTest {
 protected:
  ~Dialogs() override { EXPECT_EQ(Stage::instance()->dialog(), nullptr) << "a dialog was left on the stage"; }

  static SystemUiResult::Type answer(SystemDialog& dialog, const std::function<void()>& user) {
    QTimer::singleShot(0, user);
    return dialog.exec();
  }
};

TEST_F(Dialogs, EnterConfirmsAndEscCancels) {
  SystemDialog question;
  question.setTitle("Morvane");
  question.setBody("Resize texture to full screen?");
  EXPECT_EQ(question.confirmLabel(), "OK");
  EXPECT_EQ(question.cancelLabel(), "Cancel");
  EXPECT_EQ(answer(question,
                   [&] {
                     EXPECT_EQ(Stage::instance()->dialog(), &question);
                     press(Qt::Key_Return, "\r");
                   }),
            SystemUiResult::ConfirmButtonSelection);
  EXPECT_EQ(answer(question, [] { press(Qt::Key_Escape); }), SystemUiResult::CancelButtonSelection) << "and again";

  SystemDialog alert("Understood");
  EXPECT_EQ(answer(alert, [] { press(Qt::Key_Escape); }), SystemUiResult::ConfirmButtonSelection);
}

TEST_F(Dialogs, AKeyThatIsNoAnswerIsNone) {
  SystemDialog question;
  EXPECT_EQ(answer(question,
                   [&] {
                     press(Qt::Key_F10);
                     press(Qt::Key_R, "r");
                     EXPECT_EQ(question.result(), SystemUiResult::None);
                     question.confirm();
                     question.cancel();
                   }),
            SystemUiResult::ConfirmButtonSelection)
      << "the first answer holds";
}

TEST_F(Dialogs, OneMayAskWhileAnotherIsOpen) {
  SystemDialog outer;
  SystemUiResult::Type inner_result = SystemUiResult::None;
  const auto outer_result = answer(outer, [&] {
    SystemDialog inner("OK");
    inner_result = answer(inner, [&] {
      EXPECT_EQ(Stage::instance()->dialog(), &inner);
      EXPECT_EQ(outer.exec(), SystemUiResult::Error) << "it is open already";
      press(Qt::Key_Return, "\r");
    });
    EXPECT_EQ(Stage::instance()->dialog(), &outer);
    press(Qt::Key_Escape);
  });
  EXPECT_EQ(inner_result, SystemUiResult::ConfirmButtonSelection);
  EXPECT_EQ(outer_result, SystemUiResult::CancelButtonSelection);
}

TEST_F(Dialogs, TheLowerOfTwoMayBeAnsweredFirst) {
  SystemDialog outer;
  const auto outer_result = answer(outer, [&] {
    SystemDialog inner;
    EXPECT_EQ(answer(inner,
                     [&] {
                       outer.confirm();
                       EXPECT_EQ(Stage::instance()->dialog(), &inner);
                       inner.cancel();
                     }),
              SystemUiResult::CancelButtonSelection);
  });
  EXPECT_EQ(outer_result, SystemUiResult::ConfirmButtonSelection);
}

TEST_F(Dialogs, DeletingAnOpenOneEndsIt) {
  auto* dialog = new SystemDialog;
  QTimer::singleShot(0, [=] { delete dialog; });
  EXPECT_EQ(dialog->exec(), SystemUiResult::Error);
}

TEST_F(Dialogs, TheApplicationEndsThroughOpenDialogs) {
  SystemUiResult::Type result = SystemUiResult::None;
  SystemUiResult::Type late = SystemUiResult::None;
  QTimer::singleShot(0, [&] {
    SystemDialog dialog;
    result = answer(dialog, [] { QCoreApplication::quit(); });
    late = dialog.exec();
  });
  EXPECT_EQ(QCoreApplication::exec(), 0);
  EXPECT_EQ(result, SystemUiResult::Error);
  EXPECT_EQ(late, SystemUiResult::Error) << "nobody could answer any more";
}

TEST(Toasts, StayAsLongAsTheyTakeToRead) {
  EXPECT_EQ(bb::system::toast_milliseconds(""), 2500);
  EXPECT_EQ(bb::system::toast_milliseconds(QString(1000, 'x')), 6000);
  const int middle = bb::system::toast_milliseconds("Screen shot saved to the Camera folder.");
  EXPECT_GT(middle, 3000);
  EXPECT_LT(middle, 5000);
}

TEST_F(Dialogs, AToastShowsItsTextAndGoes) {
  auto toast = std::make_unique<SystemToast>();
  toast->setBody("Can't allocate memory.");
  toast->show();
  ASSERT_EQ(Stage::instance()->toast(), toast.get());
  EXPECT_EQ(Stage::instance()->toast()->property("body"), "Can't allocate memory.");
  EXPECT_TRUE(wait_until([] { return Stage::instance()->toast() == nullptr; }, 6000));
  toast->show();
  EXPECT_EQ(Stage::instance()->toast(), toast.get()) << "once more";
  toast.reset();
  EXPECT_EQ(Stage::instance()->toast(), nullptr);
}

}  // namespace

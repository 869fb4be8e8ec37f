#pragma once

// A user who answers dialogs.

#include <QPointer>
#include <functional>
#include <string>
#include <vector>

#include "platform/cascades/stage.h"
#include "platform/system/dialogs.h"

namespace dialogs {

using Answer = std::function<void(bb::system::SystemDialog&)>;

inline void confirm(bb::system::SystemDialog& dialog) {
  dialog.confirm();
}
inline void cancel(bb::system::SystemDialog& dialog) {
  dialog.cancel();
}
/// Esc.
inline void dismiss(bb::system::SystemDialog&) {
  handset::Stage::instance()->go_back();
}

/// While alive, answers dialogs as they open, one after another, from the event loop; dismisses those after the last
/// answer.
class Answers : public QObject {
 public:
  explicit Answers(std::vector<Answer> answers) : answers_(std::move(answers)) {
    connect(handset::Stage::instance(), &handset::Stage::dialogChanged, this, &Answers::see, Qt::QueuedConnection);
  }

  const std::vector<std::string>& titles() const { return titles_; }
  const std::vector<std::string>& bodies() const { return bodies_; }
  /// "confirm|cancel" of each
  const std::vector<std::string>& buttons() const { return buttons_; }

 private:
  void see() {
    auto* const dialog = qobject_cast<bb::system::SystemDialog*>(handset::Stage::instance()->dialog());
    if (!dialog) return;
    titles_.push_back(dialog->title().toStdString());
    bodies_.push_back(dialog->body().toStdString());
    buttons_.push_back(dialog->confirmLabel().toStdString() + '|' + dialog->cancelLabel().toStdString());
    const std::size_t index = bodies_.size() - 1;
    const Answer answer = index < answers_.size() ? answers_[index] : dismiss;
    answer(*dialog);
  }

  std::vector<Answer> answers_;
  std::vector<std::string> titles_, bodies_, buttons_;
};

}  // namespace dialogs

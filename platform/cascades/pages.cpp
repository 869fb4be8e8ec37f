#include "platform/cascades/pages.h"

#include <QMetaMethod>
#include <QQmlEngine>

#include "platform/cascades/stage.h"

namespace bb::cascades {

void Page::setTitle(const QString& title) {
  if (title_ == title) return;
  title_ = title;
  Q_EMIT titleChanged();
}

Page* NavigationPane::top() const {
  return pages_.isEmpty() ? nullptr : pages_.last();
}

void NavigationPane::push(Page* page) {
  if (!page || page == top()) return;
  QQmlEngine::setObjectOwnership(page, QQmlEngine::CppOwnership);
  page->setParent(this);
  page->setParentItem(this);
  stack(page);
}

void NavigationPane::pop() {
  if (count() <= 1) return;
  Page* page = top();
  page->setParent(nullptr);
  page->setParentItem(nullptr);
  QMetaObject::invokeMethod(
      this, [this, popped = QPointer<Page>(page)] { report_popped(popped); }, Qt::QueuedConnection);
}

void NavigationPane::report_popped(Page* page) {
  // If it was pushed again meanwhile, it is on a stack as before.
  if (!page || page->parentItem()) return;
  if (isSignalConnected(QMetaMethod::fromSignal(&NavigationPane::popTransitionEnded))) {
    Q_EMIT popTransitionEnded(page);
  } else {
    page->deleteLater();
  }
}

void NavigationPane::itemChange(ItemChange change, const ItemChangeData& data) {
  AbstractPane::itemChange(change, data);
  if (change == ItemChildAddedChange) {
    if (auto* page = qobject_cast<Page*>(data.item); page && !pages_.contains(page)) stack(page);
  } else if (change == ItemChildRemovedChange) {
    unstack(data.item);
  }
}

void NavigationPane::stack(Page* page) {
  if (page == top()) return;
  pages_.removeOne(page);
  pages_.append(page);
  for (int i = 0; i < count(); ++i) pages_.at(i)->setZ(i);
  Q_EMIT topChanged();
}

void NavigationPane::unstack(const QQuickItem* page) {
  // A page in its destructor is no longer a Page: only its address identifies it.
  const auto is_page = [page](const QQuickItem* other) { return other == page; };
  if (pages_.removeIf(is_page) > 0) Q_EMIT topChanged();
}

Sheet::~Sheet() {
  if (opened_) handset::Stage::instance()->close_sheet(this);
  if (content_ && content_->parent() != this) delete content_.data();
}

void Sheet::setContent(QQuickItem* content) {
  if (content_ == content) return;
  content_ = content;
  if (content && !content->parent()) content->setParent(this);
  Q_EMIT contentChanged();
}

void Sheet::open() {
  if (opened_) return;
  opened_ = true;
  handset::Stage::instance()->open_sheet(this);
  Q_EMIT openedChanged();
  Q_EMIT opened();
}

void Sheet::close() {
  if (!opened_) return;
  opened_ = false;
  handset::Stage::instance()->close_sheet(this);
  Q_EMIT openedChanged();
  Q_EMIT closed();
}

}  // namespace bb::cascades

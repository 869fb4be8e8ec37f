#pragma once

// Pages, the navigation pane that stacks them, and sheets that slide over everything.

#include <QList>
#include <QPointer>

#include "platform/cascades/visual_node.h"

namespace bb::cascades {

/// What can be an application's scene.
class AbstractPane : public VisualNode {
  Q_OBJECT

 public:
  explicit AbstractPane(QQuickItem* parent = nullptr) : VisualNode(parent) {}
};

class Page : public AbstractPane {
  Q_OBJECT
  Q_PROPERTY(QString title READ title WRITE setTitle NOTIFY titleChanged)

 public:
  explicit Page(QQuickItem* parent = nullptr) : AbstractPane(parent) {}
  /// Shown above the page with the way back, on every page but the first.
  QString title() const { return title_; }
  void setTitle(const QString& title);

 Q_SIGNALS:
  void titleChanged();

 private:
  QString title_;
};

/// A stack of pages. Pages under the top one stay in the scene and are covered; the pages that its document holds are
/// the stack's bottom.
class NavigationPane : public AbstractPane {
  Q_OBJECT
  Q_PROPERTY(int count READ count NOTIFY topChanged)
  // Not "top": that is one of the item's anchor lines.
  Q_PROPERTY(bb::cascades::Page* topPage READ top NOTIFY topChanged)

 public:
  explicit NavigationPane(QQuickItem* parent = nullptr) : AbstractPane(parent) {}

  int count() const { return static_cast<int>(pages_.size()); }
  Page* top() const;
  /// Puts a page on top; one that is on the stack already comes to the top. The pane owns it from then on.
  Q_INVOKABLE void push(bb::cascades::Page* page);
  /// Takes the top page away, except the first. popTransitionEnded follows from the event loop, so that a page may ask
  /// for it itself; ownership goes to whoever handles it. Nobody does: the page is deleted.
  Q_INVOKABLE void pop();

 Q_SIGNALS:
  void topChanged();
  void popTransitionEnded(bb::cascades::Page* page);

 protected:
  void itemChange(ItemChange change, const ItemChangeData& data) override;

 private:
  void stack(Page* page);
  void unstack(const QQuickItem* page);
  void report_popped(Page* page);

  QList<Page*> pages_;  ///< all of them child items
};

/// A page over everything else, opened and closed as a whole.
class Sheet : public QObject {
  Q_OBJECT
  Q_CLASSINFO("DefaultProperty", "content")
  Q_PROPERTY(QQuickItem* content READ content WRITE setContent NOTIFY contentChanged)
  Q_PROPERTY(bool opened READ isOpened NOTIFY openedChanged)

 public:
  explicit Sheet(QObject* parent = nullptr) : QObject(parent) {}
  ~Sheet() override;

  QQuickItem* content() const { return content_; }
  void setContent(QQuickItem* content);
  bool isOpened() const { return opened_; }
  /// Shows the sheet in the application's window; nothing when it is open.
  Q_INVOKABLE void open();
  Q_INVOKABLE void close();

 Q_SIGNALS:
  void contentChanged();
  void openedChanged();
  void opened();
  void closed();
  /// The user wants to go back, by Esc or by the sheet's back control. The document decides what that means.
  void backRequested();

 private:
  QPointer<QQuickItem> content_;
  bool opened_ = false;
};

}  // namespace bb::cascades

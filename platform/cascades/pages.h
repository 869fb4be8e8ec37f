#pragma once

// Pages, the navigation pane that stacks them, and sheets that slide over everything.

#include <QList>
#include <QPointer>

#include "platform/cascades/visual_node.h"

namespace bb::cascades {

/// Anything that can be an application's scene.
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
  /// Shown above the page along with the way back, on every page but the first.
  QString title() const { return title_; }
  void setTitle(const QString& title);

 Q_SIGNALS:
  void titleChanged();

 private:
  QString title_;
};

/// A stack of pages. Pages below the top stay in the scene, covered; the pages in its document form the bottom of the
/// stack.
class NavigationPane : public AbstractPane {
  Q_OBJECT
  Q_PROPERTY(int count READ count NOTIFY topChanged)
  // Not "top": that is already an anchor line of the item.
  Q_PROPERTY(bb::cascades::Page* topPage READ top NOTIFY topChanged)

 public:
  explicit NavigationPane(QQuickItem* parent = nullptr) : AbstractPane(parent) {}

  int count() const { return static_cast<int>(pages_.size()); }
  Page* top() const;
  /// Puts a page on top, moving it there if it is already on the stack. The pane owns it from then on.
  Q_INVOKABLE void push(bb::cascades::Page* page);
  /// Removes the top page unless it is the only one. popTransitionEnded follows from the event loop, so that a page may
  /// call this itself; ownership passes to the handler. Without one the page is deleted.
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

/// A page over everything else, opened and closed as a unit.
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
  /// Shows the sheet in the application's window; does nothing if it is open.
  Q_INVOKABLE void open();
  Q_INVOKABLE void close();

 Q_SIGNALS:
  void contentChanged();
  void openedChanged();
  void opened();
  void closed();
  /// The user wants to go back, by Esc or the sheet's back control. The document decides what that means.
  void backRequested();

 private:
  QPointer<QQuickItem> content_;
  bool opened_ = false;
};

}  // namespace bb::cascades

#pragma once

// The application menu, pulled down from the top edge.

#include <QList>
#include <QObject>
#include <QUrl>

namespace bb::cascades {

class AbstractActionItem : public QObject {
  Q_OBJECT
  Q_PROPERTY(QString title READ title WRITE setTitle NOTIFY titleChanged)
  Q_PROPERTY(QUrl imageSource READ imageSource WRITE setImageSource NOTIFY imageSourceChanged)
  Q_PROPERTY(bool enabled READ isEnabled WRITE setEnabled NOTIFY enabledChanged)

 public:
  explicit AbstractActionItem(QObject* parent = nullptr) : QObject(parent) {}
  QString title() const { return title_; }
  void setTitle(const QString& title);
  QUrl imageSource() const { return image_source_; }
  void setImageSource(const QUrl& source);
  void setImage(const QUrl& source) { setImageSource(source); }
  bool isEnabled() const { return enabled_; }
  void setEnabled(bool enabled);

 Q_SIGNALS:
  void titleChanged();
  void imageSourceChanged();
  void enabledChanged();

 private:
  QString title_;
  QUrl image_source_;
  bool enabled_ = true;
};

class ActionItem : public AbstractActionItem {
  Q_OBJECT

 public:
  explicit ActionItem(QObject* parent = nullptr) : AbstractActionItem(parent) {}

 Q_SIGNALS:
  void triggered();
};

/// Owned by the application after Application::setMenu.
class Menu : public QObject {
  Q_OBJECT
  Q_PROPERTY(QList<QObject*> actions READ actionObjects NOTIFY actionsChanged)

 public:
  explicit Menu(QObject* parent = nullptr) : QObject(parent) {}
  ~Menu() override;
  /// Appends the item, which becomes this menu's child. A deleted item leaves the menu.
  void addAction(ActionItem* item);
  QList<ActionItem*> actions() const { return actions_; }
  QList<QObject*> actionObjects() const;

 Q_SIGNALS:
  void actionsChanged();

 private:
  QList<ActionItem*> actions_;
};

}  // namespace bb::cascades

#pragma once

// The application menu, which is pulled down from the top edge.

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

/// The application that it is given to with Application::setMenu owns it.
class Menu : public QObject {
  Q_OBJECT
  Q_PROPERTY(QList<QObject*> actions READ actionObjects NOTIFY actionsChanged)

 public:
  explicit Menu(QObject* parent = nullptr) : QObject(parent) {}
  ~Menu() override;
  /// At the end; the item becomes this menu's child. One that is deleted leaves the menu.
  void addAction(ActionItem* item);
  QList<ActionItem*> actions() const { return actions_; }
  QList<QObject*> actionObjects() const;

 Q_SIGNALS:
  void actionsChanged();

 private:
  QList<ActionItem*> actions_;
};

}  // namespace bb::cascades

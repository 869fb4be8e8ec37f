#pragma once

#include <QObject>
#include <QUrl>

#include "platform/system/invoke.h"

namespace handset {

/// A card over the scene that shows a file. Closes once, then deletes itself. UI thread.
class Card : public QObject {
  Q_OBJECT
  Q_PROPERTY(QUrl document READ document CONSTANT)
  Q_PROPERTY(QString title READ title CONSTANT)
  Q_PROPERTY(QString message READ message NOTIFY messageChanged)

 public:
  /// @param document name of the QML document that draws the card
  Card(const QString& document, const QString& path, QObject* parent);
  /// Removes the card from the stage.
  ~Card() override;

  QUrl document() const { return document_; }
  QString path() const { return path_; }
  /// The file's name.
  QString title() const;
  /// Why the file is not shown; empty if it is.
  QString message() const { return message_; }

  /// Closes at the user's request: the card is gone soon after the call.
  Q_INVOKABLE void close();
  /// Removes the card from the stage, stops it and reports it done before returning; does nothing the second time.
  void finish(const QString& reason);

 Q_SIGNALS:
  void messageChanged();
  void done(const bb::system::CardDoneMessage& message);

 protected:
  void set_message(const QString& message);
  /// Releases whatever the card uses, since the listener of its end may need it.
  virtual void stop() {}

 private:
  const QUrl document_;
  const QString path_;
  QString message_;
  bool finished_ = false;
};

}  // namespace handset

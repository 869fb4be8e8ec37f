#pragma once

#include <QObject>
#include <QUrl>

#include "platform/system/invoke.h"

namespace handset {

/// What is opened over the scene to show a file. Closes once and deletes itself then. UI thread.
class Card : public QObject {
  Q_OBJECT
  Q_PROPERTY(QUrl document READ document CONSTANT)
  Q_PROPERTY(QString title READ title CONSTANT)
  Q_PROPERTY(QString message READ message NOTIFY messageChanged)

 public:
  /// @param document  name of the QML document that draws the card
  Card(const QString& document, const QString& path, QObject* parent);
  /// Takes the card off the stage.
  ~Card() override;

  QUrl document() const { return document_; }
  QString path() const { return path_; }
  /// The file's name.
  QString title() const;
  /// Why the file is not shown; empty while it is.
  QString message() const { return message_; }

  /// What the user does: soon after the call the card is gone.
  Q_INVOKABLE void close();
  /// Takes the card off the stage, stops it and reports it done before it returns; nothing the second time.
  void finish(const QString& reason);

 Q_SIGNALS:
  void messageChanged();
  void done(const bb::system::CardDoneMessage& message);

 protected:
  void set_message(const QString& message);
  /// Whatever the card keeps busy is let go of, since the one that hears it is done may want it.
  virtual void stop() {}

 private:
  const QUrl document_;
  const QString path_;
  QString message_;
  bool finished_ = false;
};

}  // namespace handset

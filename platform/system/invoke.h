#pragma once

// Passes a file to a card: videos are played, pictures shown. UI thread only.

#include <QObject>
#include <QPointer>
#include <QUrl>

namespace bb::system {

/// Why and how a card was closed.
class CardDoneMessage {
 public:
  CardDoneMessage() = default;
  explicit CardDoneMessage(const QString& reason) : reason_(reason) {}
  /// "closed" by the user, "ended" with its film, "replaced" by another card.
  QString reason() const { return reason_; }

 private:
  QString reason_;
};

class InvokeRequest {
 public:
  QUrl uri() const { return uri_; }
  void setUri(const QUrl& uri) { uri_ = uri; }
  /// "file://" is followed by the raw file-system path, with nothing encoded.
  void setUri(const char* uri);
  /// If empty, the platform chooses by file type.
  QString target() const { return target_; }
  void setTarget(const QString& target) { target_ = target; }
  QString action() const { return action_; }
  void setAction(const QString& action) { action_ = action; }

 private:
  QUrl uri_;
  QString target_;
  QString action_;
};

class InvokeTargetReply : public QObject {
  Q_OBJECT

 public:
  explicit InvokeTargetReply(QObject* parent = nullptr) : QObject(parent) {}
};

/// Opens cards over the scene. A card outlives the manager that opened it.
class InvokeManager : public QObject {
  Q_OBJECT

 public:
  explicit InvokeManager(QObject* parent = nullptr);
  ~InvokeManager() override;

  /// Opens the card for the request: "sys.pictures.card.previewer" shows a picture; without a target a picture is shown
  /// and any other file played. For a missing or broken file the card says so. An open card is closed first, and
  /// reported done if another manager opened it.
  /// @return null, after one line on stderr, if there is no such target or the URI is not a file URI; otherwise a
  /// reply, a child of this manager until it is given another parent
  InvokeTargetReply* invoke(const InvokeRequest& request);

 Q_SIGNALS:
  /// A card opened by this manager has closed.
  void childCardDone(const bb::system::CardDoneMessage& message);
};

}  // namespace bb::system

Q_DECLARE_METATYPE(bb::system::CardDoneMessage)

#pragma once

#include <QTimer>
#include <memory>

#include "platform/system/card.h"
#include "platform/system/film_player.h"

namespace handset {

/// Plays a film from the start and closes at its end. A ForeignWindowControl with `windowId` shows its pictures,
/// upright however the handset is held. Times are milliseconds.
class VideoCard : public Card {
  Q_OBJECT
  Q_PROPERTY(QString windowId READ windowId CONSTANT)
  Q_PROPERTY(bool playing READ isPlaying NOTIFY playingChanged)
  Q_PROPERTY(int position READ position NOTIFY timesChanged)
  Q_PROPERTY(int duration READ duration NOTIFY timesChanged)

 public:
  VideoCard(const QString& path, QObject* parent);

  QString windowId() const { return window_id_; }
  bool isPlaying() const { return playing_; }
  int position() const { return position_; }
  /// 0 while unknown.
  int duration() const { return duration_; }

  Q_INVOKABLE void togglePlaying();
  /// Seeks to a time, clamped to the film.
  Q_INVOKABLE void seek(int position);

 Q_SIGNALS:
  void playingChanged();
  void timesChanged();

 protected:
  void stop() override;

 private:
  void look();
  void set_times(int position, int duration);
  void hold_upright();

  const QString window_id_;
  const std::shared_ptr<ViewfinderSlot> slot_;
  QTimer timer_;
  bool playing_ = true;
  int position_ = 0;
  int duration_ = 0;
  std::unique_ptr<FilmPlayer> player_;
};

}  // namespace handset

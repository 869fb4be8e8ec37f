#include "platform/system/video_card.h"

#include <QFile>
#include <algorithm>
#include <chrono>

#include "platform/cascades/foreign_window_control.h"
#include "platform/cascades/orientation.h"

namespace handset {

namespace {

/// How often to check the times and the end.
constexpr std::chrono::milliseconds period{100};
constexpr std::int64_t nanoseconds_per_millisecond = 1'000'000;

/// Unique per card: the previous card's item may still listen to its window.
QString new_window_id() {
  static int cards = 0;
  return QStringLiteral("videoCard%1").arg(++cards);
}

std::shared_ptr<ViewfinderSlot> slot_of(const QString& window_id) {
  return viewfinder_slot(bb::cascades::ForeignWindowControl().windowGroup().toStdString(), window_id.toStdString());
}

int milliseconds(std::int64_t nanoseconds) {
  return static_cast<int>(std::min<std::int64_t>(nanoseconds / nanoseconds_per_millisecond, INT_MAX));
}

}  // namespace

VideoCard::VideoCard(const QString& path, QObject* parent)
    : Card(QStringLiteral("VideoCard.qml"), path, parent),
      window_id_(new_window_id()),
      slot_(slot_of(window_id_)),
      player_(std::make_unique<FilmPlayer>(QFile::encodeName(path).toStdString(), slot_)) {
  using bb::cascades::OrientationSupport;
  connect(OrientationSupport::instance(), &OrientationSupport::displayDirectionChanged, this, &VideoCard::hold_upright);
  connect(&timer_, &QTimer::timeout, this, &VideoCard::look);
  hold_upright();
  timer_.start(period);
}

/// A camera's picture would turn with the handset.
void VideoCard::hold_upright() {
  slot_->set_rotation((360 - bb::cascades::OrientationSupport::instance()->displayDirection()) % 360);
}

void VideoCard::stop() {
  timer_.stop();
  player_.reset();
}

void VideoCard::togglePlaying() {
  if (!player_) return;
  playing_ = !playing_;
  player_->set_playing(playing_);
  Q_EMIT playingChanged();
}

void VideoCard::seek(int position) {
  if (!player_) return;
  player_->seek(position * nanoseconds_per_millisecond);
  look();
}

void VideoCard::look() {
  const FilmPlayer::Status status = player_->status();
  set_times(milliseconds(status.position), milliseconds(status.duration));
  if (!status.failure.empty()) {
    timer_.stop();
    set_message(QStringLiteral("This film cannot be played: %1").arg(QString::fromStdString(status.failure)));
  } else if (status.ended) {
    finish(QStringLiteral("ended"));
  }
}

void VideoCard::set_times(int position, int duration) {
  if (position_ == position && duration_ == duration) return;
  position_ = position;
  duration_ = duration;
  Q_EMIT timesChanged();
}

}  // namespace handset

#pragma once

#include <QObject>

namespace bb::cascades {

class UIOrientation {
  Q_GADGET

 public:
  enum Type { Portrait = 0, Landscape = 1 };
  Q_ENUM(Type)
};

class DisplayDirection {
  Q_GADGET

 public:
  /// Degrees that the handset is turned clockwise.
  enum Type { North = 0, East = 90, South = 180, West = 270 };
  Q_ENUM(Type)
};

/// How the handset is held. A square display is always in portrait.
class OrientationSupport : public QObject {
  Q_OBJECT
  Q_PROPERTY(int displayDirection READ displayDirection NOTIFY displayDirectionChanged)
  Q_PROPERTY(bb::cascades::UIOrientation::Type orientation READ orientation NOTIFY orientationChanged)

 public:
  static OrientationSupport* instance();

  DisplayDirection::Type displayDirection() const { return direction_; }
  UIOrientation::Type orientation() const;

  /// Turns the handset: changes displayDirection, then emits orientationAboutToChange; the display is laid out again
  /// after that. Ignores an invalid direction.
  Q_INVOKABLE void turnTo(int direction);

 Q_SIGNALS:
  void displayDirectionChanged();
  void orientationAboutToChange(bb::cascades::UIOrientation::Type orientation);
  void orientationChanged();

 private:
  using QObject::QObject;
  DisplayDirection::Type direction_ = DisplayDirection::North;
};

}  // namespace bb::cascades

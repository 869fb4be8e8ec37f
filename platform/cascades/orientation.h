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
  /// Degrees by which the handset is turned clockwise.
  enum Type { North = 0, East = 90, South = 180, West = 270 };
  Q_ENUM(Type)
};

/// How the handset is held. A square display is in portrait at every direction.
class OrientationSupport : public QObject {
  Q_OBJECT
  Q_PROPERTY(int displayDirection READ displayDirection NOTIFY displayDirectionChanged)
  Q_PROPERTY(bb::cascades::UIOrientation::Type orientation READ orientation NOTIFY orientationChanged)

 public:
  static OrientationSupport* instance();

  DisplayDirection::Type displayDirection() const { return direction_; }
  UIOrientation::Type orientation() const;

  /// Turns the handset: displayDirection changes, then orientationAboutToChange is emitted, with the display laid out
  /// anew after that. A direction that is none is ignored.
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

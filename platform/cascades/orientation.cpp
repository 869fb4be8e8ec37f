#include "platform/cascades/orientation.h"

#include "platform/cascades/window_geometry.h"
#include "platform/device/profile.h"

namespace bb::cascades {

OrientationSupport* OrientationSupport::instance() {
  static OrientationSupport support;
  return &support;
}

UIOrientation::Type OrientationSupport::orientation() const {
  const DeviceProfile& profile = device_profile();
  const QSize size = handset::turned_display({profile.display_width, profile.display_height}, direction_);
  return size.width() > size.height() ? UIOrientation::Landscape : UIOrientation::Portrait;
}

void OrientationSupport::turnTo(int direction) {
  if (direction < 0 || direction >= 360 || direction % 90 != 0 || direction == direction_) return;
  const UIOrientation::Type before = orientation();
  direction_ = static_cast<DisplayDirection::Type>(direction);
  Q_EMIT displayDirectionChanged();
  Q_EMIT orientationAboutToChange(orientation());
  if (orientation() != before) Q_EMIT orientationChanged();
}

}  // namespace bb::cascades

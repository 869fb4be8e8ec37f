#pragma once

// Changing controls of the main screen, any of which a page may lack. UI thread.

#include <QLatin1String>
#include <QUrl>

#include "platform/cascades/controls.h"

inline void set_visible(QQuickItem* control, bool visible) {
  if (control) control->setVisible(visible);
}

/// @param image  such as "asset:///images/icon.png"
inline void set_image(bb::cascades::ImageView* view, const char* image) {
  if (view) view->setImage(QUrl(QLatin1String(image)));
}

inline void set_images(bb::cascades::ImageButton* button, const char* normal, const char* pressed) {
  if (!button) return;
  button->setDefaultImageSource(QUrl(QLatin1String(normal)));
  button->setPressedImageSource(QUrl(QLatin1String(pressed)));
}

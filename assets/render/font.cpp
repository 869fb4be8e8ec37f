#include "assets/render/font.h"

#include <QFont>
#include <QFontDatabase>
#include <QStringList>

namespace assets {

QString fontFamily() {
  static const QString family = [] {
    const QStringList installed = QFontDatabase::families();
    for (const char* wanted : {"DejaVu Sans Condensed", "DejaVu Sans", "Liberation Sans Narrow", "Liberation Sans",
                               "Noto Sans", "Open Sans", "FreeSans"}) {
      if (installed.contains(QLatin1String(wanted))) return QString::fromLatin1(wanted);
    }
    return installed.isEmpty() ? QString() : installed.first();
  }();
  return family;
}

QPainterPath textOutline(const QString& text, double pixelSize) {
  // Drawn large and scaled down: a font's pixel size is a whole number.
  constexpr int drawnSize = 256;
  QFont font(fontFamily());
  font.setPixelSize(drawnSize);
  font.setWeight(QFont::Bold);
  font.setStretch(QFont::SemiCondensed);
  font.setHintingPreference(QFont::PreferNoHinting);
  QPainterPath path;
  path.addText(0, 0, font, text);
  return QTransform::fromScale(pixelSize / drawnSize, pixelSize / drawnSize).map(path);
}

}  // namespace assets

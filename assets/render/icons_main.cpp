// render_icons DRAWINGS DIRECTORY: draws every icon into DIRECTORY from the SVG files in DRAWINGS. Exit status 0,
// or 1 with one line on the error stream.

#include <QDir>
#include <cstdio>

#include "assets/render/icons.h"
#include "assets/render/png.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: render_icons DRAWINGS DIRECTORY\n");
    return 1;
  }
  const QDir drawings(QString::fromLocal8Bit(argv[1]));
  const QDir directory(QString::fromLocal8Bit(argv[2]));
  if (!directory.mkpath(".")) {
    std::fprintf(stderr, "render_icons: cannot create %s\n", argv[2]);
    return 1;
  }
  for (const assets::Icon& icon : assets::icons()) {
    QString missing;
    const QImage image = assets::drawIcon(icon, drawings, &missing);
    if (image.isNull()) {
      std::fprintf(stderr, "render_icons: %s is not a drawing\n", qPrintable(missing));
      return 1;
    }
    const QString trouble = assets::writePng(image, directory.filePath(QString::fromLatin1(icon.name) + ".png"));
    if (trouble.isEmpty()) continue;
    std::fprintf(stderr, "render_icons: cannot write %s.png: %s\n", icon.name, qPrintable(trouble));
    return 1;
  }
  return 0;
}

#pragma once

#include <gtest/gtest.h>

#include <QImage>
#include <QString>
#include <string>
#include <string_view>

/// Where a file of the tables, "app/...", lies in the rendered package.
inline QString packaged(std::string_view path) {
  EXPECT_EQ(path.substr(0, 4), "app/");
  const std::string file = std::string(MORVANE_PACKAGE_DIR "/").append(path.substr(4));
  return QString::fromStdString(file);
}

inline QImage loadPackaged(std::string_view path) {
  const QImage image(packaged(path));
  EXPECT_FALSE(image.isNull()) << path;
  return image;
}

/// 0 to 255, ITU-R BT.601.
inline int lumaOf(QRgb rgb) {
  return (299 * qRed(rgb) + 587 * qGreen(rgb) + 114 * qBlue(rgb)) / 1000;
}

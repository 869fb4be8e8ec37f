// The icons: all there, fit to be laid over a picture, and telling their states apart.

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <map>

#include "assets/render/icons.h"
#include "tests/assets/package.h"

namespace {

const QString imageFolder = QStringLiteral(MORVANE_PACKAGE_DIR "/native/assets/images/");

QImage packagedIcon(const QString& name) {
  const QImage image(imageFolder + name + ".png");
  EXPECT_FALSE(image.isNull()) << name.toStdString();
  return image;
}

/// The icons that a file's code speaks of.
void collectNames(const QString& path, QSet<QString>& names) {
  static const QRegularExpression picture("\\b(ic(?:on)?_\\w+)\\.png");
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  while (!file.atEnd()) {
    const QString line = QString::fromUtf8(file.readLine());
    if (line.trimmed().startsWith("//")) continue;
    auto found = picture.globalMatch(line);
    while (found.hasNext()) names.insert(found.next().captured(1));
  }
}

QSet<QString> namesInUse() {
  QSet<QString> names;
  for (const char* folder : {"app", "assets", "camera", "capture", "social", "platform"}) {
    QDirIterator files(QStringLiteral(MORVANE_SOURCE_DIR "/") + folder, {"*.cpp", "*.h", "*.qml"}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) collectNames(files.next(), names);
  }
  return names;
}

double shareOfClearPixels(const QImage& image) {
  int clear = 0;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) clear += qAlpha(image.pixel(x, y)) == 0;
  }
  return static_cast<double>(clear) / (image.width() * image.height());
}

TEST(Icons, AreThoseInUse) {
  const QSet<QString> used = namesInUse();
  QSet<QString> drawn;
  for (const assets::Icon& icon : assets::icons()) drawn.insert(icon.name);
  for (const QString& name : used - drawn) ADD_FAILURE() << name.toStdString() << " is used and not drawn";
  for (const QString& name : drawn - used) ADD_FAILURE() << name.toStdString() << " is drawn and not used";
}

TEST(Icons, LieOnAClearGroundAndKeepOffTheBorder) {
  for (const assets::Icon& icon : assets::icons()) {
    const QImage image = packagedIcon(icon.name);
    ASSERT_EQ(image.size(), QSize(icon.size, icon.size)) << icon.name;
    ASSERT_TRUE(image.hasAlphaChannel()) << icon.name;
    const double clear = shareOfClearPixels(image);
    EXPECT_GT(clear, 0.02) << icon.name;
    EXPECT_LT(clear, 0.9) << icon.name;
    for (int i = 0; i < icon.size; ++i) {
      for (const QPoint edge : {QPoint(i, 0), QPoint(i, icon.size - 1), QPoint(0, i), QPoint(icon.size - 1, i)}) {
        ASSERT_LT(qAlpha(image.pixel(edge)), 64) << icon.name << " is cut off at " << edge.x() << ", " << edge.y();
      }
    }
  }
}

TEST(Icons, NoTwoAreAlike) {
  std::map<QByteArray, std::string> seen;
  for (const assets::Icon& icon : assets::icons()) {
    QFile file(imageFolder + icon.name + ".png");
    ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << icon.name;
    const auto [other, fresh] = seen.emplace(file.readAll(), icon.name);
    EXPECT_TRUE(fresh) << icon.name << " looks like " << other->second;
  }
}

/// Where the picture on the filters' icons has which colour.
constexpr QPoint sky(30, 30), sun(90, 38), roof(50, 60), hill(100, 100);

bool isGrey(QRgb color) {
  const auto [least, most] = std::minmax({qRed(color), qGreen(color), qBlue(color)});
  return most - least < 12;
}

TEST(Icons, ColourKeepersKeepOneColour) {
  const std::pair<const char*, QPoint> keepers[] = {
      {"icon_effect_yellow", sun}, {"icon_effect_blue", sky}, {"icon_effect_green", hill}, {"icon_effect_red", roof}};
  const QImage plain = packagedIcon("icon_effect_normal");
  for (const auto& [name, kept] : keepers) {
    const QImage image = packagedIcon(name);
    for (const QPoint point : {sky, sun, roof, hill}) {
      EXPECT_FALSE(isGrey(plain.pixel(point)));
      EXPECT_EQ(isGrey(image.pixel(point)), point != kept) << name << " at " << point.x() << ", " << point.y();
    }
  }
}

TEST(RenderIcons, SameBytesEveryTime) {
  const QTemporaryDir directory;
  ASSERT_EQ(QProcess::execute(RENDER_ICONS, {MORVANE_ICON_DRAWINGS, directory.filePath("again")}), 0);
  for (const assets::Icon& icon : assets::icons()) {
    QFile first(imageFolder + icon.name + ".png");
    QFile second(directory.filePath("again/") + icon.name + ".png");
    ASSERT_TRUE(first.open(QIODevice::ReadOnly) && second.open(QIODevice::ReadOnly)) << icon.name;
    EXPECT_EQ(first.readAll(), second.readAll()) << icon.name;
  }
}

TEST(RenderIcons, SaysWhatIsWrong) {
  const QTemporaryDir directory;
  const auto run = [](const QStringList& arguments) {
    QProcess process;
    process.start(RENDER_ICONS, arguments);
    EXPECT_TRUE(process.waitForFinished(60000));
    return std::pair(process.exitCode(), process.readAllStandardError().toStdString());
  };
  EXPECT_EQ(run({}), std::pair(1, std::string("usage: render_icons DRAWINGS DIRECTORY\n")));
  QFile broken(directory.filePath("icon_app.svg"));
  ASSERT_TRUE(broken.open(QIODevice::WriteOnly) && broken.write("<svg") == 4);
  broken.close();
  const auto [status, text] = run({directory.path(), directory.filePath("out")});
  EXPECT_EQ(status, 1);
  EXPECT_NE(text.find("icon_app.svg is not a drawing\n"), std::string::npos) << text;
  const auto [fileStatus, fileText] = run({MORVANE_ICON_DRAWINGS, broken.fileName() + "/out"});
  EXPECT_EQ(fileStatus, 1);
  EXPECT_NE(fileText.find("cannot create "), std::string::npos) << fileText;
}

}  // namespace

// The renderer itself: determinism, its PNG files, its errors.

#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>
#include <future>

#include "assets/render/glyphs.h"
#include "assets/render/noise.h"
#include "assets/render/picture.h"
#include "assets/render/png.h"
#include "assets/render/textures.h"
#include "engine/stamp_layout.h"
#include "engine/texture_table.h"
#include "tests/assets/package.h"

namespace {

// Text needs the application object.
class Gui : public testing::Environment {
 public:
  void SetUp() override {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    mApplication = std::make_unique<QGuiApplication>(mCount, mArguments);
  }
  void TearDown() override { mApplication.reset(); }

 private:
  int mCount = 1;
  char mName[12] = "test_assets";
  char* mArguments[2] = {mName, nullptr};
  std::unique_ptr<QGuiApplication> mApplication;
};
const testing::Environment* const gui = testing::AddGlobalTestEnvironment(new Gui);

TEST(Rendering, SameBytesEveryTimeAndOnEveryThread) {
  for (int entry = 0; entry < texture_count; ++entry) {
    const auto draw = [entry] { return assets::texturePainter(entry)({384, 216}); };
    std::future<QImage> elsewhere = std::async(std::launch::async, draw);
    const QImage here = draw();
    ASSERT_EQ(here.size(), QSize(384, 216));
    EXPECT_EQ(here, elsewhere.get()) << img_textures[entry];
  }
  for (int color = 0; color < stamp_color_count; ++color) {
    EXPECT_EQ(assets::glyphSheet(color), QImage(packaged(img1_path[color]))) << img1_path[color];
  }
}

TEST(Noise, RepeatsAcrossThePicture) {
  const assets::Octaves octaves{5, 3, 4, 17};
  double least = 1;
  double most = -1;
  for (int i = 0; i < 500; ++i) {
    const double u = assets::unit(i, 0, 1);
    const double v = assets::unit(i, 1, 1);
    const double value = assets::fbm(u, v, octaves);
    ASSERT_NEAR(value, assets::fbm(u + 1, v - 1, octaves), 1e-9);
    ASSERT_NEAR(assets::worley(u, v, 7, 4, 3).nearest, assets::worley(u + 1, v - 1, 7, 4, 3).nearest, 1e-9);
    least = std::min(least, value);
    most = std::max(most, value);
  }
  EXPECT_LT(least, -0.4);
  EXPECT_GT(most, 0.4);
  EXPECT_GE(least, -1.1);
  EXPECT_LE(most, 1.1);
}

TEST(Picture, OverKeepsStraightColour) {
  const assets::Pixel clear{{1, 0, 0}, 0};
  const assets::Pixel half = assets::over(clear, {0, 0, 1}, 0.5);
  EXPECT_DOUBLE_EQ(half.alpha, 0.5);
  EXPECT_DOUBLE_EQ(half.colour.b, 1) << "what lay under an empty pixel must not tint it";
  const assets::Pixel both = assets::over(half, {0, 1, 0}, 0.5);
  EXPECT_DOUBLE_EQ(both.alpha, 0.75);
  EXPECT_NEAR(both.colour.g, 2.0 / 3, 1e-12);
  for (int i = 0; i < 1000; ++i) {
    const double threshold = assets::ditherThreshold(i, 3 * i);
    ASSERT_EQ(assets::toRgb({assets::hex(0x00ff7f), 1}, threshold), 0xff00ff7fU) << "exact values are not dithered";
  }
}

TEST(Png, RestoresEveryByte) {
  const QTemporaryDir directory;
  for (const QSize size : {QSize(1, 1), QSize(1, 9), QSize(7, 1), QSize(33, 21)}) {
    QImage image(size, QImage::Format_ARGB32);
    for (int y = 0; y < size.height(); ++y) {
      for (int x = 0; x < size.width(); ++x) image.setPixel(x, y, assets::hash(x, y, 5) & (x % 3 ? ~0U : 0x00ffffffU));
    }
    const QString path = directory.filePath("random.png");
    ASSERT_EQ(assets::writePng(image, path), QString());
    const QImage loaded(path);
    ASSERT_EQ(loaded.format(), QImage::Format_ARGB32);
    for (int y = 0; y < size.height(); ++y) {
      for (int x = 0; x < size.width(); ++x) ASSERT_EQ(loaded.pixel(x, y), image.pixel(x, y)) << x << ", " << y;
    }
  }
  EXPECT_NE(assets::writePng(QImage(2, 2, QImage::Format_ARGB32), directory.filePath("missing/a.png")), QString());
}

TEST(RenderProgram, SaysWhatIsWrong) {
  const auto run = [](const QStringList& arguments) {
    QProcess process;
    process.start(RENDER_ASSETS, arguments);
    EXPECT_TRUE(process.waitForFinished(60000));
    return std::pair(process.exitCode(), process.readAllStandardError().toStdString());
  };
  const auto [usageStatus, usage] = run({});
  EXPECT_EQ(usageStatus, 1);
  EXPECT_NE(usage.find("usage: render_assets DIRECTORY"), std::string::npos) << usage;
  const QString underAFile = packaged(img2_path) + "/package";
  const auto [status, text] = run({underAFile});
  EXPECT_EQ(status, 1);
  EXPECT_NE(text.find("cannot create the directory"), std::string::npos) << text;
}

}  // namespace

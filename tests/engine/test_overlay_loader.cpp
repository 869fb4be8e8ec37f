#include "engine/overlay_loader.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QByteArray>
#include <QFile>
#include <QImage>
#include <QImageWriter>
#include <chrono>
#include <cstring>
#include <vector>

#include "engine/color_filter.h"
#include "engine/filter_thread.h"
#include "engine/picture.h"
#include "engine/texture_table.h"
#include "tests/engine/engine_state.h"
#include "tests/engine/png_file.h"
#include "tests/engine/test_frame.h"
#include "tests/support/temp_dir.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr QRgb first_color = 0xff2060c0, second_color = 0x00ffee10;

/// Stripes of two colours, one of them fully transparent: smoothing would make others of them, and so would
/// drawing one image on another.
QImage striped(int width, int height) {
  QImage image(width, height, QImage::Format_ARGB32);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) image.setPixel(x, y, (x / 3 + y / 5) % 2 == 0 ? first_color : second_color);
  }
  return image;
}

std::uint8_t luma_of(QRgb color) {
  std::uint8_t luma = 0, u = 0, v = 0;
  logo_get_yuv_for_rgb(static_cast<std::uint8_t>(qRed(color)), static_cast<std::uint8_t>(qGreen(color)),
                       static_cast<std::uint8_t>(qBlue(color)), &luma, &u, &v);
  return luma;
}

/// x, y, width, height.
std::vector<int> rectangle() {
  return {logo_image.x, logo_image.y, logo_image.width, logo_image.height};
}
using rect = std::vector<int>;

class OverlayLoader : public testing::Test {
 protected:
  void SetUp() override {
    reset_engine();
    set_frame(1280, 720);
    logo_pos = 0;
  }
  void TearDown() override {
    free_logo_image();
    reset_engine();
  }

  static void set_frame(int width, int height) {
    _screen_wid = width;
    _screen_hi = height;
  }

  std::string saved(const QImage& image) {
    const std::string path = folder_.file("picture.png");
    write_file(path, png_of(image));
    return path;
  }

  int load(const QImage& image, bool fill_frame = false) {
    return logo_load_image(0, 0, saved(image).c_str(), fill_frame);
  }

  /// Loads over an overlay that is there, and expects the line and that overlay as it was.
  void expect_refused(const std::string& path, int result, const std::string& line) {
    ASSERT_EQ(load(striped(8, 8)), 0);
    const logo_image_s before = logo_image;
    const auto start = std::chrono::steady_clock::now();
    testing::internal::CaptureStderr();
    EXPECT_EQ(logo_load_image(0, 0, path.c_str(), false), result) << path;
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr(line)) << path;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5)) << path;
    EXPECT_EQ(std::memcmp(&logo_image.x, &before.x, 4 * sizeof before.x), 0) << path;
    EXPECT_EQ(logo_image.luma, before.luma) << path;
    EXPECT_TRUE(logo_image.enabled) << path;
    EXPECT_EQ(logo_image.luma[0], luma_of(first_color)) << path;
  }

  TempDir folder_;
};

TEST_F(OverlayLoader, ConvertsAtNaturalSizeInWholeBlocks) {
  logo_pos = 3;
  const QImage image = striped(1001, 703);
  ASSERT_EQ(load(image), 0);
  EXPECT_EQ(rectangle(), (rect{140, 10, 1000, 700}));
  EXPECT_TRUE(logo_image.enabled);
  for (int y = 0; y < 700; ++y) {
    for (int x = 0; x < 1000; ++x) {
      ASSERT_EQ(logo_image.luma[y * 1000 + x], luma_of(image.pixel(x, y))) << x << ',' << y;
      ASSERT_EQ(logo_image.alpha[y * 1000 + x], qAlpha(image.pixel(x, y))) << x << ',' << y;
    }
  }
  ASSERT_EQ(load(striped(1000, 700)), 0);
  EXPECT_EQ(rectangle(), (rect{140, 10, 1000, 700}));
}

TEST_F(OverlayLoader, FitsAndPlaces) {
  const struct {
    int frame_width, frame_height, width, height, position;
    bool fill_frame;
    rect expected;
  } cases[] = {
      {1280, 720, 2000, 500, 4, false, {0, 560, 640, 160}},
      {1280, 720, 2000, 500, 0, true, {0, 0, 1280, 720}},
      {1280, 720, 8, 8, 0, true, {0, 0, 1280, 720}},
      {1280, 720, 1280, 720, 6, false, {0, 0, 1280, 720}},
      {1280, 720, 1281, 4, 0, false, {0, 0, 640, 0}},
      {1280, 720, 400, 800, 6, false, {640, 0, 640, 1280}},  // still taller than the frame
      {1280, 720, 3, 3, 3, false, {640, 360, 0, 0}},
      {1280, 720, 1, 32000, 0, false, {0, 0, 640, 8192}},  // cut: its 20 million rows fit no memory
      {854, 480, 101, 99, 3, false, {376, 192, 100, 96}},  // 377, rounded down to even
      {854, 480, 101, 99, 2, false, {754, 0, 100, 96}},
      {853, 479, 101, 99, 6, false, {752, 382, 100, 96}},  // 753 and 383
      {0, 0, 100, 100, 3, false, {0, 0, 0, 0}},            // no camera yet
      {0, 0, 100, 100, 3, true, {0, 0, 0, 0}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.width << 'x' << c.height << " on " << c.frame_width << 'x' << c.frame_height);
    set_frame(c.frame_width, c.frame_height);
    logo_pos = c.position;
    ASSERT_EQ(load(striped(c.width, c.height), c.fill_frame), 0);
    EXPECT_EQ(rectangle(), c.expected);
    for (int i = 0; i < logo_image.width * logo_image.height; ++i) {
      const int luma = logo_image.luma[i];
      ASSERT_TRUE(luma == luma_of(first_color) || luma == luma_of(second_color)) << "smoothed at " << i;
    }
    test_frame frame(static_cast<std::uint32_t>(c.frame_width), static_cast<std::uint32_t>(c.frame_height), 0, 1);
    const camera_buffer_t buffer = frame.descriptor();
    process_frame(buffer, buffer);
  }
}

TEST_F(OverlayLoader, ScalesToTheNearestPixels) {
  const struct {
    int from, to;
    std::vector<int> taken;  // the source pixel under each target pixel's middle
  } cases[] = {{4, 4, {0, 1, 2, 3}}, {4, 2, {1, 3}},          {4, 8, {0, 0, 1, 1, 2, 2, 3, 3}},
               {5, 3, {0, 2, 4}},    {3, 5, {0, 0, 1, 2, 2}}, {7, 1, {3}},
               {1, 3, {0, 0, 0}}};
  const auto pixel = [](int x, int y) { return static_cast<QRgb>(x << 28 | y << 20 | x << 8 | y); };
  for (const auto& across : cases) {
    for (const auto& down : cases) {
      QImage image(across.from, down.from, QImage::Format_ARGB32);
      for (int i = 0; i < across.from * down.from; ++i)
        image.setPixel(i % across.from, i / across.from, pixel(i % across.from, i / across.from));
      const QImage scaled = scaled_to(image, across.to, down.to);
      ASSERT_EQ(scaled.size(), QSize(across.to, down.to));
      for (int i = 0; i < across.to * down.to; ++i) {
        const int x = i % across.to, y = i / across.to;
        ASSERT_EQ(scaled.pixel(x, y), pixel(across.taken[x], down.taken[y])) << across.to << 'x' << down.to;
      }
    }
  }
  EXPECT_EQ(scaled_to_width(striped(97, 41), 194, 30), scaled_to(striped(97, 41), 194, 82).copy(0, 0, 194, 30));
  EXPECT_EQ(scaled_to_width(striped(97, 41), 48, 99).height(), 20) << "20.3, rounded";
  EXPECT_EQ(scaled_to_width(striped(97, 41), 40, 99).height(), 17) << "16.9, rounded";
  EXPECT_TRUE(scaled_to_width(striped(97, 1), 40, 99).isNull()) << "0.4 rows";
}

TEST_F(OverlayLoader, PlacesByCode) {
  const struct {
    int code;
    int x, y, crowded_x, crowded_y;  // of 100 x 40 in 300 x 200, and in 90 x 30
  } cases[] = {{0, 0, 0, 0, 0},     {1, 100, 0, 0, 0},   {2, 200, 0, 0, 0},   {3, 100, 80, 0, 0},  {4, 0, 160, 0, 0},
               {5, 100, 160, 0, 0}, {6, 200, 160, 0, 0}, {7, 12, 34, 12, 34}, {-1, 12, 34, 12, 34}};
  for (const auto& c : cases) {
    const logo_image_s fresh{12, 34, 100, 40, nullptr, nullptr, nullptr, nullptr, false};
    logo_image_s record = fresh;
    place_overlay(c.code, 300, 200, record);
    EXPECT_EQ(rect({record.x, record.y}), rect({c.x, c.y})) << c.code;
    record = fresh;
    place_overlay(c.code, 90, 30, record);
    EXPECT_EQ(rect({record.x, record.y}), rect({c.crowded_x, c.crowded_y})) << c.code;
  }
}

TEST_F(OverlayLoader, RefusesPicturesWithoutAlphaOf32Bits) {
  const QImage image = striped(40, 40);
  for (const QImage::Format format :
       {QImage::Format_Mono, QImage::Format_Indexed8, QImage::Format_Grayscale8, QImage::Format_Grayscale16,
        QImage::Format_RGB888, QImage::Format_RGB32, QImage::Format_RGBA64, QImage::Format_RGBX64}) {
    const std::string path = folder_.file("other.png");
    write_file(path, png_of(image.convertToFormat(format)));
    expect_refused(path, -2, "logo not in argb32 format\n");
  }
  // 8 x 8 red pixels in CMYK.
  const QByteArray cmyk = QByteArray::fromBase64(
      "/9j/7gAOQWRvYmUAZAAAAAAC/9sAQwAQCwwODAoQDg0OEhEQExgoGhgWFhgxIyUdKDozPTw5Mzg3QEhcTkBEV0U3OFBtUVdfYmdo"
      "Zz5NcXlwZHhcZWdj/9sAQwEREhIYFRgvGhovY0I4QmNjY2NjY2NjY2NjY2NjY2NjY2NjY2NjY2NjY2NjY2NjY2NjY2NjY2NjY2Nj"
      "Y2NjY2Nj/8AAFAgACAAIBAEiAAIRAQMRAQQiAP/EABYAAQEBAAAAAAAAAAAAAAAAAAAFB//EABQQAQAAAAAAAAAAAAAAAAAAAAD/"
      "xAAVAQEBAAAAAAAAAAAAAAAAAAAFBv/EABQRAQAAAAAAAAAAAAAAAAAAAAD/2gAOBAEAAhEDEQQAAD8AtAFEG0AB/9k=");
  write_file(folder_.file("cmyk.png"), cmyk.toStdString());
  expect_refused(folder_.file("cmyk.png"), -2, "logo not in argb32 format\n");
}

TEST_F(OverlayLoader, RefusesWhatIsNoPicture) {
  const char* const null_line = "logo is null\n";
  write_file(folder_.file("empty.png"), "");
  write_file(folder_.file("text.png"), std::string(5000, 'x'));
  ASSERT_EQ(mkfifo(folder_.file("fifo.png").c_str(), 0600), 0);
  ASSERT_EQ(symlink("/dev/zero", folder_.file("zero.png").c_str()), 0);
  ASSERT_EQ(symlink("nowhere", folder_.file("dangling.png").c_str()), 0);
  for (const char* name : {"missing.png", "", "empty.png", "text.png", "fifo.png", "zero.png", "dangling.png"}) {
    expect_refused(folder_.file(name), -1, null_line);
  }
  expect_refused("", -1, null_line);
  // A drawing that names a file which nobody will ever write.
  write_file(folder_.file("drawing.svg"),
             "<svg xmlns='http://www.w3.org/2000/svg' xmlns:xlink='http://www.w3.org/1999/xlink' width='8' height='8'>"
             "<image width='8' height='8' xlink:href='" +
                 folder_.file("fifo.png") + "'/></svg>");
  expect_refused(folder_.file("drawing.svg"), -1, null_line);
  expect_refused("/proc/self/mem", -1, null_line);  // a regular file that opens and cannot be read
  write_file(folder_.file("secret.png"), png_of(striped(8, 8)));
  ASSERT_EQ(chmod(folder_.file("secret.png").c_str(), 0), 0);
  if (geteuid() != 0) expect_refused(folder_.file("secret.png"), -1, null_line);
}

TEST_F(OverlayLoader, RefusesEnormousAndBrokenFiles) {
  const std::string path = folder_.file("hostile.png"), whole = png_of(striped(24, 24));
  const std::uint32_t claims[][2] = {{60000, 60000}, {1000000, 1000000}, {1, 0x7FFFFFFF}, {0, 24}, {24, 25}};
  for (const auto& [width, height] : claims) {
    write_file(path, with_claimed_size(whole, width, height));
    expect_refused(path, -1, "logo is null\n");
  }
  // Its last 12 bytes end the file and hold nothing of the picture.
  for (std::size_t length = 0; length < whole.size() - 12; length += 3) {
    write_file(path, whole.substr(0, length));
    expect_refused(path, -1, "logo is null\n");
  }
}

TEST_F(OverlayLoader, RefusesPicturesThatAreNotWholeOrTakeLong) {
  const std::string path = folder_.file("scans.jpg");
  QImage image = striped(320, 240).convertToFormat(QImage::Format_RGB32);
  QImageWriter writer(QString::fromStdString(path), "jpeg");
  writer.setProgressiveScanWrite(true);
  ASSERT_TRUE(writer.write(image));
  QFile file(QString::fromStdString(path));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  const std::string whole = file.readAll().toStdString();
  EXPECT_FALSE(read_picture(path.c_str()).isNull());
  // Its last scan, over and over.
  const std::size_t last = whole.rfind("\xff\xda"), end = whole.size() - 2;
  for (const int scans : {20, 6000}) {
    std::string repeated = whole.substr(0, last);
    for (int i = 0; i < scans; ++i) repeated += whole.substr(last, end - last);
    write_file(path, repeated + whole.substr(end));
    EXPECT_EQ(read_picture(path.c_str()).isNull(), scans == 6000) << scans;
  }
  for (const std::size_t length : {last, end - 20, end}) {
    write_file(path, whole.substr(0, length));
    EXPECT_TRUE(read_picture(path.c_str()).isNull()) << length << " of " << whole.size();
  }
}

TEST_F(OverlayLoader, SurvivesEveryFlippedByte) {
  const std::string path = folder_.file("flipped.png"), whole = png_of(striped(24, 24));
  testing::internal::CaptureStderr();
  int refused = 0;
  for (std::size_t i = 0; i < whole.size(); ++i) {
    std::string flipped = whole;
    flipped[i] = static_cast<char>(flipped[i] ^ 0x5A);
    write_file(path, flipped);
    const int result = logo_load_image(0, 0, path.c_str(), false);
    EXPECT_TRUE(result == 0 || result == -1 || result == -2) << i;
    refused += result != 0;
  }
  testing::internal::GetCapturedStderr();
  EXPECT_GT(refused, 0);
}

TEST_F(OverlayLoader, RefusesLongPathsWithOneLine) {
  std::string path = folder_.path();
  while (path.size() < 255 - 10) path += "/.";
  path += "/" + std::string(255 - path.size() - 1, 'p');
  ASSERT_EQ(path.size(), 255u);
  write_file(path, png_of(striped(12, 12)));
  EXPECT_EQ(logo_load_image(0, 0, path.c_str(), false), 0);
  const std::string longer = folder_.path() + "/./" + path.substr(folder_.path().size() + 1);
  expect_refused(longer, -1, "overlay path is longer than 255 bytes\n");

  char field[overlay_path_size] = "before";
  testing::internal::CaptureStderr();
  EXPECT_FALSE(store_overlay_path(field, longer.c_str()));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "overlay path is longer than 255 bytes\n");
  EXPECT_STREQ(field, "before");
  EXPECT_TRUE(store_overlay_path(field, path.c_str()));
  EXPECT_EQ(field, path);
  EXPECT_TRUE(store_overlay_path(field, field)) << "a rebuild stores the path that is stored";
  EXPECT_EQ(field, path);
}

TEST_F(OverlayLoader, AsksOnlyWhenBothSidesDiffer) {
  EXPECT_TRUE(resize_question_applies(striped(1000, 700)));
  EXPECT_FALSE(resize_question_applies(striped(1280, 700)));
  EXPECT_FALSE(resize_question_applies(striped(1000, 720)));
  EXPECT_FALSE(resize_question_applies(striped(1280, 720)));
  EXPECT_FALSE(resize_question_applies(read_picture("/nowhere"))) << "a broken file is an alert, not a question";
}

TEST_F(OverlayLoader, TextureRowsListTheTableInReverse) {
  EXPECT_EQ(texture_path(0, "/box/data"), "/box/app/native/assets/images/textures/eff_vintage.png");
  EXPECT_EQ(texture_path(11, "/box/data"), "/box/app/native/assets/images/textures/eff_brick.png");
  EXPECT_EQ(texture_path(3, "ab"), "app/native/assets/images/textures/eff_scope.png");
}

TEST_F(OverlayLoader, SuspendedOverlaysComeBackAndClearedOnesDoNot) {
  ASSERT_EQ(load(striped(64, 64), true), 0);
  const auto blended = [] {
    test_frame frame(64, 64, 0, 1), before = frame;
    const camera_buffer_t buffer = frame.descriptor();
    process_frame(buffer, buffer);
    return !(frame == before);
  };
  EXPECT_TRUE(blended());
  EXPECT_TRUE(suspend_logo_image());
  EXPECT_FALSE(blended());
  EXPECT_FALSE(suspend_logo_image()) << "suspended already";
  restore_logo_image(false);
  EXPECT_FALSE(blended());
  restore_logo_image(true);
  EXPECT_TRUE(blended());
  free_logo_image();
  EXPECT_EQ(logo_image.luma, nullptr);
  EXPECT_EQ(rectangle(), (rect{0, 0, 0, 0}));
  restore_logo_image(true);
  EXPECT_FALSE(logo_image.enabled);
  free_logo_image();
}

}  // namespace

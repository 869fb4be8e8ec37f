// The textures, as rendered into the package.

#include <algorithm>
#include <cstdlib>

#include "engine/texture_table.h"
#include "tests/assets/package.h"

namespace {

double meanAlpha(const QImage& image, const QRect& area) {
  double sum = 0;
  for (int y = area.top(); y <= area.bottom(); ++y) {
    for (int x = area.left(); x <= area.right(); ++x) sum += qAlpha(image.pixel(x, y));
  }
  return sum / (double(area.width()) * area.height());
}

int difference(QRgb a, QRgb b) {
  return std::max({std::abs(qAlpha(a) - qAlpha(b)), std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                   std::abs(qBlue(a) - qBlue(b))});
}

double columnDifference(const QImage& image, int a, int b) {
  double sum = 0;
  for (int y = 0; y < image.height(); ++y) sum += difference(image.pixel(a, y), image.pixel(b, y));
  return sum / image.height();
}

double rowDifference(const QImage& image, int a, int b) {
  double sum = 0;
  for (int x = 0; x < image.width(); ++x) sum += difference(image.pixel(x, a), image.pixel(x, b));
  return sum / image.width();
}

class Texture : public testing::TestWithParam<int> {
 protected:
  const std::string path = img_textures[GetParam()];
  const QImage image = loadPackaged(path);

  bool isOneOf(std::initializer_list<const char*> names) const {
    return std::any_of(names.begin(), names.end(), [this](const char* name) {
      return path.find(std::string("eff_") + name + ".png") != std::string::npos;
    });
  }
};

TEST_P(Texture, LeavesTheMiddleToTheVideoAndFillsItsBorder) {
  ASSERT_EQ(image.format(), QImage::Format_ARGB32);
  ASSERT_EQ(image.size(), QSize(1920, 1080));
  EXPECT_LT(meanAlpha(image, {640, 360, 640, 360}), 70);
  const double top = meanAlpha(image, {0, 0, 1920, 60});
  const double bottom = meanAlpha(image, {0, 1020, 1920, 60});
  EXPECT_GT(std::max(top, bottom), 90);
  EXPECT_GT(meanAlpha(image, {0, 0, 60, 1080}), 60);
  EXPECT_GT(meanAlpha(image, {1860, 0, 60, 1080}), 60);
}

TEST_P(Texture, HasNoCutWhereOppositeEdgesMeet) {
  const bool vertically = isOneOf({"fog_white", "fog_greyyellow", "smoke_dark", "orange_dust_", "brick"});
  if (vertically || isOneOf({"fog_orange", "fog_grey"})) {
    double usual = 0;
    for (int x = 0; x < 100; ++x) usual = std::max(usual, columnDifference(image, x, x + 1));
    EXPECT_LE(columnDifference(image, 1919, 0), usual * 1.05);
  }
  if (vertically) {
    double usual = 0;
    for (int y = 0; y < 100; ++y) usual = std::max(usual, rowDifference(image, y, y + 1));
    EXPECT_LE(rowDifference(image, 1079, 0), usual * 1.05);
  }
}

// Dithering breaks up what would be steps: along a row no single value of a slow gradient may run on.
TEST_P(Texture, GradientsHaveNoBands) {
  if (!isOneOf({"fog_white", "fog_orange", "fog_greyyellow", "fog_grey", "smoke_dark", "orange_dust_"})) return;
  int longest = 0;
  for (int y = 5; y < 1080; y += 97) {
    int run = 0;
    for (int x = 1; x < 1920; ++x) {
      const QRgb pixel = image.pixel(x, y);
      run = pixel == image.pixel(x - 1, y) && qAlpha(pixel) > 20 && qAlpha(pixel) < 255 ? run + 1 : 0;
      longest = std::max(longest, run);
    }
  }
  EXPECT_LT(longest, 40);
}

INSTANTIATE_TEST_SUITE_P(Table, Texture, testing::Range(0, texture_count));

TEST(TextureTable, MenuListsTheFilesInReverse) {
  EXPECT_STREQ(img_textures[texture_entry_of_row(0)], "app/native/assets/images/textures/eff_vintage.png");
  EXPECT_STREQ(texture_row_names[2], "Scope 2");
  EXPECT_STREQ(img_textures[texture_entry_of_row(2)], "app/native/assets/images/textures/eff_scope1.png");
  EXPECT_STREQ(texture_row_names[3], "Scope");
  EXPECT_STREQ(img_textures[texture_entry_of_row(3)], "app/native/assets/images/textures/eff_scope.png");
  EXPECT_STREQ(texture_row_names[11], "Brick");
  EXPECT_STREQ(img_textures[texture_entry_of_row(11)], "app/native/assets/images/textures/eff_brick.png");
  EXPECT_STREQ(texture_row_names[12], "No Texture");
}

}  // namespace

#include "engine/stamp.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <QImage>
#include <QPainter>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include "engine/filter_thread.h"
#include "engine/overlay.h"
#include "engine/stamp_layout.h"
#include "tests/engine/engine_state.h"
#include "tests/engine/png_file.h"
#include "tests/support/temp_dir.h"

namespace {

constexpr int am = stamp_glyph_am, pm = stamp_glyph_pm, space = -1;

constexpr int plate_level = 5, outside_level = 250;
/// Greys that tell glyphs, rows and colours apart.
int level(int glyph, bool large, int color) {
  return 10 + 14 * glyph + (large ? 7 : 0) + color;
}

QColor opaque(int grey) {
  return QColor(grey, grey, grey);
}

/// Every glyph fills its cell; whatever lies outside the cells must never show.
QImage painted_sheet(int color) {
  QImage sheet(860, 128, QImage::Format_ARGB32);
  sheet.fill(opaque(outside_level));
  QPainter painter(&sheet);
  for (const stamp_row_s& row : {stamp_small_row, stamp_large_row}) {
    for (int glyph = 0; glyph < stamp_glyph_count; ++glyph) {
      painter.fillRect(row.left[glyph], row.top, row.width(glyph), row.glyph_height,
                       opaque(level(glyph, row.left == _big_digitsX, color)));
    }
  }
  return sheet;
}

class Stamp : public testing::Test {
 protected:
  void SetUp() override {
    reset_engine();
    before_ = std::filesystem::current_path();
    std::filesystem::current_path(folder_.path());
    std::filesystem::create_directories("app/native");
    for (int color = 0; color < stamp_color_count; ++color) write_file(img1_path[color], png_of(painted_sheet(color)));
    save_plate(704, 44);
    setenv("TZ", "UTC", 1);
    set_frame(1280, 720);
  }
  void TearDown() override {
    free_datetime_image();
    unsetenv("TZ");
    std::filesystem::current_path(before_);
    reset_engine();
  }

  static void set_frame(int width, int height) {
    _screen_wid = width;
    _screen_hi = height;
  }
  static void save_plate(int width, int height, QImage::Format format = QImage::Format_ARGB32) {
    QImage plate(width, height, QImage::Format_ARGB32);
    plate.fill(QColor(plate_level, plate_level, plate_level, 200));
    write_file(img2_path, png_of(plate.convertToFormat(format)));
  }

  TempDir folder_;
  std::filesystem::path before_;
};

std::time_t utc(int year, int month, int day, int hour, int minute, int second) {
  std::tm parts{};
  parts.tm_year = year - 1900;
  parts.tm_mon = month - 1;
  parts.tm_mday = day;
  parts.tm_hour = hour;
  parts.tm_min = minute;
  parts.tm_sec = second;
  return timegm(&parts);
}
const std::time_t afternoon = utc(2026, 11, 16, 16, 17, 33);

std::vector<int> rectangle() {
  return {datetime_image.x, datetime_image.y, datetime_image.width, datetime_image.height};
}
using rect = std::vector<int>;

/// The grey of a luma sample: truncation takes some greys one step down.
bool shows(int x, int y, int grey) {
  const int luma = datetime_image.luma[y * datetime_image.width + x];
  return luma == grey || luma == grey - 1;
}

/// Expects these glyphs side by side, every pixel of them, and the plate everywhere else.
void expect_glyphs(const std::vector<int>& glyphs, bool large, int color = 0) {
  const stamp_row_s& row = large ? stamp_large_row : stamp_small_row;
  std::vector<int> columns;
  for (const int glyph : glyphs) {
    const int width = glyph == space ? stamp_space_advance : row.width(glyph);
    columns.insert(columns.end(), width, glyph == space ? plate_level : level(glyph, large, color));
  }
  EXPECT_EQ(datetime_image.width, static_cast<int>(columns.size() + 4) / 4 * 4);
  EXPECT_EQ(datetime_image.height, row.stamp_height);
  columns.resize(datetime_image.width, plate_level);
  for (int y = 0; y < datetime_image.height; ++y) {
    for (int x = 0; x < datetime_image.width; ++x) {
      const int grey = y < row.glyph_height ? columns[x] : plate_level;
      ASSERT_TRUE(shows(x, y, grey)) << x << ',' << y << ": " << grey;
      ASSERT_EQ(datetime_image.alpha[y * datetime_image.width + x], grey == plate_level ? 200 : 255);
    }
  }
}

bool draw(int format, std::time_t now, int color = 0, int position = 0) {
  return generate_datetime({format, color, position}, now, load_datetime_template(color));
}

TEST_F(Stamp, SpellsEveryFormatInBothSizes) {
  using glyphs = std::vector<int>;
  constexpr int dash = stamp_glyph_dash, slash = stamp_glyph_slash, colon = stamp_glyph_colon;
  const glyphs time = {space, 0, 4, colon, 1, 7, colon, 3, 3, pm};
  const auto with_time = [&time](glyphs date) {
    date.insert(date.end(), time.begin(), time.end());
    return date;
  };
  const glyphs dates[] = {{1, 1, dash, 1, 6, dash, 2, 0, 2, 6},
                          {1, 6, dash, 1, 1, dash, 2, 0, 2, 6},
                          {1, 1, slash, 1, 6, slash, 2, 0, 2, 6},
                          {1, 6, slash, 1, 1, slash, 2, 0, 2, 6}};
  for (const bool large : {true, false}) {
    set_frame(large ? 721 : 720, 480);
    for (int i = 0; i < 4; ++i) {
      for (const int format : {i + 1, i + 5}) {
        SCOPED_TRACE(testing::Message() << "format " << format << " large " << large);
        ASSERT_TRUE(draw(format, afternoon, i));
        expect_glyphs(format < 5 ? with_time(dates[i]) : dates[i], large, i);
        EXPECT_TRUE(datetime_image.enabled);
      }
    }
  }
}

TEST_F(Stamp, SizesOfTheLongestText) {
  ASSERT_TRUE(draw(1, afternoon));
  EXPECT_EQ(rectangle(), (rect{0, 0, 700, 44}));  // 697 pixels of text
  set_frame(720, 480);
  ASSERT_TRUE(draw(1, afternoon));
  EXPECT_EQ(rectangle(), (rect{0, 0, 488, 28}));  // 486
  set_frame(320, 240);
  ASSERT_TRUE(draw(1, afternoon));
  EXPECT_EQ(rectangle(), (rect{0, 0, 160, 8})) << "704 x 44 scaled to 160 x 10";
  set_frame(486, 240);
  ASSERT_TRUE(draw(1, afternoon, 0, 1));
  EXPECT_EQ(rectangle(), (rect{-2, 0, 488, 28})) << "the text just fits, and its stamp is clipped by the blender";
}

TEST_F(Stamp, SaysAmUntilNoon) {
  const struct {
    int hour, minute, second;
    std::vector<int> shown;
    int sign;
  } cases[] = {{11, 59, 59, {1, 1, 5, 9, 5, 9}, am},
               {12, 0, 0, {1, 2, 0, 0, 0, 0}, pm},
               {0, 0, 0, {1, 2, 0, 0, 0, 0}, am},
               {23, 59, 59, {1, 1, 5, 9, 5, 9}, pm},
               {12, 59, 9, {1, 2, 5, 9, 0, 9}, pm}};
  for (const auto& c : cases) {
    ASSERT_TRUE(draw(1, utc(2030, 1, 2, c.hour, c.minute, c.second)));
    const auto& t = c.shown;
    constexpr int dash = stamp_glyph_dash, colon = stamp_glyph_colon;
    expect_glyphs({0, 1, dash, 0, 2, dash, 2, 0, 3, 0, space, t[0], t[1], colon, t[2], t[3], colon, t[4], t[5], c.sign},
                  true);
  }
}

TEST_F(Stamp, ShowsLocalTimeAlsoAfterTheZoneChanged) {
  ASSERT_TRUE(draw(5, utc(2026, 1, 1, 0, 30, 0)));
  EXPECT_TRUE(shows(0, 0, level(0, true, 0))) << "January";
  setenv("TZ", "EST5", 1);
  ASSERT_TRUE(draw(5, utc(2026, 1, 1, 0, 30, 0)));
  EXPECT_TRUE(shows(0, 0, level(1, true, 0))) << "still December there";
}

TEST_F(Stamp, PlacesByCode) {
  set_frame(1278, 722);
  const struct {
    int code, x, y;
  } cases[] = {{0, 0, 0},     {1, 578, 0},   {2, 288, 338},  {3, 0, 678},
               {4, 578, 678}, {5, 578, 678}, {-1, 578, 678}, {INT32_MAX, 578, 678}};
  for (const auto& c : cases) {
    ASSERT_TRUE(draw(1, afternoon, 0, c.code));
    EXPECT_EQ(rectangle(), (rect{c.x, c.y, 700, 44})) << c.code;
  }
}

TEST_F(Stamp, MissingSheetLeavesTheBarePlate) {
  std::filesystem::remove(img1_path[3]);
  for (const int color : {3, -1, 6}) {
    ASSERT_TRUE(draw(1, afternoon, color));
    for (int i = 0; i < 700 * 44; ++i) ASSERT_EQ(datetime_image.alpha[i], 200);
  }
}

TEST_F(Stamp, NothingToShowLeavesTheStampAsItWas) {
  ASSERT_TRUE(draw(1, afternoon));
  const logo_image_s before = datetime_image;
  const auto unchanged = [&] {
    return datetime_image.luma == before.luma && datetime_image.enabled && shows(0, 0, level(1, true, 0));
  };
  for (const int format : {0, -1, 9}) EXPECT_FALSE(draw(format, afternoon)) << format;
  EXPECT_FALSE(draw(1, std::numeric_limits<std::time_t>::max())) << "no calendar goes that far";
  set_frame(0, 0);
  EXPECT_FALSE(draw(1, afternoon));
  set_frame(1280, 720);
  write_file(img2_path, "no picture");
  EXPECT_FALSE(draw(1, afternoon));
  std::filesystem::remove(img2_path);
  EXPECT_FALSE(draw(1, afternoon));
  EXPECT_TRUE(unchanged());
  free_datetime_image();
  EXPECT_FALSE(draw(1, afternoon));
  EXPECT_EQ(datetime_image.luma, nullptr);
}

TEST_F(Stamp, PoorPlatesMakeSmallerStamps) {
  save_plate(99, 30);
  ASSERT_TRUE(draw(1, afternoon));
  EXPECT_EQ(rectangle(), (rect{0, 0, 96, 28}));
  EXPECT_TRUE(shows(95, 27, level(stamp_glyph_dash, true, 0)) || shows(95, 27, level(1, true, 0)));
  save_plate(704, 44, QImage::Format_RGB32);
  ASSERT_TRUE(draw(1, afternoon));
  EXPECT_EQ(rectangle(), (rect{0, 0, 700, 44}));
  EXPECT_EQ(datetime_image.alpha[699], 255) << "a plate without alpha is opaque";
}

TEST_F(Stamp, RefreshesTakeTurnsWithTwoSetsOfPlanes) {
  ASSERT_TRUE(draw(1, afternoon));
  const std::uint8_t* const first = datetime_image.luma;
  ASSERT_TRUE(draw(1, afternoon + 1));
  const std::uint8_t* const second = datetime_image.luma;
  EXPECT_NE(second, first) << "the stamp that is shown is never drawn on";
  for (int i = 2; i < 10; ++i) {
    ASSERT_TRUE(draw(1, afternoon + i));
    EXPECT_EQ(datetime_image.luma, i % 2 == 0 ? first : second);
  }
  free_datetime_image();
  EXPECT_FALSE(datetime_image.enabled);
  EXPECT_EQ(datetime_image.luma, nullptr);
  EXPECT_EQ(rectangle(), (rect{0, 0, 0, 0}));
  free_datetime_image();
  ASSERT_TRUE(draw(6, afternoon));
}

TEST_F(Stamp, OnlyFormatsWithTimeTick) {
  for (int format = -1; format <= 9; ++format) EXPECT_EQ(stamp_ticks(format), format >= 1 && format <= 4) << format;
}

}  // namespace

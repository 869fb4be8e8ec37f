// The glyph sheets and the plate, as rendered into the package.

#include <QPainter>
#include <array>
#include <cmath>
#include <limits>

#include "engine/stamp_layout.h"
#include "tests/assets/package.h"

namespace {

constexpr const stamp_row_s* rows[] = {&stamp_small_row, &stamp_large_row};

QRect cellOf(const stamp_row_s& row, int glyph) {
  return {row.left[glyph], row.top, row.width(glyph), row.glyph_height};
}

/// The ink's colour class by name, not by the renderer's numbers.
bool isNamed(int color, QRgb rgb) {
  const int r = qRed(rgb);
  const int g = qGreen(rgb);
  const int b = qBlue(rgb);
  switch (color) {
    case 0:
      return r < 40 && g < 40 && b < 40;
    case 1:
      return b > 180 && b > r + 90 && b > g + 90;
    case 2:
      return r > 200 && g > 90 && g < 180 && b < 60;
    case 3:
      return r > 180 && g < 80 && b < 80;
    case 4:
      return r > 220 && g > 190 && b < 110;
    default:
      return r > 220 && g > 220 && b > 220;
  }
}

/// Rows that solid ink of the sheet's colour takes in a cell, counted from the cell's top.
struct Extent {
  int top = std::numeric_limits<int>::max();
  int bottom = -1;
  int pixels = 0;
};
Extent inkExtent(const QImage& sheet, const QRect& cell, int color) {
  Extent extent;
  for (int y = 0; y < cell.height(); ++y) {
    for (int x = 0; x < cell.width(); ++x) {
      const QRgb pixel = sheet.pixel(cell.left() + x, cell.top() + y);
      if (qAlpha(pixel) < 250 || !isNamed(color, pixel)) continue;
      extent = {std::min(extent.top, y), std::max(extent.bottom, y), extent.pixels + 1};
    }
  }
  return extent;
}

class GlyphSheet : public testing::TestWithParam<int> {
 protected:
  const int color = GetParam();
  const QImage sheet = loadPackaged(img1_path[color]);
};

TEST_P(GlyphSheet, InkLiesInTheCellsAndNowhereElse) {
  ASSERT_EQ(sheet.format(), QImage::Format_ARGB32);
  QImage rest = sheet;
  for (const stamp_row_s* row : rows) {
    for (int glyph = 0; glyph < stamp_glyph_count; ++glyph) {
      const QRect cell = cellOf(*row, glyph);
      ASSERT_TRUE(sheet.rect().contains(cell)) << "glyph " << glyph;
      for (int y = cell.top(); y <= cell.bottom(); ++y) {
        for (int x = cell.left(); x <= cell.right(); ++x) rest.setPixel(x, y, 0);
      }
    }
  }
  for (int y = 0; y < rest.height(); ++y) {
    for (int x = 0; x < rest.width(); ++x) ASSERT_EQ(qAlpha(rest.pixel(x, y)), 0) << x << ", " << y;
  }
}

TEST_P(GlyphSheet, GlyphsAreWholeAndSubstantial) {
  for (const stamp_row_s* row : rows) {
    for (int glyph = 0; glyph < stamp_glyph_count; ++glyph) {
      const QRect cell = cellOf(*row, glyph);
      const Extent ink = inkExtent(sheet, cell, color);
      const int least = glyph == stamp_glyph_dash || glyph == stamp_glyph_colon ? 12 : cell.height();
      EXPECT_GE(ink.pixels, least) << "glyph " << glyph << " row " << row->top;
      // Solid ink on a cell's border would have been cut off there.
      for (int y = cell.top(); y <= cell.bottom(); ++y) {
        for (int x = cell.left(); x <= cell.right(); ++x) {
          const bool onBorder = y == cell.top() || y == cell.bottom() || x == cell.left() || x == cell.right();
          if (onBorder) {
            ASSERT_LT(qAlpha(sheet.pixel(x, y)), 128) << "glyph " << glyph << " at " << x << ", " << y;
          }
        }
      }
    }
  }
}

TEST_P(GlyphSheet, DigitsAndSignsShareBaselineAndHeight) {
  for (const stamp_row_s* row : rows) {
    const Extent zero = inkExtent(sheet, cellOf(*row, 0), color);
    EXPECT_GE(zero.bottom - zero.top + 1, row->glyph_height * 7 / 10) << "the cell is not used well";
    for (const int glyph : {1, 2, 3, 4, 5, 6, 7, 8, 9, stamp_glyph_am, stamp_glyph_pm}) {
      const Extent ink = inkExtent(sheet, cellOf(*row, glyph), color);
      EXPECT_NEAR(ink.top, zero.top, 1) << "glyph " << glyph << " row " << row->top;
      EXPECT_NEAR(ink.bottom, zero.bottom, 1) << "glyph " << glyph << " row " << row->top;
    }
    const Extent dash = inkExtent(sheet, cellOf(*row, stamp_glyph_dash), color);
    EXPECT_NEAR(dash.top + dash.bottom, zero.top + zero.bottom, 4);
  }
}

TEST_P(GlyphSheet, NoTwoGlyphsLookAlike) {
  for (const stamp_row_s* row : rows) {
    for (int a = 0; a < stamp_glyph_count; ++a) {
      for (int b = a + 1; b < stamp_glyph_count; ++b) {
        if (row->width(a) != row->width(b)) continue;
        const QImage one = sheet.copy(cellOf(*row, a));
        const QImage other = sheet.copy(cellOf(*row, b));
        int different = 0;
        for (int y = 0; y < one.height(); ++y) {
          for (int x = 0; x < one.width(); ++x) {
            const QRgb p = one.pixel(x, y);
            const QRgb q = other.pixel(x, y);
            different += std::abs(qAlpha(p) - qAlpha(q)) > 100 || std::abs(lumaOf(p) - lumaOf(q)) > 50;
          }
        }
        EXPECT_GE(different, 8) << a << " and " << b << " row " << row->top;
      }
    }
  }
}

TEST_P(GlyphSheet, ReadsOnEveryBackground) {
  const QImage plate = loadPackaged(img2_path);
  const QRect cell = cellOf(stamp_large_row, 8);
  for (const QRgb ground : {0xff000000U, 0xffffffffU, 0xff808080U, sheet.pixel(cell.left() + 16, cell.top() + 5),
                            0xff0000ffU, 0xffff0000U, 0xffffff00U}) {
    QImage canvas(cell.size(), QImage::Format_ARGB32_Premultiplied);
    canvas.fill(ground | 0xff000000U);
    QPainter painter(&canvas);
    painter.drawImage(QPoint(0, 0), plate, QRect(QPoint(0, 0), cell.size()));
    painter.drawImage(QPoint(0, 0), sheet, cell);
    painter.end();
    int darkest = 255;
    int brightest = 0;
    for (int y = 0; y < canvas.height(); ++y) {
      for (int x = 0; x < canvas.width(); ++x) {
        darkest = std::min(darkest, lumaOf(canvas.pixel(x, y)));
        brightest = std::max(brightest, lumaOf(canvas.pixel(x, y)));
      }
    }
    EXPECT_GE(brightest - darkest, 75) << "on " << std::hex << ground;
  }
}

INSTANTIATE_TEST_SUITE_P(Colours, GlyphSheet, testing::Range(0, stamp_color_count));

TEST(StampPlate, CoversTheLargestStampEvenly) {
  const QImage plate = loadPackaged(img2_path);
  ASSERT_EQ(plate.format(), QImage::Format_ARGB32);
  // Month, day, year and time of day: 14 digits, 4 signs between, one space, AM or PM.
  const stamp_row_s& row = stamp_large_row;
  const int total = 14 * row.digit_width + 4 * row.symbol_width + stamp_space_advance + row.sign_width;
  EXPECT_GE(plate.width(), (total + 4) & ~3);
  EXPECT_GE(plate.height(), row.stamp_height);
  const int alpha = qAlpha(plate.pixel(0, 0));
  EXPECT_GT(alpha, 30);
  EXPECT_LT(alpha, 160);
  for (int y = 0; y < plate.height(); ++y) {
    for (int x = 0; x < plate.width(); ++x) ASSERT_EQ(plate.pixel(x, y), plate.pixel(0, 0));
  }
}

}  // namespace

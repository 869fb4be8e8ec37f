#include "assets/render/glyphs.h"

#include <QPainter>
#include <QPainterPath>
#include <QPainterPathStroker>
#include <algorithm>
#include <iterator>

#include "assets/render/font.h"
#include "engine/stamp_layout.h"

namespace assets {
namespace {

/// Ink, and the outline that sets it off from any background.
struct Inks {
  QRgb ink, outline;
};
constexpr Inks inks[stamp_color_count] = {
    {0xff000000, 0xffffffff}, {0xff1f5fff, 0xffffffff}, {0xffff8a00, 0xff1c0e00},
    {0xffe8131b, 0xffffffff}, {0xffffe11a, 0xff1c1800}, {0xffffffff, 0xff000000},
};

/// How a row is set: the digits' height and foot, whole pixels from the cell's top, and the outline's reach.
struct Setting {
  const stamp_row_s& row;
  int digitHeight, baseline;
  double outline;
};
const Setting settings[] = {{stamp_small_row, 19, 22, 1.8}, {stamp_large_row, 35, 39, 2.6}};

QString textOf(int glyph) {
  static const char* const texts[stamp_glyph_count] = {"0", "1", "2", "3", "4", "5",  "6", "7",
                                                       "8", "9", "/", "-", ":", "AM", "PM"};
  return QString::fromLatin1(texts[glyph]);
}

/// A glyph's outline in its cell: all digits and letters on one baseline and of one height, narrowed
/// where the cell is too narrow, in the middle of the cell; AM and PM stand off from the digits.
QPainterPath placed(const Setting& setting, int glyph) {
  constexpr double pixelSize = 100;
  const double scale = setting.digitHeight / textOutline("H", pixelSize).boundingRect().height();
  QPainterPath path = QTransform::fromScale(scale, scale).map(textOutline(textOf(glyph), pixelSize));
  const bool sign = glyph >= stamp_glyph_am;
  const double lead = sign ? setting.row.digit_width * 0.2 : 0;
  const double room = setting.row.width(glyph) - lead - 2 * setting.outline - 1;
  QRectF box = path.boundingRect();
  const double high = std::min(1.0, setting.digitHeight / box.height());
  const double wide = std::min(1.0, room / box.width());
  path = QTransform::fromScale(wide, high).map(path);
  box = path.boundingRect();
  double dy = setting.baseline;
  if (glyph == stamp_glyph_slash) dy -= box.bottom();
  if (glyph == stamp_glyph_dash || glyph == stamp_glyph_colon) dy -= setting.digitHeight / 2.0 + box.center().y();
  return path.translated(lead + (setting.row.width(glyph) - lead) / 2.0 - box.center().x(), dy);
}

void drawGlyph(QPainter& painter, const Setting& setting, int glyph, const Inks& colours) {
  const QRect cell(setting.row.left[glyph], setting.row.top, setting.row.width(glyph), setting.row.glyph_height);
  const QPainterPath path = placed(setting, glyph).translated(cell.topLeft());
  painter.setClipRect(cell);
  // A soft skirt under a crisp outline: the glyph reads on noise without looking cut out.
  for (const auto& [reach, opacity] : {std::pair{1.0, 0.40}, std::pair{0.62, 0.95}}) {
    QPainterPathStroker stroker;
    stroker.setWidth(2 * setting.outline * reach);
    stroker.setJoinStyle(Qt::RoundJoin);
    QColor outline = QColor::fromRgba(colours.outline);
    outline.setAlphaF(static_cast<float>(opacity));
    painter.fillPath(stroker.createStroke(path).united(path), outline);
  }
  painter.fillPath(path, QColor::fromRgba(colours.ink));
}

}  // namespace

QImage glyphSheet(int color) {
  constexpr int last = stamp_glyph_count - 1;
  const int width = stamp_large_row.left[last] + stamp_large_row.sign_width + 3;
  const int height = stamp_large_row.top + stamp_large_row.glyph_height + 2;
  QImage sheet(width, height, QImage::Format_ARGB32_Premultiplied);
  sheet.fill(Qt::transparent);
  QPainter painter(&sheet);
  painter.setRenderHint(QPainter::Antialiasing);
  for (const Setting& setting : settings) {
    for (int glyph = 0; glyph < stamp_glyph_count; ++glyph) drawGlyph(painter, setting, glyph, inks[color]);
  }
  painter.end();
  return sheet.convertToFormat(QImage::Format_ARGB32);
}

QImage stampPlate() {
  // The widest stamp is 700 pixels. A plate no wider than needed keeps the stamp as large as possible
  // where a narrow frame makes it shrink with its plate.
  QImage plate(704, stamp_large_row.stamp_height, QImage::Format_ARGB32);
  plate.fill(qRgba(122, 124, 128, 104));
  return plate;
}

}  // namespace assets

#include "platform/cascades/viewfinder_notice.h"

#include <QFontMetricsF>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace handset {
namespace {

/// In hundredths of the item's shorter side.
struct Look {
  double text, padding, radius;
  int ground_opacity;
};

constexpr Look look_of(NoticeKind kind) {
  return kind == NoticeKind::notice ? Look{4.8, 3.6, 2.4, 205} : Look{3.3, 2.2, 3.8, 150};
}

}  // namespace

QImage paint_notice(const QString& text, NoticeKind kind, QSizeF item, double scale) {
  if (text.isEmpty() || item.isEmpty() || scale <= 0) return {};
  const Look look = look_of(kind);
  const double unit = std::min(item.width(), item.height()) / 100;
  const double padding = look.padding * unit;

  QFont font;
  font.setPixelSize(std::max(1, static_cast<int>(std::lround(look.text * unit * scale))));
  font.setWeight(kind == NoticeKind::notice ? QFont::DemiBold : QFont::Normal);
  const int flags = Qt::AlignCenter | Qt::TextWordWrap;
  const QRectF room(0, 0, (item.width() * 0.9 - 2 * padding) * scale, item.height() * 0.9 * scale);
  const QSizeF line = QFontMetricsF(font).boundingRect(room, flags, text).size();
  const QSizeF whole = line + QSizeF(4 * padding, 2 * padding) * scale;

  QImage image(static_cast<int>(std::ceil(whole.width())), static_cast<int>(std::ceil(whole.height())),
               QImage::Format_ARGB32_Premultiplied);
  if (image.isNull()) return {};
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor(0, 0, 0, look.ground_opacity));
  painter.drawRoundedRect(QRectF(image.rect()), look.radius * unit * scale, look.radius * unit * scale);
  painter.setFont(font);
  painter.setPen(QColor(255, 255, 255, kind == NoticeKind::notice ? 255 : 215));
  painter.drawText(QRectF(image.rect()), flags, text);
  return image;
}

}  // namespace handset

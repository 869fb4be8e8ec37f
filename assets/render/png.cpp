#include "assets/render/png.h"

#include <zlib.h>

#include <QByteArray>
#include <QSaveFile>
#include <QtEndian>

namespace assets {
namespace {

void appendNumber(QByteArray& bytes, quint32 number) {
  const quint32 bigEndian = qToBigEndian(number);
  bytes.append(reinterpret_cast<const char*>(&bigEndian), sizeof bigEndian);
}

void appendChunk(QByteArray& file, const QByteArray& type, const QByteArray& data) {
  appendNumber(file, static_cast<quint32>(data.size()));
  const QByteArray body = type + data;
  file += body;
  appendNumber(file, static_cast<quint32>(
                         crc32(0, reinterpret_cast<const Bytef*>(body.constData()), static_cast<uInt>(body.size()))));
}

QByteArray header(QSize size) {
  QByteArray data;
  appendNumber(data, static_cast<quint32>(size.width()));
  appendNumber(data, static_cast<quint32>(size.height()));
  const char rgba8[] = {8, 6, 0, 0, 0};  // bits, colour type, compression, filtering, no interlacing
  return data.append(rgba8, sizeof rgba8);
}

/// Rows as differences from the row above, the first from zeros, each behind its filter type.
QByteArray filtered(const QImage& rgba) {
  constexpr char filterUp = 2;
  const int length = rgba.width() * 4;
  QByteArray rows;
  rows.reserve((length + qsizetype{1}) * rgba.height());
  for (int y = 0; y < rgba.height(); ++y) {
    rows.append(filterUp);
    const uchar* row = rgba.constScanLine(y);
    const uchar* above = y > 0 ? rgba.constScanLine(y - 1) : nullptr;
    for (int i = 0; i < length; ++i) rows.append(static_cast<char>(row[i] - (above ? above[i] : 0)));
  }
  return rows;
}

/// A zlib stream; empty when out of memory.
QByteArray deflated(QByteArray bytes) {
  z_stream stream{};
  constexpr int level = 4;
  if (deflateInit2(&stream, level, Z_DEFLATED, MAX_WBITS, MAX_MEM_LEVEL, Z_FILTERED) != Z_OK) return {};
  QByteArray out(static_cast<qsizetype>(deflateBound(&stream, static_cast<uLong>(bytes.size()))), Qt::Uninitialized);
  stream.next_in = reinterpret_cast<Bytef*>(bytes.data());
  stream.avail_in = static_cast<uInt>(bytes.size());
  stream.next_out = reinterpret_cast<Bytef*>(out.data());
  stream.avail_out = static_cast<uInt>(out.size());
  const int result = deflate(&stream, Z_FINISH);
  out.truncate(static_cast<qsizetype>(stream.total_out));
  deflateEnd(&stream);
  return result == Z_STREAM_END ? out : QByteArray();
}

}  // namespace

QString writePng(const QImage& image, const QString& path) {
  const QByteArray data = deflated(filtered(image.convertToFormat(QImage::Format_RGBA8888)));
  if (data.isEmpty()) return QStringLiteral("out of memory");
  QByteArray file("\x89PNG\r\n\x1a\n");
  appendChunk(file, "IHDR", header(image.size()));
  appendChunk(file, "IDAT", data);
  appendChunk(file, "IEND", {});
  QSaveFile out(path);
  if (out.open(QIODevice::WriteOnly) && out.write(file) == file.size() && out.commit()) return {};
  return out.errorString();
}

}  // namespace assets

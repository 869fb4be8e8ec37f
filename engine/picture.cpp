#include "engine/picture.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QBuffer>
#include <QByteArray>
#include <QFile>
#include <QImageReader>
#include <QtEndian>
#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

constexpr qint64 max_file_size = qint64{192} << 20;
constexpr char png_signature[] = "\x89PNG\r\n\x1a\n";
constexpr qsizetype png_signature_size = 8;

/// Asked before opening, since opening a device can do things; and again after, since the path may have changed.
/// Not blocking: opening a FIFO would otherwise wait for its writer.
/// @return a descriptor of a regular file, or -1
int open_regular(const char* path) {
  struct stat status {};
  if (::stat(path, &status) != 0 || !S_ISREG(status.st_mode)) return -1;
  const int descriptor = ::open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (descriptor == -1) return -1;
  if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_size <= max_file_size)
    return descriptor;
  ::close(descriptor);
  return -1;
}

QByteArray read_whole(const char* path) {
  const int descriptor = open_regular(path);
  if (descriptor == -1) return {};
  QFile file;
  if (!file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
    ::close(descriptor);
    return {};
  }
  return file.readAll();
}

/// The decoder for a file, by its first bytes. Only ones that look at nothing but the pixels of this file: an SVG,
/// for one, can name other files, and unpack without bound.
const char* format_of(const QByteArray& bytes) {
  if (bytes.startsWith(png_signature)) return "png";
  if (bytes.startsWith("\xff\xd8\xff")) return "jpeg";
  if (bytes.startsWith("BM")) return "bmp";
  if (bytes.startsWith("GIF8")) return "gif";
  return nullptr;
}

/// A PNG file with those chunks only that make its picture. Compressed texts, which may follow each other by the
/// hundred and unpack to megabytes each, are left out.
QByteArray picture_chunks(const QByteArray& png) {
  constexpr qsizetype around = 12;  // a chunk's length, type and checksum
  QByteArray kept = png.first(png_signature_size);
  for (qsizetype at = png_signature_size; at + around <= png.size();) {
    const qsizetype size = around + static_cast<qsizetype>(qFromBigEndian<quint32>(png.constData() + at));
    const QByteArrayView type(png.constData() + at + 4, 4);
    const bool wanted = type == "IHDR" || type == "PLTE" || type == "tRNS" || type == "IDAT" || type == "IEND";
    if (wanted) kept += QByteArrayView(png).sliced(at, std::min(size, png.size() - at));
    if (type == "IEND") break;
    at += size;
  }
  return kept;
}

bool bounded(QSize size) {
  return !size.isEmpty() && qint64{size.width()} * size.height() <= picture_max_pixels;
}

/// `from` source pixels become `to`.
struct ratio {
  std::int64_t from, to;

  /// The source pixel under the middle of a target pixel.
  int source(std::int64_t target, int size) const {
    return static_cast<int>(std::min<std::int64_t>((2 * target + 1) * from / (2 * to), size - 1));
  }
};

QImage sampled(const QImage& image, QSize size, ratio across, ratio down) {
  if (size.isEmpty()) return {};
  std::vector<int> columns(static_cast<std::size_t>(size.width()));
  for (int x = 0; x < size.width(); ++x) columns[static_cast<std::size_t>(x)] = across.source(x, image.width());
  QImage target(size, QImage::Format_ARGB32);
  for (int y = 0; y < target.height(); ++y) {
    const auto* from = reinterpret_cast<const QRgb*>(image.constScanLine(down.source(y, image.height())));
    auto* to = reinterpret_cast<QRgb*>(target.scanLine(y));
    for (const int column : columns) *to++ = from[column];
  }
  return target;
}

}  // namespace

QImage read_picture(const char* path) {
  QByteArray bytes = read_whole(path);
  const char* const format = format_of(bytes);
  if (format == nullptr) return {};
  if (qstrcmp(format, "png") == 0) bytes = picture_chunks(bytes);
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::ReadOnly);
  QImageReader reader(&buffer, format);
  reader.setAutoDetectImageFormat(false);
  if (!bounded(reader.size())) return {};
  return reader.read();
}

QImage scaled_to(const QImage& image, int width, int height) {
  if (image.width() == width && image.height() == height) return image;
  return sampled(image, {width, height}, {image.width(), width}, {image.height(), height});
}

QImage scaled_to_width(const QImage& image, int width, int max_rows) {
  const ratio both = {image.width(), width};
  const std::int64_t rows = (std::int64_t{2} * image.height() * width / image.width() + 1) / 2;  // rounded
  return sampled(image, {width, static_cast<int>(std::min<std::int64_t>(rows, max_rows))}, both, both);
}

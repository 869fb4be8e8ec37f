#include "platform/picture/read_picture.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QBuffer>
#include <QByteArray>
#include <QFile>
#include <QImageReader>
#include <QtEndian>
#include <algorithm>

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

}  // namespace

QImage read_picture(const char* path, Upright upright) {
  QByteArray bytes = read_whole(path);
  const char* const format = format_of(bytes);
  if (format == nullptr) return {};
  if (qstrcmp(format, "png") == 0) bytes = picture_chunks(bytes);
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::ReadOnly);
  QImageReader reader(&buffer, format);
  reader.setAutoDetectImageFormat(false);
  reader.setAutoTransform(upright == Upright::yes);
  if (!bounded(reader.size())) return {};
  return reader.read();
}

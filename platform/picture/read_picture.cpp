#include "platform/picture/read_picture.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QByteArray>
#include <QFile>
#include <QIODevice>
#include <QImageReader>
#include <QtEndian>
#include <algorithm>
#include <cstring>
#include <ctime>

namespace {

constexpr qint64 max_file_size = qint64{192} << 20;
/// Of processor time. Less than read_picture() promises: a decoder goes on for a while with what it has.
constexpr double decode_seconds = 1.5;
/// Of a progressive JPEG. Cameras and editors write about ten; each goes through the whole picture.
constexpr int most_scans = 100;
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

/// Scans of a JPEG file, at most one more than most_scans.
int count_scans(const QByteArray& jpeg) {
  int scans = 0;
  for (qsizetype at = 0; scans <= most_scans && (at = jpeg.indexOf("\xff\xda", at)) != -1; at += 2) ++scans;
  return scans;
}

double processor_seconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// A file's bytes for a decoder, which fills up what it misses with gray: it is watched for that. Once it has taken
/// its time, there is nothing more for it. On the decoding thread.
class WatchedBytes : public QIODevice {
 public:
  explicit WatchedBytes(const QByteArray& bytes) : bytes_(bytes) { open(ReadOnly | Unbuffered); }
  qint64 size() const override { return bytes_.size(); }
  /// Whether the decoder has had all that it asked for.
  bool sufficed() const { return !missed_; }

 protected:
  qint64 readData(char* to, qint64 most) override {
    const qint64 left = bytes_.size() - pos();
    if (most > 0 && (left <= 0 || processor_seconds() > end_)) missed_ = true;
    if (missed_) return 0;
    const qint64 count = std::min(left, most);
    std::memcpy(to, bytes_.constData() + pos(), static_cast<std::size_t>(count));
    return count;
  }
  qint64 writeData(const char*, qint64) override { return -1; }

 private:
  const QByteArray& bytes_;
  const double end_ = processor_seconds() + decode_seconds;
  bool missed_ = false;
};

bool bounded(QSize size) {
  return !size.isEmpty() && qint64{size.width()} * size.height() <= picture_max_pixels;
}

}  // namespace

QImage read_picture(const char* path, Upright upright) {
  QByteArray bytes = read_whole(path);
  const char* const format = format_of(bytes);
  if (format == nullptr) return {};
  if (qstrcmp(format, "png") == 0) bytes = picture_chunks(bytes);
  if (qstrcmp(format, "jpeg") == 0 && count_scans(bytes) > most_scans) return {};
  WatchedBytes watched(bytes);
  QImageReader reader(&watched, format);
  reader.setAutoDetectImageFormat(false);
  reader.setAutoTransform(upright == Upright::yes);
  if (!bounded(reader.size())) return {};
  QImage image = reader.read();
  return watched.sufficed() ? image : QImage();
}

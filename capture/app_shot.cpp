#include "capture/app_shot.h"

#include <QDir>
#include <QImage>
#include <QSaveFile>
#include <algorithm>
#include <cstring>

#include "platform/cascades/application.h"

namespace {

constexpr int shot_size[2] = {768, 1280};

/// A pixmap that a window can be read into, and its context. What cannot be had is null.
class Pixmap {
 public:
  Pixmap() {
    screen_create_context(&context_, 0);
    screen_create_pixmap(&pixmap_, context_);
    const int usage = SCREEN_USAGE_READ | SCREEN_USAGE_NATIVE;
    screen_set_pixmap_property_iv(pixmap_, SCREEN_PROPERTY_USAGE, &usage);
    const int format = SCREEN_FORMAT_RGBA8888;
    screen_set_pixmap_property_iv(pixmap_, SCREEN_PROPERTY_FORMAT, &format);
    screen_set_pixmap_property_iv(pixmap_, SCREEN_PROPERTY_BUFFER_SIZE, shot_size);
    screen_create_pixmap_buffer(pixmap_);
    screen_get_pixmap_property_pv(pixmap_, SCREEN_PROPERTY_RENDER_BUFFERS, reinterpret_cast<void**>(&buffer_));
    read_pointer();
    screen_get_buffer_property_iv(buffer_, SCREEN_PROPERTY_STRIDE, &stride_);
  }
  Pixmap(const Pixmap&) = delete;
  Pixmap& operator=(const Pixmap&) = delete;
  ~Pixmap() {
    screen_destroy_pixmap(pixmap_);
    screen_destroy_context(context_);
  }

  void read(screen_window_t window) {
    screen_read_window(window, buffer_, 0, nullptr, 0);
    read_pointer();
  }
  unsigned char* pixels() const { return pixels_; }
  int stride() const { return stride_; }

 private:
  void read_pointer() {
    screen_get_buffer_property_pv(buffer_, SCREEN_PROPERTY_POINTER, reinterpret_cast<void**>(&pixels_));
  }

  screen_context_t context_ = nullptr;
  screen_pixmap_t pixmap_ = nullptr;
  screen_buffer_t buffer_ = nullptr;
  unsigned char* pixels_ = nullptr;
  int stride_ = 0;
};

}  // namespace

const char* const AppShot::mDefaultFolder = "/shared/camera/";

AppShot::AppShot(QObject* parent) : QObject(parent), mSaveFolder(QLatin1String(mDefaultFolder)) {}

void AppShot::setSaveFolder(QString saveFolder) {
  if (saveFolder == mSaveFolder) return;
  mSaveFolder = saveFolder;
  Q_EMIT saveFolderChanged(saveFolder);
  const QDir folder(QDir::currentPath() + saveFolder);
  if (!folder.exists() && !folder.mkpath(QStringLiteral(".")))
    qWarning("AppShot: Failed to create save directory, screen shots might not be saved.");
}

QString AppShot::captureScreen(QString fileName) {
  const screen_window_t window = bb::cascades::Application::instance()->mainWindow()->handle();
  Pixmap pixmap;
  pixmap.read(window);
  const QString path = QDir::currentPath() + mSaveFolder + fileName;
  if (!saveImageBufferToFile(path, QSize(shot_size[0], shot_size[1]), pixmap.pixels(), pixmap.stride()))
    qDebug("AppShot: Failed to save file.");
  return path;
}

bool AppShot::saveImageBufferToFile(QString path, QSize size, unsigned char* pixels, int stride) {
  QImage image(size, QImage::Format_RGB32);
  if (image.isNull() || pixels == nullptr || stride <= 0) return false;
  const int row_bytes = std::min(stride, size.width() * 4);
  // Only a stride shorter than a row leaves any of this.
  if (row_bytes < size.width() * 4) image.fill(Qt::black);
  for (int y = 0; y < size.height(); ++y) {
    std::memcpy(image.scanLine(y), pixels + static_cast<std::ptrdiff_t>(y) * stride,
                static_cast<std::size_t>(row_bytes));
  }
  QSaveFile file(path);
  return file.open(QIODevice::WriteOnly) && image.save(&file, "PNG") && file.commit();
}

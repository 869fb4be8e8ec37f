#include "platform/cascades/picker_card.h"

#include <QFile>
#include <QPainter>
#include <QQmlEngine>
#include <QQuickImageProvider>

#include "platform/cascades/application.h"
#include "platform/cascades/stage.h"
#include "platform/picture/read_picture.h"

namespace handset {

namespace {

constexpr char provider_name[] = "handset-files";
constexpr char folder_icon[] = "folder";
constexpr int icon_side = 128;

QImage paint_folder() {
  QImage image(icon_side, icon_side, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor("#3fa9e0"));
  painter.drawRoundedRect(QRectF(10, 24, 52, 40), 8, 8);
  painter.setBrush(QColor("#63c9ff"));
  painter.drawRoundedRect(QRectF(10, 40, 108, 68), 8, 8);
  return image;
}

/// Thumbnails of files, decoded on the image loader's thread.
class FileIcons : public QQuickImageProvider {
 public:
  FileIcons() : QQuickImageProvider(Image, ForceAsynchronousImageLoading) {}

  static QString url(const QString& id) {
    return QStringLiteral("image://%1/%2").arg(QLatin1String(provider_name), id);
  }
  /// Escapes a path for use in a URL.
  static QString url_of(const QFileInfo& file) {
    if (file.isDir()) return url(QLatin1String(folder_icon));
    const auto how = QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals;
    return url(QStringLiteral("of/") + QString::fromLatin1(file.absoluteFilePath().toUtf8().toBase64(how)));
  }

  QImage requestImage(const QString& id, QSize* size, const QSize&) override {
    QImage image = id == QLatin1String(folder_icon) ? paint_folder() : small_picture(id.section(QLatin1Char('/'), 1));
    *size = image.size();
    return image;
  }

 private:
  static QImage small_picture(const QString& encoded) {
    const auto how = QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals;
    const QString path = QString::fromUtf8(QByteArray::fromBase64(encoded.toLatin1(), how));
    const QImage image = read_picture(QFile::encodeName(path).constData(), Upright::yes);
    if (!image.isNull()) return image.scaled(icon_side, icon_side, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QImage nothing(1, 1, QImage::Format_ARGB32_Premultiplied);  // a null image would print a warning
    nothing.fill(Qt::transparent);
    return nothing;
  }
};

}  // namespace

PickerCard::PickerCard(const QString& title, const QString& folder, const QStringList& patterns, QObject* parent)
    : QObject(parent), title_(title), patterns_(patterns) {
  QQmlEngine* engine = bb::cascades::Application::instance()->engine();
  const QString provider = QLatin1String(provider_name);
  if (!engine->imageProvider(provider)) engine->addImageProvider(provider, new FileIcons);  // the engine owns it
  enter(folder);
  Stage* stage = Stage::instance();
  stage->open_card(this);
  connect(stage, &Stage::cardChanged, this, [this, stage] {
    if (stage->card() != this) Q_EMIT closed();
  });
}

PickerCard::~PickerCard() {
  Stage::instance()->disconnect(this);
  Stage::instance()->close_card(this);
}

QUrl PickerCard::document() const {
  return QUrl(QStringLiteral("qrc:/bb/cascades/picker/FilePickerCard.qml"));
}

/// @param from the entry to start at, if it is in this folder
void PickerCard::enter(const QString& folder, const QString& from) {
  folder_ = QDir(folder);
  const QDir::SortFlags by_name = QDir::Name | QDir::IgnoreCase | QDir::LocaleAware;
  const bool has_parent = !folder_.isRoot();
  entries_ = folder_.entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, by_name);
  entries_ += folder_.entryInfoList(patterns_, QDir::Files | QDir::Readable, by_name);
  rows_.clear();
  first_ = entries_.isEmpty() ? (has_parent ? 0 : -1) : (has_parent ? 1 : 0);
  if (has_parent) {
    QString parent = QFileInfo(QDir::cleanPath(folder + QStringLiteral("/.."))).fileName();
    entries_.prepend(QFileInfo(QDir::cleanPath(folder_.absoluteFilePath(QStringLiteral("..")))));
    if (parent.isEmpty()) parent = QDir::rootPath();
    rows_ << QVariantMap{{"name", QStringLiteral("\u2039  ") + parent}, {"icon", QString()}};
  }
  for (qsizetype i = rows_.size(); i < entries_.size(); ++i) {
    const QFileInfo& entry = entries_[i];
    if (entry.absoluteFilePath() == from) first_ = static_cast<int>(i);
    rows_ << QVariantMap{{"name", entry.fileName()}, {"icon", FileIcons::url_of(entry)}};
  }
  Q_EMIT folderChanged();
}

void PickerCard::choose(int row) {
  if (row < 0 || row >= entries_.size()) return;
  const QFileInfo entry = entries_[row];
  if (row == 0 && !folder_.isRoot()) {
    goUp();
  } else if (entry.isDir()) {
    enter(entry.absoluteFilePath());
  } else {
    Q_EMIT picked(entry.absoluteFilePath());
  }
}

void PickerCard::goUp() {
  if (!folder_.isRoot()) enter(QDir::cleanPath(folder_.absoluteFilePath(QStringLiteral(".."))), folder());
}

void PickerCard::close() {
  Q_EMIT closed();
}

}  // namespace handset

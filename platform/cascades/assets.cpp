#include "platform/cascades/assets.h"

#include <QDir>
#include <QMutex>
#include <QStringList>

#include "platform/device/sandbox.h"

namespace bb::cascades {

namespace {

QMutex mutex;         // guards package; held during the file-system lookup
QString package_dir;  // empty: not looked up yet

QString find_package() {
  const std::string installed = find_package_dir();
  // A program that is not next to its package uses the sandbox's link to it, in the working directory.
  return installed.empty() ? QDir::current().absoluteFilePath(QStringLiteral("app"))
                           : QString::fromStdString(installed);
}

QString assets_dir() {
  const QMutexLocker lock(&mutex);
  if (package_dir.isEmpty()) package_dir = find_package();
  return package_dir + QStringLiteral("/native/assets");
}

/// Removes "." and ".."; none leads above the first folder.
QString confined(const QString& path) {
  QStringList folders;
  for (const QString& folder : path.split(u'/', Qt::SkipEmptyParts)) {
    if (folder == QLatin1String("..")) {
      if (!folders.isEmpty()) folders.removeLast();
    } else if (folder != QLatin1String(".")) {
      folders.append(folder);
    }
  }
  return folders.join(u'/');
}

}  // namespace

QUrl resolve_asset(const QUrl& url) {
  if (url.scheme() != QLatin1String("asset") || !url.host().isEmpty()) return url;
  return QUrl::fromLocalFile(assets_dir() + u'/' + confined(url.path(QUrl::FullyDecoded)));
}

void set_package_dir(const QString& dir) {
  const QMutexLocker lock(&mutex);
  package_dir = dir;
}

}  // namespace bb::cascades

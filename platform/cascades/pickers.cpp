#include "platform/cascades/pickers.h"

#include <QDir>
#include <QFileInfo>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QSettings>
#include <QUrl>
#include <algorithm>
#include <utility>

#include "platform/cascades/application.h"
#include "platform/cascades/picker_card.h"
#include "platform/device/sandbox.h"

namespace bb::cascades::pickers {

namespace {

constexpr char folder_key[] = "pictures/folder";

/// Not among the application's preferences: the picker's last folder belongs to the handset.
QSettings memory() {
  return QSettings(QString::fromStdString(user_dirs().state) + QStringLiteral("/morvane/picker.ini"),
                   QSettings::IniFormat);
}

QString first_folder() {
  const QString remembered = memory().value(QLatin1String(folder_key)).toString();
  if (!remembered.isEmpty() && QFileInfo(remembered).isDir()) return remembered;
  const QString pictures = QString::fromStdString(user_dirs().pictures);
  return QFileInfo(pictures).isDir() ? pictures : QDir::rootPath();
}

QStringList patterns_of(FileType::Type type) {
  if (type != FileType::Picture) return {QStringLiteral("*")};
  return {QStringLiteral("*.png"), QStringLiteral("*.jpg"), QStringLiteral("*.jpeg"), QStringLiteral("*.bmp"),
          QStringLiteral("*.gif")};
}

/// In the form dialogs take, some of which are case-sensitive.
QStringList name_filters(FileType::Type type) {
  if (type != FileType::Picture) return {QStringLiteral("All files (*)")};
  QStringList patterns = patterns_of(type);
  for (const QString& pattern : patterns_of(type)) patterns << pattern.toUpper();
  return {QStringLiteral("Pictures (%1)").arg(patterns.join(QLatin1Char(' ')))};
}

/// Qt's own dialog, which it puts in the window if it has no desktop dialog; null otherwise.
QObject* find_substitute(const QQuickWindow* window) {
  const QObjectList objects = window->findChildren<QObject*>();
  const auto found = std::find_if(objects.begin(), objects.end(),
                                  [](const QObject* object) { return object->inherits("QQuickFileDialogImpl"); });
  return found == objects.end() ? nullptr : *found;
}

}  // namespace

FilePicker::FilePicker(QObject* parent) : QObject(parent) {}

FilePicker::~FilePicker() {
  drop();
}

void FilePicker::setTitle(const QString& title) {
  if (title_ == title) return;
  title_ = title;
  Q_EMIT titleChanged();
}

void FilePicker::open() {
  if (open_) return;
  open_ = true;
  if (mode_ == FilePickerMode::Saver || mode_ == FilePickerMode::SaverMultiple) {
    QMetaObject::invokeMethod(this, &FilePicker::reject, Qt::QueuedConnection);
  } else if (!open_native()) {
    open_card();
  }
}

/// @return false if the desktop has no dialog
bool FilePicker::open_native() {
  QQuickWindow* const window = Application::instance()->desktopWindow();
  QQmlComponent component(Application::instance()->engine(),
                          QUrl(QStringLiteral("qrc:/bb/cascades/picker/FilePickerDialog.qml")));
  QObject* const dialog = component.createWithInitialProperties({
      {QStringLiteral("title"), title_},
      {QStringLiteral("several"), mode_ == FilePickerMode::PickerMultiple},
      {QStringLiteral("nameFilters"), name_filters(type_)},
      {QStringLiteral("currentFolder"), QUrl::fromLocalFile(first_folder())},
      {QStringLiteral("parentWindow"), QVariant::fromValue<QWindow*>(window)},
  });
  if (!dialog) return false;  // the module is not installed
  QMetaObject::invokeMethod(dialog, "open");
  // Qt offers no other way to tell. Its own dialog has its own colors and sizes and shows no pictures.
  if (QObject* const substitute = find_substitute(window)) {
    QMetaObject::invokeMethod(dialog, "close");
    delete dialog;
    delete substitute;
    return false;
  }
  dialog->setParent(this);
  shown_ = dialog;
  connect(dialog, SIGNAL(accepted()), this, SLOT(accept()));
  connect(dialog, SIGNAL(rejected()), this, SLOT(reject()));
  return true;
}

void FilePicker::open_card() {
  auto* const card = new handset::PickerCard(title_, first_folder(), patterns_of(type_), this);
  shown_ = card;
  // Queued, since the caller may be an item of the card's document; by then another card may have replaced it.
  const auto finish = [this, card](const QStringList& files) {
    if (shown_ == card) end(files);
  };
  connect(
      card, &handset::PickerCard::picked, this, [finish](const QString& path) { finish({path}); },
      Qt::QueuedConnection);
  connect(
      card, &handset::PickerCard::closed, this, [finish] { finish({}); }, Qt::QueuedConnection);
}

void FilePicker::accept() {
  QStringList files;
  const auto urls = shown_->property("selectedFiles").value<QList<QUrl>>();
  for (const QUrl& url : urls) {
    if (url.isLocalFile()) files << url.toLocalFile();
  }
  end(files);
}

void FilePicker::reject() {
  end({});
}

/// @param files empty if canceled
void FilePicker::end(const QStringList& files) {
  if (!std::exchange(open_, false)) return;
  drop();
  if (files.isEmpty()) {
    Q_EMIT canceled();
    return;
  }
  memory().setValue(QLatin1String(folder_key), QFileInfo(files.constFirst()).absolutePath());
  Q_EMIT fileSelected(files);
}

void FilePicker::drop() {
  if (!shown_) return;
  shown_->disconnect(this);
  if (auto* card = qobject_cast<handset::PickerCard*>(shown_)) {
    delete card;
    return;
  }
  // The dialog may be emitting a signal.
  QMetaObject::invokeMethod(shown_, "close");
  shown_->setParent(nullptr);
  shown_->deleteLater();
  shown_ = nullptr;
}

}  // namespace bb::cascades::pickers

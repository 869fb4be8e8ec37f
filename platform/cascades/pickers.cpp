#include "platform/cascades/pickers.h"

#include <QColor>
#include <QDir>
#include <QFileInfo>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQmlProperty>
#include <QQuickWindow>
#include <QSettings>
#include <QUrl>
#include <algorithm>
#include <cstdio>
#include <utility>

#include "platform/cascades/application.h"
#include "platform/device/sandbox.h"

namespace bb::cascades::pickers {

namespace {

constexpr char folder_key[] = "pictures/folder";

/// Not among the application's preferences: it is the handset's business where its picker was last.
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

/// Some dialogs tell capitals from small letters.
QStringList name_filters(FileType::Type type) {
  if (type != FileType::Picture) return {QStringLiteral("All files (*)")};
  QStringList patterns;
  for (const char* ending : {"png", "jpg", "jpeg", "bmp", "gif"}) {
    const QString pattern = QStringLiteral("*.") + QLatin1String(ending);
    patterns << pattern << pattern.toUpper();
  }
  return {QStringLiteral("Pictures (%1)").arg(patterns.join(QLatin1Char(' ')))};
}

/// Makes Qt's own dialog, which lies in the desktop window's pixels, as large as the window and as dark as the rest.
void dress(QObject* popup, const QQuickWindow* window) {
  constexpr std::pair<const char*, const char*> colours[] = {
      {"window", "#101216"},     {"light", "#1a1d23"},      {"base", "#101216"},      {"button", "#272b33"},
      {"mid", "#414957"},        {"midlight", "#323843"},   {"dark", "#4a5361"},      {"text", "#f3f5f8"},
      {"windowText", "#f3f5f8"}, {"buttonText", "#f3f5f8"}, {"highlight", "#2b6a8f"}, {"highlightedText", "#ffffff"},
  };
  for (const auto& [role, colour] : colours)
    QQmlProperty::write(popup, QStringLiteral("palette.") + QLatin1String(role), QColor(QLatin1String(colour)));
  QQmlProperty::write(popup, QStringLiteral("font.pixelSize"), 17);
  popup->setProperty("width", std::min(window->width(), 900));
  popup->setProperty("height", window->height());
}

/// The part of Qt's own dialog that is seen; null where the desktop's own is shown.
QObject* find_popup(const QQuickWindow* window) {
  const QObjectList objects = window->findChildren<QObject*>();
  const auto found = std::find_if(objects.begin(), objects.end(),
                                  [](const QObject* object) { return object->inherits("QQuickFileDialogImpl"); });
  return found == objects.end() ? nullptr : *found;
}

}  // namespace

FilePicker::FilePicker(QObject* parent) : QObject(parent) {}

FilePicker::~FilePicker() {
  delete dialog_.data();
}

void FilePicker::setTitle(const QString& title) {
  if (title_ == title) return;
  title_ = title;
  Q_EMIT titleChanged();
}

void FilePicker::open() {
  if (open_) return;
  open_ = true;
  const bool saver = mode_ == FilePickerMode::Saver || mode_ == FilePickerMode::SaverMultiple;
  dialog_ = saver ? nullptr : make_dialog();
  if (!dialog_) {
    QMetaObject::invokeMethod(this, &FilePicker::reject, Qt::QueuedConnection);
    return;
  }
  QMetaObject::invokeMethod(dialog_, "open");
  const QQuickWindow* window = Application::instance()->desktopWindow();
  QObject* popup = find_popup(window);
  if (!popup) return;
  const auto fit = [popup, window] { dress(popup, window); };
  fit();
  connect(window, &QWindow::widthChanged, popup, fit);
  connect(window, &QWindow::heightChanged, popup, fit);
}

/// @return null, after one line on the error stream, when there is no such dialog
QObject* FilePicker::make_dialog() {
  QQmlComponent component(Application::instance()->engine(),
                          QUrl(QStringLiteral("qrc:/bb/cascades/picker/FilePickerDialog.qml")));
  QObject* dialog = component.createWithInitialProperties({
      {QStringLiteral("title"), title_},
      {QStringLiteral("several"), mode_ == FilePickerMode::PickerMultiple},
      {QStringLiteral("nameFilters"), name_filters(type_)},
      {QStringLiteral("currentFolder"), QUrl::fromLocalFile(first_folder())},
  });
  if (!dialog) {
    const QString reason = component.errors().isEmpty() ? QString() : component.errors().constFirst().description();
    std::fprintf(stderr, "cannot open the file dialog: %s\n", qUtf8Printable(reason));
    return nullptr;
  }
  dialog->setParent(this);
  dialog->setProperty("parentWindow", QVariant::fromValue<QWindow*>(Application::instance()->desktopWindow()));
  connect(dialog, SIGNAL(accepted()), this, SLOT(accept()));
  connect(dialog, SIGNAL(rejected()), this, SLOT(reject()));
  return dialog;
}

void FilePicker::accept() {
  QStringList files;
  const auto urls = dialog_->property("selectedFiles").value<QList<QUrl>>();
  for (const QUrl& url : urls) {
    if (url.isLocalFile()) files << url.toLocalFile();
  }
  end(files);
}

void FilePicker::reject() {
  end({});
}

/// @param files  none: canceled
void FilePicker::end(const QStringList& files) {
  if (!std::exchange(open_, false)) return;
  // The dialog is still busy with telling.
  if (dialog_) dialog_->deleteLater();
  dialog_ = nullptr;
  if (files.isEmpty()) {
    Q_EMIT canceled();
    return;
  }
  memory().setValue(QLatin1String(folder_key), QFileInfo(files.constFirst()).absolutePath());
  Q_EMIT fileSelected(files);
}

}  // namespace bb::cascades::pickers

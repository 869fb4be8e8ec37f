#include "platform/cascades/qml_document.h"

#include <QtQml/QQmlComponent>
#include <QtQml/QQmlEngine>
#include <cstdio>

#include "platform/cascades/application.h"
#include "platform/cascades/assets.h"

namespace bb::cascades {

namespace {

void print_errors(const QQmlComponent& component) {
  for (const QQmlError& error : component.errors()) {
    const QString line = error.toString().simplified();
    std::fputs((line + u'\n').toUtf8().constData(), stderr);
  }
}

}  // namespace

QmlDocument* QmlDocument::create(const QString& url, QObject* parent) {
  auto* document = new QmlDocument(parent);
  Application* application = Application::instance();
  if (!application) {
    std::fputs(qUtf8Printable(url + QStringLiteral(": no application to load it for\n")), stderr);
    return document;
  }
  QQmlEngine* engine = application->engine();
  document->context_ = new QQmlContext(engine->rootContext(), document);
  document->component_ = std::make_unique<QQmlComponent>(engine, resolve_asset(QUrl(url)));
  print_errors(*document->component_);
  return document;
}

QmlDocument::QmlDocument(QObject* parent) : QObject(parent) {}

QmlDocument::~QmlDocument() {
  delete_roots();
}

void QmlDocument::delete_roots() {
  for (const QPointer<QObject>& root : std::exchange(roots_, {})) delete root.data();
}

bool QmlDocument::hasErrors() const {
  return !component_ || component_->isError();
}

void QmlDocument::setContextProperty(const QString& name, QObject* value) {
  if (!context_) return;
  // Before the context is notified, which would evaluate every binding once more, without the value.
  if (value) connect(value, &QObject::destroyed, this, &QmlDocument::delete_roots);
  context_->setContextProperty(name, value);
}

QObject* QmlDocument::createRoot() {
  if (hasErrors()) return nullptr;
  QObject* root = component_->create(context_);
  if (!root) {
    print_errors(*component_);
    return nullptr;
  }
  QQmlEngine::setObjectOwnership(root, QQmlEngine::CppOwnership);
  roots_.append(root);
  return root;
}

}  // namespace bb::cascades

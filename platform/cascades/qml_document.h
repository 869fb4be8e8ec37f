#pragma once

#include <QObject>
#include <QPointer>
#include <QUrl>
#include <QtQml/QQmlContext>
#include <memory>

class QQmlComponent;

namespace bb::cascades {

/// A QML document of the package. Loading errors go to stderr, one line each.
class QmlDocument : public QObject {
  Q_OBJECT

 public:
  /// Loads a document such as "asset:///Settings.qml". Never null.
  static QmlDocument* create(const QString& url, QObject* parent = nullptr);
  /// Destroys the remaining root objects, so that nothing outlives its context.
  ~QmlDocument() override;

  bool hasErrors() const;
  /// Root objects still alive when the value is destroyed are destroyed with it.
  void setContextProperty(const QString& name, QObject* value);

  /// @return the root object, owned by the caller; null if the document cannot be created
  QObject* createRoot();
  /// The root object if it is a T; an object of another kind is deleted.
  template <typename T>
  T* createRootObject() {
    QObject* root = createRoot();
    T* wanted = qobject_cast<T*>(root);
    if (root && !wanted) delete root;
    return wanted;
  }

 private:
  explicit QmlDocument(QObject* parent);
  void delete_roots();

  std::unique_ptr<QQmlComponent> component_;
  QQmlContext* context_ = nullptr;
  QList<QPointer<QObject>> roots_;
};

}  // namespace bb::cascades

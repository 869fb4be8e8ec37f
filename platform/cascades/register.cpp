#include "platform/cascades/register.h"

#include <QQmlAbstractUrlInterceptor>
#include <QQmlEngine>
#include <QtQml>

#include "platform/cascades/animation.h"
#include "platform/cascades/assets.h"
#include "platform/cascades/container.h"
#include "platform/cascades/controls.h"
#include "platform/cascades/foreign_window_control.h"
#include "platform/cascades/list_view.h"
#include "platform/cascades/menu.h"
#include "platform/cascades/orientation.h"
#include "platform/cascades/pages.h"
#include "platform/cascades/pill.h"
#include "platform/cascades/shield.h"

// At file scope: the macro declares a function in the global namespace.
static void init_resources() {
  Q_INIT_RESOURCE(cascades);
}

namespace bb::cascades {

namespace {

constexpr char looks_module[] = "bb.cascades";
constexpr char state_module[] = "bb.cascades.state";

constexpr const char* looks[] = {"Button", "CheckBox", "Container", "DropDown",       "ImageButton", "ImageView",
                                 "Label",  "ListView", "Page",      "NavigationPane", "ScrollView",  "Slider"};

class AssetInterceptor : public QQmlAbstractUrlInterceptor {
 public:
  QUrl intercept(const QUrl& url, DataType) override { return resolve_asset(url); }
};

template <typename T>
void register_state(const char* name) {
  qmlRegisterType<T>(state_module, 1, 0, name);
}

void register_states() {
  register_state<VisualNode>("VisualNode");
  register_state<Control>("Control");
  register_state<Container>("Container");
  register_state<Label>("Label");
  register_state<ImageView>("ImageView");
  register_state<ImageButton>("ImageButton");
  register_state<CheckBox>("CheckBox");
  register_state<DropDown>("DropDown");
  register_state<ListView>("ListView");
  register_state<ForeignWindowControl>("ForeignWindowControl");
  register_state<AbstractPane>("AbstractPane");
  register_state<Page>("Page");
  register_state<NavigationPane>("NavigationPane");
  register_state<GroupDataModel>("GroupDataModel");
  register_state<ActionItem>("ActionItem");
  register_state<Menu>("Menu");
  register_state<Shield>("Shield");
  const QString abstract = QStringLiteral("an interface");
  qmlRegisterUncreatableType<DataModel>(state_module, 1, 0, "DataModel", abstract);
  qmlRegisterUncreatableType<AbstractActionItem>(state_module, 1, 0, "AbstractActionItem", abstract);
}

template <typename Enumeration>
void register_enumeration(const char* name) {
  qmlRegisterUncreatableMetaObject(Enumeration::staticMetaObject, looks_module, 1, 0, name,
                                   QStringLiteral("an enumeration"));
}

void register_looks() {
  const QString base = QStringLiteral("qrc:/bb/cascades/%1.qml");
  for (const char* name : looks) qmlRegisterType(QUrl(base.arg(QLatin1String(name))), looks_module, 1, 0, name);
  qmlRegisterSingletonType(QUrl(base.arg(QStringLiteral("Theme"))), looks_module, 1, 0, "Theme");
  qmlRegisterType<Pill>(looks_module, 1, 0, "Pill");
  qmlRegisterType<Sheet>(looks_module, 1, 0, "Sheet");
  qmlRegisterType<TranslateTransition>(looks_module, 1, 0, "TranslateTransition");
  register_enumeration<UIOrientation>("UIOrientation");
  register_enumeration<DisplayDirection>("DisplayDirection");
  qmlRegisterSingletonType<OrientationSupport>(looks_module, 1, 0, "OrientationSupport",
                                               [](QQmlEngine*, QJSEngine*) -> QObject* {
                                                 QObject* support = OrientationSupport::instance();
                                                 QJSEngine::setObjectOwnership(support, QJSEngine::CppOwnership);
                                                 return support;
                                               });
}

}  // namespace

void register_cascades(QQmlEngine& engine) {
  static const bool registered = [] {
    init_resources();
    register_states();
    register_looks();
    return true;
  }();
  Q_UNUSED(registered)
  static AssetInterceptor interceptor;
  engine.addUrlInterceptor(&interceptor);
}

}  // namespace bb::cascades

#pragma once

class QQmlEngine;

namespace bb::cascades {

/// Registers the QML modules with this process and prepares `engine` for documents:
///
/// - `bb.cascades` 1.0: the controls as documents use them, which are the looks qrc:/bb/cascades/NAME.qml; Sheet,
///   TranslateTransition; the singletons Theme and OrientationSupport; the enumerations.
/// - `bb.cascades.state` 1.0: the C++ classes, each the root element of the look of the same name.
///
/// asset:/// URLs resolve to the package in every document of the engine.
void register_cascades(QQmlEngine& engine);

}  // namespace bb::cascades

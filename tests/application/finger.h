#pragma once

// A user in front of the window: finds what is drawn, taps it, types.

#include <QPointF>
#include <QQuickItem>
#include <QString>
#include <vector>

namespace finger {

/// Whatever can be tapped: shown, enabled, with its middle within the window.
std::vector<QQuickItem*> targets();
/// The topmost shown button with this text; null when there is none.
QQuickItem* button(const QString& text);

/// Presses and lets go of the left button, in the window's coordinates or in an item's middle.
void tap(QPointF point);
void tap(QQuickItem* item);
/// Turns the wheel with Ctrl held: a pinch.
void pinch(QPointF point, int steps);
void type(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

}  // namespace finger

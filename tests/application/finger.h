#pragma once

// A user in front of the window: finds what is drawn, taps it, types.

#include <QPointF>
#include <QQuickItem>
#include <QString>
#include <vector>

namespace finger {

/// Whether an item can be tapped: shown, enabled, with its center inside the window.
std::vector<QQuickItem*> targets();
/// The topmost shown button with this text; null if none.
QQuickItem* button(const QString& text);

/// Presses and releases the left button, at a window position or in an item's center.
void tap(QPointF point);
void tap(QQuickItem* item);
/// Turns the wheel with Ctrl held: a pinch.
void pinch(QPointF point, int steps);
void type(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

}  // namespace finger

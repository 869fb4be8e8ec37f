import QtQuick
import bb.cascades 1.0

// Shows which control has the keyboard. Drawn outside the control that it stands in.
Rectangle {
    required property bool active
    property real gap: 3

    anchors.fill: parent
    anchors.margins: -gap - Theme.focusWidth
    color: "transparent"
    border.color: Theme.focus
    border.width: Theme.focusWidth
    radius: Theme.radius + gap + Theme.focusWidth
    visible: active
}

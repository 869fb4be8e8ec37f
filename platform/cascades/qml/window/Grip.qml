import QtQuick
import bb.cascades 1.0

// The top edge: pulling it down, or clicking the handle in its middle, asks for what is behind.
Item {
    id: grip

    signal pulled()

    height: 24

    MouseArea {
        id: edge

        property real from: 0

        anchors.fill: parent
        preventStealing: true
        onPressed: mouse => from = mouse.y
        onPositionChanged: mouse => {
            if (pressed && mouse.y - from > 40)
                grip.pulled();
        }
    }

    MouseArea {
        id: handle

        property real from: 0

        width: 200
        height: 36
        anchors.horizontalCenter: parent.horizontalCenter
        hoverEnabled: true
        preventStealing: true
        cursorShape: Qt.PointingHandCursor
        Accessible.role: Accessible.Button
        Accessible.name: qsTr("Open the application menu")
        Accessible.onPressAction: grip.pulled()
        onPressed: mouse => from = mouse.y
        onPositionChanged: mouse => {
            if (pressed && mouse.y - from > 40)
                grip.pulled();
        }
        onClicked: grip.pulled()
    }

    Rectangle {
        anchors.horizontalCenter: parent.horizontalCenter
        y: 6
        width: 120
        height: 8
        radius: height / 2
        color: handle.containsMouse ? Theme.accent : Theme.text
        opacity: handle.containsMouse ? 1 : 0.55
        border.color: "#66000000"
        border.width: 1
    }
}

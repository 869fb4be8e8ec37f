import QtQuick
import bb.cascades 1.0

// A text near the bottom edge that takes no input. It fades with the text that it had.
Item {
    id: frame

    required property var toast
    property string body: ""

    onToastChanged: if (toast) body = toast.body

    Connections {
        target: frame.toast
        function onBodyChanged() { frame.body = frame.toast.body; }
    }

    Rectangle {
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        anchors.bottomMargin: Math.round(parent.height * 0.2)
        width: shown.width + 2 * Theme.spacingLarge
        height: shown.height + 2 * Theme.spacing
        radius: Theme.radius
        color: Theme.surfaceRaised
        border.color: Theme.outline
        border.width: 2
        opacity: frame.toast ? 1 : 0
        visible: opacity > 0
        Accessible.role: Accessible.AlertMessage
        Accessible.name: shown.text

        Behavior on opacity {
            NumberAnimation { duration: Theme.duration }
        }

        Text {
            id: shown
            anchors.centerIn: parent
            width: Math.min(implicitWidth, frame.width - 4 * Theme.spacingLarge)
            text: frame.body
            textFormat: Text.PlainText
            color: Theme.text
            font.pixelSize: Theme.font
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignHCenter
            Accessible.ignored: true
        }
    }
}

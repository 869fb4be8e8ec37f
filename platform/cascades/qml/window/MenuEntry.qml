import QtQuick
import QtQuick.Templates as T
import ".."
import bb.cascades 1.0

// One action of the application menu: its picture above its title.
T.AbstractButton {
    id: entry

    required property var source
    required property bool current

    signal chosen()

    height: 172
    enabled: source.enabled
    opacity: enabled ? 1 : 0.4
    focusPolicy: Qt.NoFocus
    hoverEnabled: true
    text: source.title
    padding: Theme.spacingSmall
    Accessible.role: Accessible.MenuItem
    Accessible.name: text
    Accessible.focused: current
    onClicked: chosen()

    background: Rectangle {
        radius: Theme.radius
        color: entry.down ? Theme.surfacePressed : entry.hovered ? Theme.surfaceHovered : "transparent"

        FocusRing {
            active: entry.current
            gap: -Theme.focusWidth
        }
    }

    contentItem: Item {
        Image {
            anchors.horizontalCenter: parent.horizontalCenter
            y: Theme.spacingSmall
            width: 80
            height: 80
            source: entry.source.imageSource
            fillMode: Image.PreserveAspectFit
            mipmap: true
        }

        Text {
            anchors.bottom: parent.bottom
            anchors.bottomMargin: Theme.spacingSmall
            width: parent.width
            text: entry.text
            textFormat: Text.PlainText
            color: Theme.text
            font.pixelSize: Theme.font
            horizontalAlignment: Text.AlignHCenter
            elide: Text.ElideRight
            Accessible.ignored: true
        }
    }
}

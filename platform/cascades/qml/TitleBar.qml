import QtQuick
import QtQuick.Templates as T
import bb.cascades 1.0

// The upper edge of a page: the way back, and where one is.
Rectangle {
    id: bar

    required property string title

    signal back()

    height: Theme.touch + Theme.spacing
    color: Theme.surface

    T.AbstractButton {
        id: button

        x: Theme.spacingSmall
        anchors.verticalCenter: parent.verticalCenter
        width: Theme.touch
        height: Theme.touch
        focusPolicy: Qt.TabFocus
        hoverEnabled: true
        Accessible.role: Accessible.Button
        Accessible.name: qsTr("Back")
        Keys.onReturnPressed: clicked()
        Keys.onEnterPressed: clicked()
        onClicked: bar.back()

        background: Rectangle {
            radius: width / 2
            color: button.down ? Theme.surfacePressed : button.hovered ? Theme.surfaceHovered : "transparent"

            FocusRing {
                active: button.visualFocus
                gap: -Theme.focusWidth
                radius: width / 2
            }
        }

        contentItem: Item {
            Chevron {
                anchors.centerIn: parent
                rotation: 90
                scale: 1.3
                color: Theme.text
            }
        }
    }

    Text {
        anchors.left: button.right
        anchors.leftMargin: Theme.spacing
        anchors.right: parent.right
        anchors.rightMargin: Theme.spacing
        anchors.verticalCenter: parent.verticalCenter
        text: bar.title
        textFormat: Text.PlainText
        color: Theme.text
        font.pixelSize: Theme.fontLarge
        font.bold: true
        elide: Text.ElideRight
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
}

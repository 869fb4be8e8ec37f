import QtQuick
import bb.cascades 1.0

// A panel over the picture, as high as what is in it. Its title, and a way to close it.
Item {
    id: panel

    required property string title
    default property alias content: column.data

    signal closed()

    implicitHeight: column.height + 2 * Theme.spacing

    Rectangle {
        anchors.fill: parent
        radius: Theme.radius
        color: Theme.overlay

        // Touching between the sliders is not a tap on the viewfinder.
        MouseArea {
            anchors.fill: parent
            hoverEnabled: true
            onWheel: wheel => wheel.accepted = true
        }
    }

    Column {
        id: column
        x: Theme.spacingLarge
        y: Theme.spacing
        width: parent.width - 2 * x
        spacing: Theme.spacingSmall

        Item {
            width: parent.width
            height: Theme.touch

            Label {
                anchors.left: parent.left
                anchors.right: done.left
                height: parent.height
                text: panel.title
                font.bold: true
            }

            Button {
                id: done
                anchors.right: parent.right
                anchors.rightMargin: -Theme.spacing
                text: qsTr("Done")
                flat: true
                onClicked: panel.closed()
            }
        }
    }
}

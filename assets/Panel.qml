import QtQuick
import bb.cascades 1.0

// A panel over the picture, as high as what is in it. Its title, and a way to close it.
Item {
    id: panel

    required property string title
    default property alias content: column.data
    // Beside the title.
    property alias sample: sample.data

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
            height: 72

            Label {
                id: heading
                width: Math.min(implicitWidth, done.x - Theme.spacing)
                height: parent.height
                text: panel.title
                font.bold: true
            }

            Item {
                id: sample
                anchors.left: heading.right
                anchors.right: done.left
                anchors.margins: Theme.spacing
                height: parent.height
            }

            Button {
                id: done
                anchors.right: parent.right
                anchors.rightMargin: -Theme.spacing
                height: parent.height
                text: qsTr("Done")
                flat: true
                onClicked: panel.closed()
            }
        }
    }
}

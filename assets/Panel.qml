import QtQuick
import bb.cascades 1.0

// A panel over the picture, as high as its content, with a title and a close button.
Item {
    id: panel

    required property string title
    default property alias content: column.data
    // Next to the title.
    property alias sample: sample.data

    signal closed()

    implicitHeight: column.height + 2 * Theme.spacing

    Rectangle {
        anchors.fill: parent
        radius: Theme.radius
        color: Theme.overlay

        // A touch between the sliders is not a tap on the viewfinder.
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

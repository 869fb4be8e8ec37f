import QtQuick
import bb.cascades 1.0

// Settings that belong together, under a heading.
Item {
    id: group

    required property string title
    default property alias content: column.data

    implicitHeight: heading.height + Theme.spacingSmall + frame.height
    width: parent ? parent.width : 0
    height: implicitHeight

    Label {
        id: heading
        x: Theme.spacing
        width: parent.width - 2 * x
        text: group.title
        color: Theme.accent
        font.bold: true
        Accessible.role: Accessible.Heading
    }

    Rectangle {
        id: frame
        anchors.top: heading.bottom
        anchors.topMargin: Theme.spacingSmall
        width: parent.width
        height: column.height + 2 * Theme.spacing
        radius: Theme.radius
        color: Theme.surface

        Column {
            id: column
            x: Theme.spacing
            y: Theme.spacing
            width: parent.width - 2 * x
            spacing: Theme.spacing * 1.5
        }
    }
}

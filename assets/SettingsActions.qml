import QtQuick
import bb.cascades 1.0

// The lower edge of the settings sheet: leave everything as it was, or save.
Rectangle {
    id: bar

    signal cancelClicked()
    signal saveClicked()

    height: Theme.touch + 2 * Theme.spacing
    color: Theme.surface

    Row {
        anchors.centerIn: parent
        spacing: Theme.spacing

        Button {
            width: Math.min(320, (bar.width - 3 * Theme.spacing) / 2)
            text: qsTr("Cancel")
            onClicked: bar.cancelClicked()
        }

        Button {
            width: Math.min(320, (bar.width - 3 * Theme.spacing) / 2)
            primary: true
            text: qsTr("Save")
            onClicked: bar.saveClicked()
        }
    }
}

import QtQuick
import bb.cascades 1.0

// The upper edge of the settings sheet: leave it as it was, or save.
Rectangle {
    id: bar

    required property string title

    signal cancelClicked()
    signal saveClicked()

    height: Theme.touch + 2 * Theme.spacing
    color: Theme.surface

    Button {
        id: cancel
        x: Theme.spacing
        anchors.verticalCenter: parent.verticalCenter
        text: qsTr("Cancel")
        onClicked: bar.cancelClicked()
    }

    Label {
        anchors.left: cancel.right
        anchors.right: save.left
        height: parent.height
        text: bar.title
        font.pixelSize: Theme.fontLarge
        font.bold: true
        horizontalAlignment: Text.AlignHCenter
    }

    Button {
        id: save
        anchors.right: parent.right
        anchors.rightMargin: Theme.spacing
        anchors.verticalCenter: parent.verticalCenter
        primary: true
        text: qsTr("Save")
        onClicked: bar.saveClicked()
    }
}

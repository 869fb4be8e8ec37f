import QtQuick
import bb.cascades 1.0

// Says that the camera is the screen, and leads back to the lens.
Container {
    id: recorder

    required property bool recording

    signal stopClicked()

    implicitHeight: Theme.touch + 2 * Theme.spacingSmall
    objectName: "screenrecorderContainer"
    visible: false

    Rectangle {
        anchors.fill: parent
        radius: Theme.radius
        color: Theme.overlay
    }

    ImageButton {
        id: stop
        objectName: "screenrecord_img"
        x: Theme.spacingSmall
        anchors.verticalCenter: parent.verticalCenter
        accessibleName: qsTr("End the screen recording, back to the camera")
        defaultImageSource: "asset:///images/ic_stop_normal.png"
        pressedImageSource: "asset:///images/ic_stop_selected.png"
        onClicked: recorder.stopClicked()
    }

    Label {
        anchors.left: stop.right
        anchors.leftMargin: Theme.spacing
        anchors.right: parent.right
        anchors.rightMargin: Theme.spacing
        anchors.verticalCenter: parent.verticalCenter
        text: recorder.recording ? qsTr("Recording the screen") : qsTr("The screen, ready to record")
    }
}

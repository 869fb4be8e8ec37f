import QtQuick
import bb.cascades 1.0

// Says that the camera is the screen, and leads back to the lens.
Container {
    id: recorder

    required property bool recording
    property bool active: false
    // The first picture of the screen is still to come.
    property bool awaited: false

    signal stopClicked()

    function begin() {
        active = true;
        awaited = true;
        visible = true;
    }

    function end() {
        active = false;
        awaited = false;
        visible = false;
    }

    // A camera that starts after the screen's is a lens again.
    function cameraStarted() {
        if (!awaited)
            end();
        awaited = false;
    }

    objectName: "screenrecorderContainer"
    width: stop.width + (name.visible ? name.implicitWidth + Theme.spacingSmall + Theme.spacingLarge : 0)
    height: Theme.touch
    visible: false

    Rectangle {
        anchors.fill: parent
        radius: height / 2
        color: Theme.disc
    }

    ImageButton {
        id: stop
        objectName: "screenrecord_img"
        accessibleName: qsTr("End the screen recording, back to the camera")
        defaultImageSource: "asset:///images/ic_stop_normal.png"
        pressedImageSource: "asset:///images/ic_stop_selected.png"
        onClicked: recorder.stopClicked()
    }

    // The clock of the recording needs the room.
    Label {
        id: name
        anchors.left: stop.right
        anchors.leftMargin: Theme.spacingSmall
        height: parent.height
        visible: !recorder.recording
        text: qsTr("Screen recording")
    }
}

import QtQuick
import bb.cascades 1.0

// Shows that the camera is the screen, and leads back to the lens.
Container {
    id: recorder

    required property bool recording
    property bool active: false
    // The first picture of the screen has not arrived yet.
    property bool awaited: false

    signal stopClicked()
    // There is no picture of the screen, nor any other.
    signal failed()

    function begin() {
        active = true;
        awaited = true;
        visible = true;
        patience.stop();
        refusal.stop();
    }

    // Opening the screen has finished: its first picture is there, or there will be none.
    function opened() {
        if (awaited)
            patience.start();
    }

    function end() {
        active = false;
        awaited = false;
        visible = false;
        patience.stop();
    }

    // A camera that starts after the screen's is a lens again.
    function cameraStarted() {
        if (active && !awaited)
            end();
        awaited = false;
    }

    Timer {
        id: patience
        interval: 1000
        onTriggered: {
            if (!recorder.awaited)
                return;
            recorder.end();
            recorder.failed();
            recorder.visible = true;
            refusal.start();
        }
    }

    // While it runs, this shows what has become of the screen.
    Timer {
        id: refusal
        interval: 5000
        onTriggered: recorder.end()
    }

    objectName: "screenrecorderContainer"
    width: name.visible ? name.x + name.implicitWidth + Theme.spacingLarge : stop.width
    height: Theme.touch
    visible: false

    Pill {
        anchors.fill: parent
        color: Theme.disc
    }

    ImageButton {
        id: stop
        visible: recorder.active
        objectName: "screenrecord_img"
        accessibleName: qsTr("End the screen recording, back to the camera")
        defaultImageSource: "asset:///images/ic_stop_normal.png"
        pressedImageSource: "asset:///images/ic_stop_selected.png"
        onClicked: recorder.stopClicked()
    }

    // The recording's clock needs the room.
    Label {
        id: name
        x: (stop.visible ? stop.width : Theme.spacingSmall) + Theme.spacingSmall
        height: parent.height
        visible: !recorder.recording
        text: recorder.active ? qsTr("Screen recording") : qsTr("The screen cannot be filmed")
    }
}

import QtQuick
import bb.cascades 1.0

// What the camera sees, and what can lie over it: the private cover, a cover while a film is played, and on top of both
// the area that feels taps and pinches. The program puts the viewfinder's window into the camera container.
Item {
    id: viewfinder

    readonly property bool covered: cover.visible

    // A camera has posted its first picture since it was opened.
    signal attached()

    Rectangle {
        anchors.fill: parent
        color: "black"
    }

    Container {
        id: camera

        // The control that the program adds.
        property var window: null

        objectName: "cameraContainer"
        anchors.fill: parent
        onChildrenChanged: {
            for (let i = 0; i < children.length; ++i) {
                if (children[i] !== contentItem)
                    window = children[i];
            }
        }
    }

    Connections {
        target: camera.window
        function onWindowAttached() { viewfinder.attached(); }
    }

    Container {
        id: cover
        objectName: "privatebackground"
        anchors.fill: parent
        visible: false

        Rectangle {
            anchors.fill: parent
            color: Theme.cover
        }

        Label {
            anchors.centerIn: parent
            width: parent.width - 2 * Theme.spacingLarge
            text: qsTr("Private mode")
            color: Theme.textDim
            horizontalAlignment: Text.AlignHCenter
        }
    }

    Container {
        objectName: "videoContainer"
        anchors.fill: parent
        visible: false

        Rectangle {
            anchors.fill: parent
            color: "black"
        }

        Label {
            anchors.centerIn: parent
            text: qsTr("Playing")
            color: Theme.textDim
        }
    }

    Container {
        objectName: "mainContainer"
        anchors.fill: parent
    }
}

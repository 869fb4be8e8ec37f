import QtQuick
import bb.cascades 1.0

// What the camera sees, and what can cover it: the private cover, a cover while a film is played, and on top the area
// that senses taps and pinches. The program puts the viewfinder's window into the camera container.
Item {
    id: viewfinder

    readonly property bool covered: cover.visible
    // Where the controls along the edges end.
    property int freeWidth: width
    property int freeHeight: height

    // The camera has posted its first picture since it was opened.
    signal attached()

    Rectangle {
        anchors.fill: parent
        color: "black"
    }

    Container {
        id: camera

        // The control added by the program.
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

    // What the recording lacks: at the lower edge, where there are no faces.
    Pill {
        id: status
        objectName: "statusPill"

        readonly property string line: camera.window ? camera.window.status : ""

        visible: line !== ""
        x: Math.round((viewfinder.freeWidth - width) / 2)
        y: viewfinder.freeHeight - height - Theme.spacing
        width: statusText.implicitWidth + 2 * Theme.spacingLarge
        height: 64
        color: Theme.overlay

        Label {
            id: statusText
            anchors.centerIn: parent
            text: status.line
            font.pixelSize: Theme.fontSmall
        }
    }

    Container {
        objectName: "mainContainer"
        anchors.fill: parent
    }
}

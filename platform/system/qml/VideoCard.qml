import QtQuick
import bb.cascades 1.0
import bb.cascades.state 1.0 as State
import "qrc:/bb/cascades"

// A film, under its name and over its controls, which go away while it is being watched. Space plays and pauses, the
// arrows go five seconds back and forth.
FocusScope {
    id: root

    required property var card

    readonly property int step: 5000
    readonly property bool watched: card.playing && card.message === ""
    property bool idle: false

    focus: true

    function wake() {
        idle = false;
        rest.restart();
    }

    Keys.onPressed: event => {
        wake();
        if (event.modifiers !== Qt.NoModifier && event.modifiers !== Qt.KeypadModifier)
            return;
        event.accepted = true;
        if (event.key === Qt.Key_Space)
            card.togglePlaying();
        else if (event.key === Qt.Key_Left)
            card.seek(card.position - step);
        else if (event.key === Qt.Key_Right)
            card.seek(card.position + step);
        else
            event.accepted = false;
    }
    onWatchedChanged: wake()

    Timer {
        id: rest
        interval: 3000
        running: true
        onTriggered: root.idle = true
    }

    State.ForeignWindowControl {
        anchors.fill: parent
        windowId: root.card.windowId
        Accessible.role: Accessible.Graphic
        Accessible.name: root.card.title
    }

    MouseArea {
        anchors.fill: parent
        hoverEnabled: true
        onPositionChanged: root.wake()
        onClicked: {
            root.wake();
            root.card.togglePlaying();
        }
    }

    CardMessage {
        text: root.card.message
    }

    Item {
        id: frame
        objectName: "videoFrame"
        anchors.fill: parent
        opacity: root.idle && root.watched ? 0 : 1
        visible: opacity > 0

        Behavior on opacity {
            NumberAnimation { duration: Theme.duration }
        }

        TitleBar {
            width: parent.width
            title: root.card.title
            onBack: root.card.close()
        }

        VideoControls {
            anchors.bottom: parent.bottom
            width: parent.width
            visible: root.card.message === ""
            card: root.card
            step: root.step
            onUsed: root.wake()
        }
    }
}

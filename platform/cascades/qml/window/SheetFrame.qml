import QtQuick
import ".."
import bb.cascades 1.0
import bb.cascades.state 1.0 as State

// Slides the open sheet in over everything, under a title bar with the way back.
FocusScope {
    id: frame

    required property var sheet
    // What is shown, also while the frame slides away.
    property Item content: null
    property string title: ""
    // From 0, out of sight, to 1, in its place.
    property real shown: sheet ? 1 : 0

    function take(item) {
        if (content === item)
            return;
        if (content)
            content.parent = null;
        content = item;
        if (!item)
            return;
        item.parent = place;
        item.width = Qt.binding(() => place.width);
        item.height = Qt.binding(() => place.height);
        title = Qt.binding(() => item.title ?? "");
    }

    visible: shown > 0
    onSheetChanged: if (sheet) take(sheet.content)
    onShownChanged: if (shown === 0 && !sheet) take(null)

    Behavior on shown {
        NumberAnimation { duration: Theme.duration; easing.type: Easing.OutCubic }
    }

    Connections {
        target: frame.sheet
        function onContentChanged() { frame.take(frame.sheet.content); }
    }

    Rectangle {
        id: panel

        width: parent.width
        height: parent.height
        y: Math.round(frame.height * (1 - frame.shown))
        color: Theme.background

        State.Shield {
            anchors.fill: parent
        }

        TitleBar {
            id: bar
            width: parent.width
            title: frame.title
            onBack: if (frame.sheet) frame.sheet.backRequested()
        }

        FocusScope {
            id: place
            anchors.fill: parent
            anchors.topMargin: bar.height
            enabled: frame.sheet !== null
            focus: true
        }
    }
}

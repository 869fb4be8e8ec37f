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

    onSheetChanged: if (sheet) take(sheet.content)
    visible: panel.y < height

    Connections {
        target: frame.sheet
        function onContentChanged() { frame.take(frame.sheet.content); }
    }

    Rectangle {
        id: panel

        width: parent.width
        height: parent.height
        y: frame.sheet ? 0 : frame.height
        color: Theme.background

        Behavior on y {
            NumberAnimation { duration: Theme.duration; easing.type: Easing.OutCubic }
        }
        onYChanged: if (y >= frame.height && !frame.sheet) frame.take(null)

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

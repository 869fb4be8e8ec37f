import QtQuick
import QtQuick.Templates as T
import bb.cascades 1.0

// A column that scrolls where it does not fit: by finger, wheel, and the keyboard's arrows and pages. A control in it
// that gets the keyboard comes into view.
FocusScope {
    id: area

    default property alias content: column.data
    // Wider columns are hard to read.
    property real mostWidth: 900

    function scrollBy(distance) {
        const last = Math.max(0, flickable.contentHeight - flickable.height);
        flickable.contentY = Math.max(0, Math.min(last, flickable.contentY + distance));
    }

    function reveal(item) {
        let inside = item;
        while (inside && inside !== column)
            inside = inside.parent;
        if (!inside)
            return;
        const top = item.mapToItem(column, 0, 0).y + column.y - 2 * Theme.spacing;
        const bottom = top + item.height + 4 * Theme.spacing;
        if (top < flickable.contentY)
            scrollBy(top - flickable.contentY);
        else if (bottom > flickable.contentY + flickable.height)
            scrollBy(bottom - flickable.contentY - flickable.height);
    }

    readonly property Item focused: Window.activeFocusItem
    onFocusedChanged: reveal(focused)

    Keys.onUpPressed: scrollBy(-80)
    Keys.onDownPressed: scrollBy(80)
    Keys.onPressed: event => {
        const page = flickable.height * 0.85;
        const by = ({
            [Qt.Key_PageUp]: -page, [Qt.Key_PageDown]: page, [Qt.Key_Space]: page,
            [Qt.Key_Home]: -flickable.contentHeight, [Qt.Key_End]: flickable.contentHeight
        })[event.key];
        event.accepted = by !== undefined;
        if (event.accepted)
            scrollBy(by);
    }

    Flickable {
        id: flickable
        anchors.fill: parent
        contentHeight: column.height + 2 * column.y
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        T.ScrollBar.vertical: ScrollBar {}

        Behavior on contentY {
            enabled: !flickable.moving
            NumberAnimation { duration: Theme.durationFast }
        }

        Column {
            id: column
            y: Theme.spacingLarge
            width: Math.min(area.mostWidth, flickable.width - 2 * Theme.spacingLarge)
            x: (flickable.width - width) / 2
            spacing: Theme.spacingLarge
        }
    }
}

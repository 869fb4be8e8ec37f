import QtQuick
import QtQuick.Templates as T
import bb.cascades 1.0

// Rows of one height that scroll, for finger, wheel and keyboard: arrows, pages and both ends move, Enter and Space
// choose.
ListView {
    id: rows

    property real rowHeight: Theme.touch

    signal chosen(int row)

    function moveTo(row) {
        currentIndex = Math.max(0, Math.min(count - 1, row));
    }

    function takeKey(key) {
        const page = Math.max(1, Math.floor(height / rowHeight) - 1);
        switch (key) {
        case Qt.Key_Home: moveTo(0); break;
        case Qt.Key_End: moveTo(count - 1); break;
        case Qt.Key_PageUp: moveTo(currentIndex - page); break;
        case Qt.Key_PageDown: moveTo(currentIndex + page); break;
        case Qt.Key_Return:
        case Qt.Key_Enter:
        case Qt.Key_Space:
            if (currentIndex >= 0)
                chosen(currentIndex);
            break;
        default: return false;
        }
        return true;
    }

    clip: true
    boundsBehavior: Flickable.StopAtBounds
    keyNavigationEnabled: true
    keyNavigationWraps: true
    highlightMoveDuration: Theme.durationFast
    Accessible.role: Accessible.List
    Keys.onPressed: event => event.accepted = takeKey(event.key)

    // Its look. Whoever uses it says what stands in it.
    component Row: Button {
        id: row

        required property int index
        readonly property bool current: rows.activeFocus && rows.currentIndex === index

        flat: true
        width: ListView.view ? ListView.view.width : 0
        height: rows.rowHeight
        focusPolicy: Qt.NoFocus
        Accessible.role: Accessible.ListItem
        onClicked: rows.chosen(index)

        FocusRing {
            active: row.current
            gap: -Theme.focusWidth
        }
    }

    T.ScrollBar.vertical: ScrollBar {}
}

import QtQuick
import QtQuick as Quick
import QtQuick.Templates as T
import bb.cascades 1.0

// Rows of one height, each a ListRow, that scroll, for finger, wheel and keyboard: arrows, pages and both ends move,
// Enter and Space choose.
Quick.ListView {
    id: rows

    property real rowHeight: Theme.touch
    readonly property real rowWidth: width - (bar.visible ? bar.width : 0)

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

    T.ScrollBar.vertical: ScrollBar {
        id: bar
    }
}

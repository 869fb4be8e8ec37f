import QtQuick
import QtQuick as Quick
import bb.cascades 1.0
import bb.cascades.state 1.0 as State

// The choices of a drop-down, over the page: below the field where there is room, above it where there is more, and
// always inside its parent. Goes away by itself.
FocusScope {
    id: popup

    required property Item field
    required property var options
    required property int currentIndex

    readonly property rect place: {
        const corner = field.mapToItem(popup, 0, 0);
        const margin = Theme.spacing;
        const wanted = options.length * Theme.touch + 2 * Theme.spacingSmall;
        const below = height - margin - corner.y - field.height - Theme.spacingSmall;
        const above = corner.y - Theme.spacingSmall - margin;
        const size = Math.min(wanted, height - 2 * margin);
        const top = below >= size ? corner.y + field.height + Theme.spacingSmall
                  : above >= size ? corner.y - Theme.spacingSmall - size
                  : Math.max(margin, Math.min(corner.y, height - margin - size));
        return Qt.rect(corner.x, top, field.width, size);
    }

    signal chosen(int row)
    signal closed()

    function takeFocus() {
        list.forceActiveFocus(Qt.TabFocusReason);
    }

    function choose(row) {
        if (row >= 0)
            chosen(row);
        close();
    }

    function close() {
        closed();
        destroy();
    }

    anchors.fill: parent
    Keys.onEscapePressed: close()

    Rectangle {
        anchors.fill: parent
        color: Theme.scrim

        State.Shield {
            anchors.fill: parent
            onTapped: popup.close()
        }
    }

    Rectangle {
        x: popup.place.x
        y: popup.place.y
        width: popup.place.width
        height: popup.place.height
        radius: Theme.radius
        color: Theme.surfaceRaised

        Rows {
            id: list

            anchors.fill: parent
            anchors.margins: Theme.spacingSmall
            focus: true
            model: popup.options
            Component.onCompleted: {
                currentIndex = Math.max(0, popup.currentIndex);
                positionViewAtIndex(currentIndex, Quick.ListView.Contain);
            }
            onChosen: row => popup.choose(row)
            Keys.onTabPressed: popup.close()

            delegate: ListRow {
                required property string modelData

                text: modelData
                marked: index === popup.currentIndex
            }
        }
    }
}

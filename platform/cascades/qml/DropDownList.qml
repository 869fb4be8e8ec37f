import QtQuick
import QtQuick as Quick
import QtQuick.Templates as T
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

        Quick.ListView {
            id: list

            anchors.fill: parent
            anchors.margins: Theme.spacingSmall
            clip: true
            focus: true
            model: popup.options
            boundsBehavior: Flickable.StopAtBounds
            keyNavigationEnabled: true
            keyNavigationWraps: true
            highlightMoveDuration: 0
            Component.onCompleted: {
                currentIndex = Math.max(0, popup.currentIndex);
                positionViewAtIndex(currentIndex, Quick.ListView.Contain);
            }
            Keys.onReturnPressed: popup.choose(currentIndex)
            Keys.onEnterPressed: popup.choose(currentIndex)
            Keys.onSpacePressed: popup.choose(currentIndex)
            Keys.onTabPressed: popup.close()
            Accessible.role: Accessible.List

            delegate: Button {
                id: row

                required property int index
                required property string modelData

                flat: true
                width: list.width
                height: Theme.touch
                focusPolicy: Qt.NoFocus
                text: modelData
                marked: index === popup.currentIndex
                Accessible.role: Accessible.ListItem
                onClicked: popup.choose(index)

                FocusRing {
                    active: list.activeFocus && row.Quick.ListView.isCurrentItem
                    gap: -Theme.focusWidth
                }
            }

            T.ScrollBar.vertical: ScrollBar {}
        }
    }
}

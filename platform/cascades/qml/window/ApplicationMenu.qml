import QtQuick
import bb.cascades 1.0
import bb.cascades.state 1.0 as State

// A bar with the application's actions that comes down from the top edge. A grip at the edge shows where it is; pulling
// at the edge or clicking the grip opens it.
FocusScope {
    id: menu

    required property var actions
    required property bool open
    // Nothing is over the scene that the menu would be under.
    required property bool available
    // From 0, out of sight, to 1, in its place.
    property real shown: open ? 1 : 0

    signal openRequested()
    signal closeRequested()

    // The next action in a direction that can be chosen; -1 for none.
    function next(from, step) {
        for (let i = from + step; i >= 0 && i < actions.length; i += step) {
            if (actions[i].enabled)
                return i;
        }
        return -1;
    }

    function move(step) {
        const to = next(row.currentIndex, step);
        if (to >= 0)
            row.currentIndex = to;
    }

    function choose(action) {
        if (!open || !action || !action.enabled)
            return;
        closeRequested();
        action.triggered();
    }

    onOpenChanged: if (open) row.currentIndex = next(-1, 1)
    onActionsChanged: if (open && actions.length === 0) closeRequested()
    Keys.onLeftPressed: move(-1)
    Keys.onRightPressed: move(1)
    Keys.onTabPressed: move(1)
    Keys.onBacktabPressed: move(-1)
    Keys.onReturnPressed: choose(actions[row.currentIndex])
    Keys.onEnterPressed: choose(actions[row.currentIndex])
    Keys.onSpacePressed: choose(actions[row.currentIndex])
    Keys.onDownPressed: closeRequested()

    Behavior on shown {
        NumberAnimation { duration: Theme.duration; easing.type: Easing.OutCubic }
    }

    Grip {
        objectName: "menuGrip"
        anchors.left: parent.left
        anchors.right: parent.right
        visible: menu.available && !menu.open && menu.actions.length > 0
        onPulled: menu.openRequested()
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.scrim
        opacity: menu.shown
        visible: opacity > 0

        State.Shield {
            anchors.fill: parent
            enabled: menu.open
            onTapped: menu.closeRequested()
        }
    }

    Rectangle {
        id: bar

        width: parent.width
        height: row.height + 2 * Theme.spacing
        y: Math.round(height * (menu.shown - 1))
        visible: menu.shown > 0
        color: Theme.surface
        Accessible.role: Accessible.MenuBar
        Accessible.name: qsTr("Application menu")

        State.Shield {
            anchors.fill: parent
            enabled: menu.open
        }

        Row {
            id: row

            property int currentIndex: -1
            readonly property int share: Math.min(260, (bar.width - 2 * Theme.spacing) / Math.max(1, menu.actions.length))

            anchors.horizontalCenter: parent.horizontalCenter
            y: Theme.spacing

            Repeater {
                model: menu.actions

                MenuEntry {
                    required property int index
                    required property var modelData

                    width: row.share
                    source: modelData
                    current: menu.activeFocus && row.currentIndex === index
                    onChosen: menu.choose(modelData)
                }
            }
        }
    }
}

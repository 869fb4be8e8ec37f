import QtQuick
import bb.cascades 1.0
import bb.cascades.state 1.0 as State

// Fills what it is in. On a navigation pane every page but the first has its title and the way back above its contents.
State.Page {
    id: page

    default property alias content: area.data
    // Over all of the page's controls, for lists that open.
    readonly property alias popupLayer: layer
    readonly property State.NavigationPane pane: parent as State.NavigationPane
    readonly property bool onTop: pane === null || pane.topPage === page
    readonly property bool pushed: pane !== null && pane.count > 1 && pane.topPage === page
    property bool titled: false

    // Has the keyboard when no control has it. Keys that no control takes come to the page.
    property Item home: resting

    // Takes it from this page's controls and from other pages, but not from a sheet or a dialog over them.
    function takeFocus() {
        home.focus = true;
        scope.focus = true;
    }

    width: parent ? parent.width : 0
    height: parent ? parent.height : 0
    // What lies under another page must not be reached by Tab or by a click that the upper page leaves alone.
    enabled: onTop
    onOnTopChanged: if (onTop) takeFocus()
    onPushedChanged: {
        if (!pushed)
            return;
        titled = true;
        takeFocus();
    }
    Component.onCompleted: home.focus = true

    Accessible.role: Accessible.Pane
    Accessible.name: title

    Rectangle {
        anchors.fill: parent
        color: Theme.background

        State.Shield {
            anchors.fill: parent
        }
    }

    FocusScope {
        id: scope
        anchors.fill: parent
        focus: true

        TitleBar {
            id: bar
            anchors.left: parent.left
            anchors.right: parent.right
            title: page.title
            visible: page.titled
            onBack: page.pane.pop()
        }

        FocusScope {
            id: area
            anchors.fill: parent
            anchors.topMargin: bar.visible ? bar.height : 0
            focus: true

            Item {
                id: resting
                focus: true
            }
        }
    }

    Item {
        id: layer
        anchors.fill: parent
        z: 1
    }
}

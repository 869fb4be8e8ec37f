import QtQuick
import QtQuick as Quick
import QtQuick.Templates as T
import bb.cascades 1.0
import bb.cascades.state 1.0 as State

// Rows with an icon and a title, for finger, wheel and keyboard.
State.ListView {
    id: view

    property real rowHeight: Theme.touch
    // The title of the row that is the current choice; empty for none.
    property string markedTitle: ""
    readonly property real contentHeight: list.count * rowHeight

    // Shows the first row, and makes it the one that the keyboard is at.
    function toTop() {
        list.positionViewAtBeginning();
        list.currentIndex = list.count > 0 ? 0 : -1;
    }

    function takeFocus() {
        list.forceActiveFocus(Qt.TabFocusReason);
    }

    function trigger(row) {
        view.select([row]);
        view.triggered([row]);
    }

    Accessible.role: Accessible.List

    Quick.ListView {
        id: list

        anchors.fill: parent
        anchors.rightMargin: bar.visible ? bar.width : 0
        clip: true
        model: view.dataModel
        boundsBehavior: Flickable.StopAtBounds
        keyNavigationEnabled: true
        keyNavigationWraps: true
        activeFocusOnTab: true
        Keys.onReturnPressed: if (currentIndex >= 0) view.trigger(currentIndex)
        Keys.onEnterPressed: if (currentIndex >= 0) view.trigger(currentIndex)
        Keys.onSpacePressed: if (currentIndex >= 0) view.trigger(currentIndex)

        delegate: Button {
            id: row

            required property int index
            required property var item

            flat: true
            width: list.width
            height: view.rowHeight
            focusPolicy: Qt.NoFocus
            text: item.title ?? ""
            icon.source: item.image ?? ""
            marked: view.markedTitle !== "" && text === view.markedTitle
            Accessible.role: Accessible.ListItem
            onClicked: view.trigger(index)

            FocusRing {
                active: list.activeFocus && row.Quick.ListView.isCurrentItem
                gap: -Theme.focusWidth
            }
        }

        T.ScrollBar.vertical: bar
    }

    ScrollBar {
        id: bar
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        anchors.right: parent.right
    }
}

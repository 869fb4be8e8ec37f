import QtQuick
import bb.cascades 1.0
import bb.cascades.state 1.0 as State

// Rows with an icon and a title.
State.ListView {
    id: view

    property alias rowHeight: rows.rowHeight
    // The title of the row that is the current choice; empty for none.
    property string markedTitle: ""
    readonly property real contentHeight: rows.count * rowHeight

    // Shows the first row, and makes it the one that the keyboard is at.
    function toTop() {
        rows.positionViewAtBeginning();
        rows.currentIndex = rows.count > 0 ? 0 : -1;
    }

    function takeFocus() {
        rows.forceActiveFocus(Qt.TabFocusReason);
    }

    Rows {
        id: rows

        anchors.fill: parent
        activeFocusOnTab: true
        model: view.dataModel
        onChosen: row => {
            view.select([row]);
            view.triggered([row]);
        }

        delegate: ListRow {
            required property var item

            text: item.title ?? ""
            icon.source: item.image ?? ""
            marked: view.markedTitle !== "" && text === view.markedTitle
        }
    }
}

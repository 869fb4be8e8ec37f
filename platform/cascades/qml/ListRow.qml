import QtQuick as Quick
import QtQuick
import bb.cascades 1.0

// One of Rows, with an icon, a title, or both.
Button {
    id: row

    required property int index
    readonly property Rows rows: Quick.ListView.view as Rows

    flat: true
    width: rows ? rows.rowWidth : 0
    height: rows ? rows.rowHeight : 0
    focusPolicy: Qt.NoFocus
    Accessible.role: Accessible.ListItem
    onClicked: rows.chosen(index)

    FocusRing {
        active: row.rows !== null && row.rows.activeFocus && row.Quick.ListView.isCurrentItem
        gap: -Theme.focusWidth
    }
}

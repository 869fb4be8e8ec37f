import QtQuick
import QtQuick.Templates as T
import ".."
import bb.cascades 1.0
import bb.cascades.state 1.0 as State

// The topmost open dialog. Enter confirms, also where the other button has been reached only by the mouse; a text that
// does not fit scrolls.
FocusScope {
    id: frame

    required property var dialog
    // What lies over the upper edge.
    property real topInset: 0

    readonly property string title: dialog ? dialog.title : ""
    readonly property string body: dialog ? dialog.body : ""
    readonly property string confirmLabel: dialog ? dialog.confirmLabel : ""
    readonly property string cancelLabel: dialog ? dialog.cancelLabel : ""

    visible: dialog !== null
    // The next one begins where every dialog begins.
    onDialogChanged: {
        text.contentY = 0;
        confirm.focus = true;
    }
    Keys.onReturnPressed: dialog.confirm()
    Keys.onEnterPressed: dialog.confirm()
    Keys.onUpPressed: text.scroll(-1)
    Keys.onDownPressed: text.scroll(1)

    Rectangle {
        anchors.fill: parent
        color: "#b3000000"

        State.Shield {
            anchors.fill: parent
        }
    }

    Rectangle {
        id: box

        readonly property real textRoom: frame.height - frame.topInset - 2 * Theme.spacingLarge - heading.height - buttons.height
                                         - 4 * Theme.spacingLarge

        anchors.centerIn: parent
        anchors.verticalCenterOffset: frame.topInset / 2
        width: Math.min(620, parent.width - 2 * Theme.spacingLarge)
        height: column.height + 2 * Theme.spacingLarge
        radius: Theme.radius
        color: Theme.surface
        border.color: Theme.outline
        border.width: 2
        Accessible.role: Accessible.AlertMessage
        Accessible.name: frame.title + ". " + frame.body

        Column {
            id: column
            x: Theme.spacingLarge
            y: Theme.spacingLarge
            width: parent.width - 2 * x
            spacing: Theme.spacingLarge

            Text {
                id: heading
                width: parent.width
                text: frame.title
                textFormat: Text.PlainText
                color: Theme.text
                font.pixelSize: Theme.fontLarge
                font.bold: true
                wrapMode: Text.Wrap
                maximumLineCount: 2
                elide: Text.ElideRight
                Accessible.ignored: true
            }

            Flickable {
                id: text

                function scroll(direction) {
                    const end = Math.max(0, contentHeight - height);
                    contentY = Math.max(0, Math.min(end, contentY + direction * 2 * Theme.font));
                }

                width: parent.width
                height: Math.min(contentHeight, Math.max(80, box.textRoom))
                contentHeight: words.height
                clip: true
                interactive: contentHeight > height
                boundsBehavior: Flickable.StopAtBounds

                Text {
                    id: words
                    width: parent.width - Theme.spacingLarge
                    text: frame.body
                    textFormat: Text.PlainText
                    color: Theme.text
                    font.pixelSize: Theme.font
                    wrapMode: Text.Wrap
                    Accessible.ignored: true
                }

                T.ScrollBar.vertical: ScrollBar {}
            }

            Row {
                id: buttons

                readonly property int shown: (cancel.visible ? 1 : 0) + (confirm.visible ? 1 : 0)
                readonly property real share: (width - (shown - 1) * spacing) / Math.max(1, shown)

                width: parent.width
                spacing: Theme.spacing

                Button {
                    id: cancel
                    objectName: "dialogCancel"
                    visible: frame.cancelLabel !== ""
                    width: buttons.share
                    text: frame.cancelLabel
                    KeyNavigation.tab: confirm
                    KeyNavigation.backtab: confirm
                    KeyNavigation.right: confirm
                    onClicked: frame.dialog.cancel()
                }

                Button {
                    id: confirm
                    objectName: "dialogConfirm"
                    visible: frame.confirmLabel !== ""
                    width: buttons.share
                    text: frame.confirmLabel
                    primary: true
                    focus: true
                    KeyNavigation.tab: cancel.visible ? cancel : confirm
                    KeyNavigation.backtab: cancel.visible ? cancel : confirm
                    KeyNavigation.left: cancel
                    onClicked: frame.dialog.confirm()
                }
            }
        }
    }
}

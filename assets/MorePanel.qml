import QtQuick
import bb.cascades 1.0

// What is not needed while filming, in the upper right corner. A tap outside closes it.
FocusScope {
    id: more

    required property bool privateMode
    required property bool recording

    signal screenshotClicked()
    signal pictureClicked(string path)
    signal recordScreenClicked()
    signal privateClicked()
    signal inviteClicked()
    signal settingsClicked()
    signal helpClicked()

    function open() {
        last.active = true;
        visible = true;
        first.forceActiveFocus(Qt.OtherFocusReason);
    }

    function close() {
        visible = false;
    }

    // To the next or previous row, wrapping around.
    function move(by) {
        const rows = Array.prototype.filter.call(column.children, row => row.enabled);
        const at = rows.findIndex(row => row.activeFocus);
        rows[(at + by + rows.length) % rows.length].forceActiveFocus(Qt.TabFocusReason);
    }

    // Searches the folder only from when the panel is first opened.
    Loader {
        id: last
        readonly property string path: item ? item.path : ""
        active: false
        sourceComponent: Component { LastPicture {} }
    }

    visible: false
    Keys.onEscapePressed: close()
    Keys.onDownPressed: move(1)
    Keys.onUpPressed: move(-1)

    Rectangle {
        anchors.fill: parent
        color: Theme.scrim

        MouseArea {
            anchors.fill: parent
            hoverEnabled: true
            acceptedButtons: Qt.AllButtons
            onClicked: more.close()
            onWheel: wheel => wheel.accepted = true
        }
    }

    Rectangle {
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.margins: Theme.spacing
        width: Math.min(480, parent.width - 2 * Theme.spacing)
        height: column.height + 2 * Theme.spacingSmall
        radius: Theme.radius
        color: Theme.overlay

        component Row: Button {
            required property string picture

            signal picked()

            width: column.width
            flat: true
            icon.source: "asset:///images/" + picture
            onClicked: {
                more.close();
                picked();
            }
        }

        Column {
            id: column
            x: Theme.spacingSmall
            y: Theme.spacingSmall
            width: parent.width - 2 * x

            Row {
                id: first
                text: qsTr("Screenshot")
                picture: "icon_camera.png"
                onPicked: more.screenshotClicked()
            }

            Row {
                text: qsTr("Last screenshot")
                picture: "icon_open.png"
                enabled: last.path !== ""
                onPicked: more.pictureClicked(last.path)
            }

            Row {
                text: qsTr("Record the screen")
                picture: "ic_screenrecord_normal.png"
                enabled: !more.recording
                onPicked: more.recordScreenClicked()
            }

            Row {
                text: more.privateMode ? qsTr("Normal mode") : qsTr("Private mode")
                picture: more.privateMode ? "ic_normal.png" : "ic_private.png"
                onPicked: more.privateClicked()
            }

            Row {
                text: qsTr("Invite to download")
                picture: "ic_invite.png"
                onPicked: more.inviteClicked()
            }

            Row {
                text: qsTr("Settings")
                picture: "ic_settings.png"
                onPicked: more.settingsClicked()
            }

            Row {
                text: qsTr("Help")
                picture: "ic_help.png"
                onPicked: more.helpClicked()
            }
        }
    }
}

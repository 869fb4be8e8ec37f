import QtQuick
import bb.cascades 1.0

// The edge with the record button in its middle and the menu and the last film at its ends.
Item {
    id: bar

    // Along the right edge of the display; otherwise along the bottom.
    required property bool vertical
    required property bool recording
    readonly property alias menuButton: menu
    readonly property int thickness: Math.min(220, Math.round(0.26 * Math.min(parent.width, parent.height)))

    signal recordClicked()
    signal menuClicked()
    signal playClicked()

    width: vertical ? thickness : parent.width
    height: vertical ? parent.height : thickness
    x: parent.width - width
    y: parent.height - height

    Rectangle {
        anchors.fill: parent
        gradient: Gradient {
            orientation: bar.vertical ? Gradient.Horizontal : Gradient.Vertical
            GradientStop { position: 0; color: "#00000000" }
            GradientStop { position: 0.45; color: "#99000000" }
            GradientStop { position: 1; color: "#cc000000" }
        }
    }

    // The place at the start, in the middle or at the end of the bar: 0, 1, 2.
    component Place: Item {
        required property int at
        readonly property real share: (2 * at + 1) / 6

        width: bar.vertical ? bar.width : bar.width / 3
        height: bar.vertical ? bar.height / 3 : bar.height
        x: bar.vertical ? 0 : bar.width * share - width / 2
        y: bar.vertical ? bar.height * share - height / 2 : 0
    }

    Place {
        at: bar.vertical ? 2 : 0

        ImageButton {
            id: menu
            objectName: "menuIconImgButton"
            anchors.centerIn: parent
            preferredWidth: 112
            preferredHeight: 112
            accessibleName: qsTr("Menu: filters, textures, size, light, scene, camera")
            defaultImageSource: "asset:///images/icon_menu.png"
            pressedImageSource: "asset:///images/icon_menu_pressed.png"
            onClicked: bar.menuClicked()
        }
    }

    Place {
        at: 1

        ImageButton {
            objectName: "imgbut_record_stop"
            anchors.centerIn: parent
            preferredWidth: Math.round(bar.thickness * 0.8)
            preferredHeight: preferredWidth
            accessibleName: bar.recording ? qsTr("Stop recording") : qsTr("Record")
            defaultImageSource: "asset:///images/ic_camera_normal.png"
            pressedImageSource: "asset:///images/ic_camera_toggle.png"
            onClicked: bar.recordClicked()
        }
    }

    Place {
        at: bar.vertical ? 0 : 2

        Container {
            objectName: "playContainer"
            anchors.centerIn: parent
            width: 112
            height: 112
            visible: false

            ImageButton {
                anchors.fill: parent
                accessibleName: qsTr("Play the last film")
                defaultImageSource: "asset:///images/ic_play.png"
                pressedImageSource: "asset:///images/ic_play_pressed.png"
                onClicked: bar.playClicked()
            }
        }
    }
}

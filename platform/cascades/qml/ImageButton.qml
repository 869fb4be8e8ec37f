import QtQuick
import QtQuick.Templates as T
import bb.cascades 1.0
import bb.cascades.state 1.0 as State

// A round button that is a picture, with another picture while it is pressed.
State.ImageButton {
    id: button

    required property string accessibleName
    // A disc behind the picture, for one that has none of its own.
    property bool disc: false
    property real inset: disc ? Math.round(Math.min(width, height) * 0.2) : 0

    implicitWidth: preferredWidth > 0 ? preferredWidth : Theme.touch
    implicitHeight: preferredHeight > 0 ? preferredHeight : Theme.touch

    T.AbstractButton {
        id: area

        anchors.fill: parent
        padding: button.inset
        focusPolicy: Qt.TabFocus
        hoverEnabled: true
        scale: down ? 0.94 : 1
        Accessible.role: Accessible.Button
        Accessible.name: button.accessibleName
        Keys.onReturnPressed: clicked()
        Keys.onEnterPressed: clicked()
        onClicked: button.clicked()

        Behavior on scale {
            NumberAnimation { duration: Theme.durationFast }
        }

        background: Item {
            Rectangle {
                anchors.fill: parent
                radius: Math.min(width, height) / 2
                visible: button.disc || area.hovered
                color: !button.disc ? "#26ffffff"
                     : area.down ? Theme.discPressed
                     : area.hovered ? Theme.discHovered
                     : Theme.disc
            }

            FocusRing {
                active: area.visualFocus
                radius: width / 2
            }
        }

        contentItem: Image {
            source: area.down && button.pressedImageSource.toString() !== "" ? button.pressedImageSource
                                                                             : button.defaultImageSource
            fillMode: Image.PreserveAspectFit
            asynchronous: false
            smooth: true
            mipmap: true
            opacity: button.enabled ? 1 : 0.4
        }
    }
}

import QtQuick
import QtQuick.Templates as T
import bb.cascades 1.0
import bb.cascades.state 1.0 as State

// A switch with its text at the left; the whole row can be touched.
State.CheckBox {
    id: box

    implicitWidth: preferredWidth > 0 ? preferredWidth : row.implicitWidth
    implicitHeight: preferredHeight > 0 ? preferredHeight : row.implicitHeight

    T.CheckBox {
        id: row

        anchors.fill: parent
        implicitWidth: implicitContentWidth + leftPadding + rightPadding
        implicitHeight: Math.max(Theme.touch, implicitContentHeight + topPadding + bottomPadding)
        leftPadding: Theme.spacing
        rightPadding: knob.width + 2 * Theme.spacing
        verticalPadding: Theme.spacing
        focusPolicy: Qt.TabFocus
        hoverEnabled: true
        text: box.text
        checked: box.checked
        opacity: enabled ? 1 : 0.4
        Accessible.name: text
        Keys.onReturnPressed: turn()
        Keys.onEnterPressed: turn()
        onToggled: box.checked = checked

        function turn() {
            toggle();
            toggled();
        }

        background: Rectangle {
            radius: Theme.radius
            color: row.down ? Theme.surfacePressed : row.hovered ? Theme.surfaceHovered : "transparent"

            FocusRing {
                active: row.visualFocus
                gap: -Theme.focusWidth
            }
        }

        indicator: Rectangle {
            id: knob
            width: 96
            height: 54
            radius: height / 2
            x: row.width - width - Theme.spacing
            y: (row.height - height) / 2
            color: row.checked ? Theme.accent : Theme.surfaceRaised
            border.color: row.checked ? Theme.accent : Theme.outline
            border.width: 3

            Rectangle {
                width: 38
                height: width
                radius: width / 2
                x: row.checked ? parent.width - width - 8 : 8
                anchors.verticalCenter: parent.verticalCenter
                color: row.checked ? Theme.textOnAccent : Theme.textDim

                Behavior on x {
                    NumberAnimation { duration: Theme.durationFast }
                }
            }
        }

        contentItem: Text {
            text: row.text
            textFormat: Text.PlainText
            color: Theme.text
            font.pixelSize: Theme.font
            wrapMode: Text.Wrap
            verticalAlignment: Text.AlignVCenter
            Accessible.ignored: true
        }
    }
}

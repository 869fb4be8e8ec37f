import QtQuick
import QtQuick.Templates as T
import bb.cascades 1.0

// A horizontal slider. Its groove can show what the two ends mean.
T.Slider {
    id: slider

    required property string accessibleName
    property color fromColor: Theme.accent
    property color toColor: Theme.outline
    // The groove fades from one colour to the other; otherwise the colours meet at the handle.
    property bool blended: false

    implicitWidth: 320
    implicitHeight: Theme.touch
    horizontalPadding: Theme.spacing
    focusPolicy: Qt.TabFocus
    hoverEnabled: true
    Accessible.name: accessibleName

    background: Item {
        x: slider.leftPadding
        y: (slider.height - height) / 2
        width: slider.availableWidth
        height: 16

        Rectangle {
            anchors.fill: parent
            radius: height / 2
            color: slider.toColor
            visible: !slider.blended
        }

        Rectangle {
            width: slider.blended ? parent.width : knob.x - slider.leftPadding + knob.width / 2
            height: parent.height
            radius: height / 2
            color: slider.fromColor
            gradient: slider.blended ? fade : null
        }

        Gradient {
            id: fade
            orientation: Gradient.Horizontal
            GradientStop { position: 0; color: slider.fromColor }
            GradientStop { position: 1; color: slider.toColor }
        }
    }

    handle: Rectangle {
        id: knob
        x: slider.leftPadding + slider.visualPosition * (slider.availableWidth - width)
        y: (slider.height - height) / 2
        width: 56
        height: width
        radius: width / 2
        color: slider.pressed ? Theme.accent : slider.hovered ? "white" : Theme.text
        border.color: "#66000000"
        border.width: 3

        FocusRing {
            active: slider.visualFocus
            radius: width / 2
        }
    }
}

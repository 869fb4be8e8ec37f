import QtQuick
import QtQuick.Templates as T
import bb.cascades 1.0

// Shown while there is more than fits.
T.ScrollBar {
    id: bar

    implicitWidth: 20
    implicitHeight: 20
    padding: 4
    minimumSize: 0.08
    visible: size < 1
    hoverEnabled: true

    contentItem: Rectangle {
        radius: width / 2
        color: bar.pressed ? Theme.accent : bar.hovered ? Theme.textDim : Theme.outline
    }
}

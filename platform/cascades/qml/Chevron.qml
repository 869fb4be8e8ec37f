import QtQuick
import bb.cascades 1.0

// An angle that points down; turned, it points anywhere.
Item {
    property color color: Theme.textDim

    width: 30
    height: 18

    Repeater {
        model: [-1, 1]

        Rectangle {
            required property int modelData

            x: parent.width / 2 - width / 2 + modelData * 7
            y: parent.height / 2 - height / 2
            width: 22
            height: 5
            radius: height / 2
            rotation: -45 * modelData
            color: parent.color
            antialiasing: true
        }
    }
}

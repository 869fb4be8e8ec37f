import QtQuick
import bb.cascades 1.0

// An angle that points down; turned, it points anywhere.
Item {
    id: chevron

    property color color: Theme.textDim

    width: 30
    height: 18

    Repeater {
        model: [-1, 1]

        Rectangle {
            required property int modelData

            x: chevron.width / 2 - width / 2 + modelData * 7
            y: chevron.height / 2 - height / 2
            width: 22
            height: 5
            radius: height / 2
            rotation: -45 * modelData
            color: chevron.color
            antialiasing: true
        }
    }
}

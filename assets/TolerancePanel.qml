import QtQuick
import bb.cascades 1.0

// How far a hue may be from the kept one. At 1 hues could not be told apart, so the slider ends before.
Container {
    id: tolerance

    signal changed(real value)
    signal closed()

    implicitHeight: panel.implicitHeight
    objectName: "setColorContainer"
    visible: false

    Panel {
        id: panel
        anchors.fill: parent
        title: qsTr("Hues that are kept")
        onClosed: tolerance.closed()

        Slider {
            width: parent.width
            height: 80
            from: 0
            to: 0.95
            value: 0.5
            stepSize: 0.05
            accessibleName: qsTr("How far a hue may be from the one that is kept")
            onMoved: tolerance.changed(value)
        }

        Item {
            width: parent.width
            height: few.implicitHeight

            Label {
                id: few
                text: qsTr("This hue only")
                color: Theme.textDim
                font.pixelSize: Theme.fontSmall
            }

            Label {
                anchors.right: parent.right
                text: qsTr("Its neighbors too")
                color: Theme.textDim
                font.pixelSize: Theme.fontSmall
            }
        }
    }
}

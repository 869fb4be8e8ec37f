import QtQuick
import bb.cascades 1.0

// The color that the mixer gives the whole picture, as its two chroma components, 0 to 255.
Container {
    id: mixer

    readonly property color mixed: rgb(blueness.value, redness.value)

    signal changed(int component, real value)
    signal closed()

    // Converts chroma to a color of medium brightness, full-range BT.601.
    function rgb(u, v) {
        const luma = 150;
        const part = value => Math.max(0, Math.min(255, value)) / 255;
        return Qt.rgba(part(luma + 1.402 * (v - 128)),
                       part(luma - 0.344 * (u - 128) - 0.714 * (v - 128)),
                       part(luma + 1.772 * (u - 128)), 1);
    }

    implicitHeight: panel.implicitHeight
    objectName: "setYUVContainer"
    visible: false

    Panel {
        id: panel
        anchors.fill: parent
        title: qsTr("Color Mixer")
        onClosed: mixer.closed()

        sample: Rectangle {
            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(parent.width, 160)
            height: 44
            radius: height / 2
            color: mixer.mixed
        }

        component Chroma: Slider {
            width: parent.width
            height: 80
            from: 0
            to: 255
            value: 128
            stepSize: 1
            blended: true
        }

        Label {
            width: parent.width
            text: qsTr("Yellow to blue")
            color: Theme.textDim
            font.pixelSize: Theme.fontSmall
        }

        Chroma {
            id: blueness
            accessibleName: qsTr("Yellow to blue")
            fromColor: mixer.rgb(0, redness.value)
            toColor: mixer.rgb(255, redness.value)
            onMoved: mixer.changed(1, value)
        }

        Label {
            width: parent.width
            text: qsTr("Green to red")
            color: Theme.textDim
            font.pixelSize: Theme.fontSmall
        }

        Chroma {
            id: redness
            accessibleName: qsTr("Green to red")
            fromColor: mixer.rgb(blueness.value, 0)
            toColor: mixer.rgb(blueness.value, 255)
            onMoved: mixer.changed(2, value)
        }
    }
}

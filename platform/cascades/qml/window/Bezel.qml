import QtQuick

// What the desktop window holds: the handset's display, drawn to scale in the middle of a dark bezel.
Rectangle {
    id: bezel

    required property var stage
    required property var application

    anchors.fill: parent
    color: "#060709"

    Display {
        objectName: "display"
        stage: bezel.stage
        application: bezel.application
        transformOrigin: Item.TopLeft
        scale: Math.max(0.01, Math.min(bezel.width / width, bezel.height / height))
        x: (bezel.width - width * scale) / 2
        y: (bezel.height - height * scale) / 2
    }
}

import QtQuick
import bb.cascades 1.0
import handset.system 1.0
import "qrc:/bb/cascades"

// A picture under its name.
FocusScope {
    id: root

    required property var card

    focus: true

    PictureView {
        anchors.fill: parent
        anchors.topMargin: bar.height
        image: root.card.image
        Accessible.role: Accessible.Graphic
        Accessible.name: root.card.title
    }

    CardMessage {
        text: root.card.message
    }

    TitleBar {
        id: bar
        width: parent.width
        title: root.card.title
        onBack: root.card.close()
    }
}

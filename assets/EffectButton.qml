import QtQuick
import bb.cascades 1.0

// The filter that keeps a color: a button that shows and hides how much it keeps. The program sets the icon.
Item {
    id: effect

    signal clicked()

    ImageButton {
        anchors.fill: parent
        disc: true
        accessibleName: qsTr("Hues that are kept")
        onClicked: effect.clicked()
    }

    ImageView {
        objectName: "effectImg"
        anchors.fill: parent
        anchors.margins: 16
        imageSource: "asset:///images/icon_effect_normal.png"
    }
}

import QtQuick
import ".."
import bb.cascades 1.0

// Says why there is no picture of a camera, and lets the user try again. Below the upper edge, so that the ways to
// everything else stay free.
Rectangle {
    id: strip

    required property var stage
    // The text outlives its end while the strip fades.
    property string text: ""

    readonly property bool shown: stage.trouble !== ""

    x: Theme.spacing
    y: Theme.touch + 2 * Theme.spacing
    width: Math.min(parent.width - 2 * x, 736)
    height: Math.max(words.implicitHeight, again.height) + 2 * Theme.spacing
    radius: Theme.radius
    color: Theme.overlay
    border.color: Theme.outline
    border.width: 2
    opacity: shown ? 1 : 0
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text

    onShownChanged: if (shown) text = stage.trouble

    Connections {
        target: strip.stage
        function onTroubleChanged() {
            if (strip.shown)
                strip.text = strip.stage.trouble;
        }
    }

    Behavior on opacity {
        NumberAnimation { duration: Theme.duration }
    }

    Text {
        id: words
        anchors.left: parent.left
        anchors.leftMargin: Theme.spacingLarge
        anchors.right: again.left
        anchors.rightMargin: Theme.spacing
        anchors.verticalCenter: parent.verticalCenter
        text: strip.text
        textFormat: Text.PlainText
        color: Theme.text
        font.pixelSize: Theme.fontSmall + 2
        wrapMode: Text.Wrap
        Accessible.ignored: true
    }

    Button {
        id: again
        objectName: "retryButton"
        anchors.right: parent.right
        anchors.rightMargin: Theme.spacing
        anchors.verticalCenter: parent.verticalCenter
        text: qsTr("Try again")
        font.pixelSize: Theme.fontSmall + 2
        enabled: strip.shown
        onClicked: strip.stage.retry()
    }
}

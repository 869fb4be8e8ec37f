import QtQuick
import bb.cascades 1.0

// Why a card shows nothing.
Text {
    anchors.centerIn: parent
    width: parent.width - 4 * Theme.spacingLarge
    visible: text !== ""
    textFormat: Text.PlainText
    color: Theme.text
    font.pixelSize: Theme.font
    wrapMode: Text.Wrap
    horizontalAlignment: Text.AlignHCenter
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text
}

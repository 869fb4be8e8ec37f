import QtQuick
import bb.cascades 1.0
import bb.cascades.state 1.0 as State

// One line that ends in an ellipsis where it does not fit, or as many lines as it takes.
State.Label {
    id: label

    property bool wrap: false
    property alias color: content.color
    property alias font: content.font
    property alias horizontalAlignment: content.horizontalAlignment

    implicitWidth: preferredWidth > 0 ? preferredWidth : Math.ceil(content.implicitWidth)
    implicitHeight: preferredHeight > 0 ? preferredHeight : Math.ceil(content.implicitHeight)

    Accessible.role: Accessible.StaticText
    Accessible.name: text

    Text {
        id: content
        anchors.fill: parent
        text: label.text
        textFormat: Text.PlainText
        color: Theme.text
        font.pixelSize: Theme.font
        verticalAlignment: Text.AlignVCenter
        wrapMode: label.wrap ? Text.Wrap : Text.NoWrap
        elide: label.wrap ? Text.ElideNone : Text.ElideRight
        Accessible.ignored: true
    }
}

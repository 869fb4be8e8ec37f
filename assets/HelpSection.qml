import QtQuick
import bb.cascades 1.0

// A heading, one or more paragraphs of text, and a table of names and their meanings.
Column {
    id: section

    required property string title
    property string text: ""
    // Pairs of a name and its description.
    property var entries: []

    width: parent ? parent.width : 0
    spacing: Theme.spacing

    Label {
        width: parent.width
        wrap: true
        text: section.title
        color: Theme.accent
        font.pixelSize: Theme.fontLarge
        font.bold: true
        Accessible.role: Accessible.Heading
    }

    Label {
        width: parent.width
        visible: text !== ""
        wrap: true
        text: section.text
    }

    Repeater {
        model: section.entries

        Column {
            required property var modelData

            width: section.width
            spacing: 2

            Label {
                width: parent.width
                wrap: true
                text: parent.modelData[0]
                font.bold: true
            }

            Label {
                width: parent.width
                wrap: true
                text: parent.modelData[1]
                color: Theme.textDim
            }
        }
    }
}

import QtQuick
import bb.cascades 1.0
import ".."

// The folders and files of one folder. Backspace goes up.
FocusScope {
    id: root

    required property var card

    function begin() {
        list.currentIndex = card.first;
        list.positionViewAtIndex(Math.max(0, card.first - 1), ListView.Beginning);
    }

    focus: true
    Component.onCompleted: begin()
    Keys.onPressed: event => {
        event.accepted = event.key === Qt.Key_Backspace;
        if (event.accepted)
            card.goUp();
    }

    Connections {
        target: root.card
        function onFolderChanged() { root.begin(); }
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.background
    }

    TitleBar {
        id: bar
        width: parent.width
        title: root.card.title
        onBack: root.card.close()
    }

    Text {
        id: place
        x: Theme.spacing
        y: bar.height
        width: parent.width - 2 * x
        height: Theme.touch / 2 + Theme.spacing
        verticalAlignment: Text.AlignVCenter
        text: root.card.folder
        textFormat: Text.PlainText
        color: Theme.textDim
        font.pixelSize: Theme.fontSmall
        elide: Text.ElideLeft
    }

    Rows {
        id: list
        objectName: "pickerRows"
        focus: true
        x: Theme.spacing
        y: place.y + place.height
        width: parent.width - 2 * x
        height: parent.height - y
        rowHeight: Theme.touch + Theme.spacing
        model: root.card.rows
        Accessible.name: root.card.title
        onChosen: row => root.card.choose(row)

        delegate: ListRow {
            required property var modelData
            text: modelData.name
            icon.source: modelData.icon
        }
    }

    Text {
        anchors.centerIn: list
        visible: root.card.rows.length <= 1
        text: qsTr("Nothing here to pick")
        color: Theme.textDim
        font.pixelSize: Theme.font
    }
}

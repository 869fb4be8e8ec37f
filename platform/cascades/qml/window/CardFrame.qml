import QtQuick
import bb.cascades.state 1.0 as State

// The open card, drawn by a document of its own.
FocusScope {
    id: frame

    required property var card

    visible: card !== null
    onCardChanged: {
        if (card)
            loader.setSource(card.document, { card: card });
        else
            loader.source = "";
    }

    Rectangle {
        anchors.fill: parent
        color: "black"

        State.Shield {
            anchors.fill: parent
        }
    }

    Loader {
        id: loader
        anchors.fill: parent
        focus: true
        // A card that cannot be drawn must not stay between the user and the application.
        onStatusChanged: if (status === Loader.Error) Qt.callLater(() => frame.card?.close())
    }
}

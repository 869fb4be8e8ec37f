import QtQuick
import bb.cascades 1.0

// The invitation, for the user to copy and to send by whatever means there are.
Sheet {
    id: sheet

    onBackRequested: close()
    onOpened: copyButton.copied = false

    Page {
        title: qsTr("Invite a friend")

        Item {
            anchors.fill: parent
            anchors.margins: Theme.spacingLarge

            Column {
                id: words

                anchors.left: parent.left
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                spacing: Theme.spacingLarge

                Label {
                    width: parent.width
                    wrap: true
                    color: Theme.textDim
                    text: qsTr("Copy the invitation and send it to whom you like.")
                }

                Rectangle {
                    width: parent.width
                    height: invitation.height + 2 * Theme.spacingLarge
                    radius: Theme.radius
                    color: Theme.surfaceRaised
                    border.color: Theme.outline
                    border.width: 2

                    TextEdit {
                        id: invitation

                        objectName: "invitationText"
                        x: Theme.spacingLarge
                        y: Theme.spacingLarge
                        width: parent.width - 2 * x
                        text: qsTr("I record videos with live effects: tints, sepia, one colour kept and the rest grey, "
                                   + "textures and a date stamp, all in the film itself. Try it too!\n\n"
                                   + "Search for Morvane in your software centre.")
                        textFormat: TextEdit.PlainText
                        wrapMode: TextEdit.Wrap
                        readOnly: true
                        selectByMouse: true
                        color: Theme.text
                        selectionColor: Theme.accent
                        selectedTextColor: Theme.textOnAccent
                        font.pixelSize: Theme.font
                        Accessible.role: Accessible.StaticText
                        Accessible.name: text
                    }
                }

                Row {
                    anchors.right: parent.right
                    spacing: Theme.spacing

                    Button {
                        objectName: "closeButton"
                        text: qsTr("Close")
                        onClicked: sheet.close()
                    }

                    Button {
                        id: copyButton

                        property bool copied: false

                        objectName: "copyButton"
                        primary: true
                        focus: true
                        text: copied ? qsTr("Copied") : qsTr("Copy")
                        onClicked: {
                            invitation.selectAll();
                            invitation.copy();
                            invitation.deselect();
                            copied = true;
                        }
                    }
                }
            }
        }
    }
}

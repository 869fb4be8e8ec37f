import QtQuick
import bb.cascades 1.0

// The settings sheet. The program fills it when it opens, and reads it when it is saved. What does not apply is hidden,
// even while the user edits: the stamp's color and place without a stamp, the texture's colors without a texture.
Sheet {
    id: sheet

    onBackRequested: _mainApp.cancelSettings()

    Page {
        id: page

        title: qsTr("Settings")

        ScrollView {
            anchors.top: parent.top
            anchors.bottom: actions.top
            width: parent.width

            SettingsGroup {
                title: qsTr("Date and time in the picture")

                DropDown {
                    id: formOfStamp
                    objectName: "timeformatDropdown"
                    width: parent.width
                    title: qsTr("Stamp")
                    options: [
                        qsTr("No stamp"),
                        qsTr("MM-DD-YYYY and time"), qsTr("DD-MM-YYYY and time"),
                        qsTr("MM/DD/YYYY and time"), qsTr("DD/MM/YYYY and time"),
                        qsTr("MM-DD-YYYY"), qsTr("DD-MM-YYYY"), qsTr("MM/DD/YYYY"), qsTr("DD/MM/YYYY")
                    ]
                    onSelectedIndexChanged: index => {
                        colorOfStamp.visible = index > 0;
                        placeOfStamp.visible = index > 0;
                    }
                }

                Label {
                    readonly property string date: ["11-16-2026", "16-11-2026", "11/16/2026", "16/11/2026"]
                                                   [(formOfStamp.selectedIndex - 1) % 4] ?? ""

                    x: Theme.spacing
                    width: parent.width - 2 * x
                    visible: date !== ""
                    text: qsTr("Such as %1").arg(formOfStamp.selectedIndex > 4 ? date : date + " 04:17:33 PM")
                    color: Theme.textDim
                    font.pixelSize: Theme.fontSmall
                }

                DropDown {
                    id: colorOfStamp
                    objectName: "colorDropdown"
                    width: parent.width
                    title: qsTr("Color")
                    options: [qsTr("Black"), qsTr("Blue"), qsTr("Orange"), qsTr("Red"), qsTr("Yellow"), qsTr("White")]
                }

                DropDown {
                    id: placeOfStamp
                    objectName: "positionDropdown"
                    width: parent.width
                    title: qsTr("Place")
                    options: [qsTr("Top left"), qsTr("Top right"), qsTr("Middle"), qsTr("Bottom left"),
                              qsTr("Bottom right")]
                }
            }

            SettingsGroup {
                title: qsTr("Texture or picture")

                CheckBox {
                    objectName: "includelogo"
                    width: parent.width
                    text: qsTr("Lay it over the picture")
                    onCheckedChanged: on => colorsOfTexture.visible = on
                }

                Container {
                    id: colorsOfTexture
                    objectName: "logooriginalcolor_container"
                    width: parent.width
                    height: originalColors.height

                    CheckBox {
                        id: originalColors
                        objectName: "logooriginalcolor"
                        width: parent.width
                        text: qsTr("It keeps its own colors under a color filter")
                    }
                }

                DropDown {
                    objectName: "position"
                    width: parent.width
                    title: qsTr("Place of a picture that is smaller than the film")
                    options: [qsTr("Top left"), qsTr("Top middle"), qsTr("Top right"), qsTr("Middle"),
                              qsTr("Bottom left"), qsTr("Bottom middle"), qsTr("Bottom right")]
                }
            }

            SettingsGroup {
                title: qsTr("Sound")

                CheckBox {
                    objectName: "shuttersound"
                    width: parent.width
                    text: qsTr("Sound at the start and end of a recording")
                }
            }
        }

        SettingsActions {
            id: actions
            anchors.bottom: parent.bottom
            width: parent.width
            onCancelClicked: _mainApp.cancelSettings()
            onSaveClicked: _mainApp.saveSettings()
        }
    }
}

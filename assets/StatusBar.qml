import QtQuick
import bb.cascades 1.0

// The upper edge: the size of the film, the clock of a recording, badges of what is switched on, and the way to
// everything else.
Item {
    id: bar

    // The size is one of the lens cameras'.
    required property bool sizeShown
    readonly property bool recording: clock.visible
    readonly property alias sizeText: size.text

    signal sizeClicked()
    signal moreClicked()

    height: Theme.touch + 2 * Theme.spacing

    component Ground: Pill {
        anchors.fill: parent
        color: Theme.disc
    }

    Item {
        visible: bar.sizeShown

        Container {
            objectName: "screensizeContainer"
            x: Theme.spacing
            y: Theme.spacing
            width: film.width + (size.text === "" ? 0 : size.implicitWidth + Theme.spacingSmall + Theme.spacingLarge)
            height: Theme.touch

            Ground {
                TapHandler {
                    onTapped: bar.sizeClicked()
                }
            }

            ImageButton {
                id: film
                objectName: "screenImg"
                preferredWidth: Theme.touch
                preferredHeight: Theme.touch
                // Set with the pictures of the light: what it is at the camera in use.
                property bool lightIsLamp: false
                readonly property string lightName: lightIsLamp ? qsTr("Video light") : qsTr("Brighten the picture")
                accessibleName: bar.recording ? lightName : qsTr("Size of the film: %1").arg(size.text)
                defaultImageSource: "asset:///images/icon_film.png"
                pressedImageSource: "asset:///images/icon_film_pressed.png"
                onClicked: bar.sizeClicked()
            }

            Label {
                id: size
                objectName: "screensize"
                anchors.left: film.right
                anchors.leftMargin: Theme.spacingSmall
                height: parent.height
            }
        }
    }

    Container {
        id: clock
        objectName: "RecordContainer"
        // In the middle, or as near to it as the badges let it.
        x: Math.min((parent.width - width) / 2, badges.x - Theme.spacing - width)
        y: Theme.spacing
        width: dot.width + time.implicitWidth + 2 * Theme.spacingLarge + Theme.spacing
        height: Theme.touch
        visible: false
        // The first second of the next recording shows what stands here.
        onVisibleChanged: if (!visible) time.text = "00:00"

        Ground {}

        ImageView {
            id: dot
            objectName: "recordRedDotImg"
            x: Theme.spacingLarge
            anchors.verticalCenter: parent.verticalCenter
            preferredWidth: 36
            preferredHeight: 36
            imageSource: "asset:///images/icon_reddot.png"
        }

        Label {
            id: time
            objectName: "recordLabel"
            anchors.left: dot.right
            anchors.leftMargin: Theme.spacing
            height: parent.height
            text: "00:00"
            font.bold: true
        }
    }

    Row {
        id: badges
        anchors.right: parent.right
        anchors.rightMargin: Theme.spacing
        y: Theme.spacing
        height: Theme.touch
        spacing: Theme.spacingSmall

        component Badge: ImageView {
            anchors.verticalCenter: parent.verticalCenter
            preferredWidth: Theme.icon
            preferredHeight: Theme.icon
            visible: false
        }

        Badge {
            objectName: "sceneImg"
            accessibleName: qsTr("A scene mode is on")
        }

        Badge {
            objectName: "modeImg"
            accessibleName: qsTr("Stabilization is on")
        }

        ImageButton {
            objectName: "moreButton"
            disc: true
            accessibleName: qsTr("More: screenshot, screen recording, settings, help")
            preferredWidth: Theme.touch
            preferredHeight: Theme.touch
            onClicked: bar.moreClicked()

            Column {
                anchors.centerIn: parent
                spacing: 8

                Repeater {
                    model: 3

                    Rectangle {
                        width: 10
                        height: width
                        radius: width / 2
                        color: Theme.text
                    }
                }
            }
        }
    }
}

import QtQuick
import bb.cascades 1.0

// The upper edge: the film's size, the recording clock, badges for what is switched on, and the way to everything else.
Item {
    id: bar

    // The size belongs to a lens camera.
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
                // Set together with the light's pictures: what the light is on the current camera.
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
        // Centered, or as close as the badges allow.
        x: Math.min((parent.width - width) / 2, badges.x - Theme.spacing - width)
        y: Theme.spacing
        width: dot.width + time.implicitWidth + 2 * Theme.spacingLarge + Theme.spacing
        height: Theme.touch
        visible: false
        // The first second of the next recording still shows this.
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

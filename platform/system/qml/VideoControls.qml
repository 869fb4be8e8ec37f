import QtQuick
import QtQuick.Templates as T
import bb.cascades 1.0
import "qrc:/bb/cascades"

// Play and pause, and where the film is.
Rectangle {
    id: bar

    required property var card
    required property int step

    signal used()

    function clock(milliseconds) {
        const seconds = Math.floor(milliseconds / 1000);
        const two = number => String(number).padStart(2, "0");
        const hours = Math.floor(seconds / 3600);
        const rest = two(Math.floor(seconds / 60) % 60) + ":" + two(seconds % 60);
        return hours > 0 ? hours + ":" + rest : rest;
    }

    height: Theme.touch + 2 * Theme.spacing
    color: Theme.overlay

    // What is clicked between the controls is not the film.
    MouseArea {
        anchors.fill: parent
        hoverEnabled: true
        onPositionChanged: bar.used()
    }

    TextMetrics {
        id: widest
        font.pixelSize: Theme.font
        text: bar.card.duration >= 3600000 ? "0:00:00" : "00:00"
    }

    component Clock: Text {
        width: Math.ceil(widest.advanceWidth) + Theme.spacingSmall
        anchors.verticalCenter: parent.verticalCenter
        horizontalAlignment: Text.AlignHCenter
        color: Theme.text
        font.pixelSize: Theme.font
    }

    Row {
        x: Theme.spacing
        width: parent.width - 2 * x
        height: parent.height
        spacing: Theme.spacing

        T.AbstractButton {
            id: button
            objectName: "playButton"
            width: Theme.touch
            height: Theme.touch
            anchors.verticalCenter: parent.verticalCenter
            focusPolicy: Qt.TabFocus
            hoverEnabled: true
            Accessible.role: Accessible.Button
            Accessible.name: bar.card.playing ? qsTr("Pause") : qsTr("Play")
            Keys.onReturnPressed: click()
            Keys.onEnterPressed: click()
            onClicked: {
                bar.used();
                bar.card.togglePlaying();
            }

            background: Rectangle {
                radius: width / 2
                color: button.down ? Theme.surfacePressed : button.hovered ? Theme.surfaceHovered : Theme.surfaceRaised

                FocusRing {
                    active: button.visualFocus
                    gap: -Theme.focusWidth
                    radius: width / 2
                }
            }

            contentItem: Item {
                Repeater {
                    model: bar.card.playing ? 2 : 0

                    Rectangle {
                        required property int index
                        x: parent.width / 2 + (index === 0 ? -18 : 6)
                        y: parent.height / 2 - height / 2
                        width: 12
                        height: 40
                        radius: 2
                        color: Theme.text
                    }
                }

                Canvas {
                    visible: !bar.card.playing
                    anchors.centerIn: parent
                    anchors.horizontalCenterOffset: 4
                    width: 36
                    height: 44
                    onPaint: {
                        const context = getContext("2d");
                        context.fillStyle = Theme.text;
                        context.beginPath();
                        context.moveTo(0, 0);
                        context.lineTo(width, height / 2);
                        context.lineTo(0, height);
                        context.closePath();
                        context.fill();
                    }
                }
            }
        }

        Clock {
            objectName: "positionText"
            text: bar.clock(bar.card.position)
        }

        Slider {
            id: slider
            objectName: "seekSlider"
            width: Math.max(0, parent.width - button.width - 2 * (widest.advanceWidth + Theme.spacingSmall)
                               - 3 * parent.spacing)
            anchors.verticalCenter: parent.verticalCenter
            accessibleName: qsTr("Position in the film")
            enabled: bar.card.duration > 0
            to: Math.max(1, bar.card.duration)
            stepSize: pressed ? 0 : bar.step
            onMoved: {
                bar.used();
                bar.card.seek(Math.round(value));
            }

            // A handle that is held follows the hand, not the film.
            Binding on value {
                when: !slider.pressed
                value: bar.card.position
                restoreMode: Binding.RestoreNone
            }
        }

        Clock {
            text: bar.clock(bar.card.duration)
        }
    }
}

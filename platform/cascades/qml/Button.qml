import QtQuick
import QtQuick.Templates as T
import bb.cascades 1.0

// A button with a text, an icon, or both. A flat one is a row of a list: no frame, its contents at the left.
T.Button {
    id: button

    // What the user most likely wants.
    property bool primary: false
    // A flat row that is the current choice.
    property bool marked: false

    readonly property color foreground: primary ? Theme.textOnAccent : Theme.text

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: Math.max(Theme.touch, implicitContentHeight + topPadding + bottomPadding)
    horizontalPadding: flat ? Theme.spacing : Theme.spacingLarge
    verticalPadding: Theme.spacing
    spacing: Theme.spacing
    focusPolicy: Qt.TabFocus
    hoverEnabled: true
    font.pixelSize: Theme.font
    font.bold: primary
    opacity: enabled ? 1 : 0.4
    icon.width: Theme.icon
    icon.height: Theme.icon

    Accessible.name: text
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    background: Rectangle {
        radius: Theme.radius
        color: {
            if (button.primary)
                return button.down ? Theme.accentPressed : button.hovered ? Theme.accentHovered : Theme.accent;
            if (button.down)
                return Theme.surfacePressed;
            if (button.hovered)
                return Theme.surfaceHovered;
            return button.flat ? "transparent" : Theme.surfaceRaised;
        }

        FocusRing {
            active: button.visualFocus
            gap: button.flat ? -Theme.focusWidth : 3
        }
    }

    contentItem: Item {
        implicitWidth: Math.ceil(label.implicitWidth) + row.besides
        implicitHeight: row.implicitHeight

        Row {
            id: row

            readonly property real besides: (picture.visible ? picture.width + spacing : 0)
                                            + (mark.visible ? mark.width + spacing : 0)

            x: button.flat ? 0 : Math.max(0, (parent.width - width) / 2)
            anchors.verticalCenter: parent.verticalCenter
            spacing: button.spacing

            Image {
                id: picture
                visible: source.toString() !== ""
                source: button.icon.source
                width: button.icon.width
                height: button.icon.height
                fillMode: Image.PreserveAspectFit
                asynchronous: false
                smooth: true
                mipmap: true
                anchors.verticalCenter: parent.verticalCenter
            }

            Text {
                id: label
                text: button.text
                textFormat: Text.PlainText
                font: button.font
                color: button.foreground
                elide: Text.ElideRight
                width: {
                    const most = button.availableWidth - row.besides;
                    return button.flat ? most : Math.min(Math.ceil(implicitWidth), most);
                }
                anchors.verticalCenter: parent.verticalCenter
                Accessible.ignored: true
            }

            Rectangle {
                id: mark
                visible: button.marked
                width: 20
                height: width
                radius: width / 2
                color: Theme.accent
                anchors.verticalCenter: parent.verticalCenter
            }
        }
    }
}

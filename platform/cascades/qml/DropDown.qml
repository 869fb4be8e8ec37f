import QtQuick
import QtQuick.Templates as T
import bb.cascades 1.0
import bb.cascades.state 1.0 as State

// A field that shows the choice and opens the list of all of them, inside the page that it stands in. Up and Down
// change the choice without opening it.
State.DropDown {
    id: box

    readonly property string currentText: selectedIndex >= 0 ? options[selectedIndex] : ""

    // The layer of the page for what lies over its controls.
    function findLayer() {
        let item = parent;
        while (item && item.popupLayer === undefined)
            item = item.parent;
        return item ? item.popupLayer : null;
    }

    function openList() {
        const host = findLayer();
        if (host && options.length > 0)
            choices.createObject(host, { field: field }).takeFocus();
    }

    function step(by) {
        selectedIndex = Math.max(0, Math.min(options.length - 1, selectedIndex + by));
    }

    implicitWidth: preferredWidth > 0 ? preferredWidth : 400
    implicitHeight: preferredHeight > 0 ? preferredHeight : column.implicitHeight

    Column {
        id: column
        width: parent.width
        spacing: Theme.spacingSmall

        Text {
            text: box.title
            textFormat: Text.PlainText
            visible: text !== ""
            width: parent.width
            leftPadding: Theme.spacing
            color: Theme.textDim
            font.pixelSize: Theme.fontSmall
            elide: Text.ElideRight
            Accessible.ignored: true
        }

        T.AbstractButton {
            id: field

            width: parent.width
            height: Theme.touch
            leftPadding: Theme.spacingLarge
            rightPadding: 80
            focusPolicy: Qt.TabFocus
            hoverEnabled: true
            text: box.currentText
            Accessible.role: Accessible.ComboBox
            Accessible.name: box.title + ": " + box.currentText
            Keys.onReturnPressed: clicked()
            Keys.onEnterPressed: clicked()
            Keys.onUpPressed: box.step(-1)
            Keys.onDownPressed: box.step(1)
            onClicked: box.openList()

            background: Rectangle {
                radius: Theme.radius
                color: field.down ? Theme.surfacePressed : field.hovered ? Theme.surfaceHovered : Theme.surfaceRaised

                FocusRing {
                    active: field.visualFocus
                }

                Chevron {
                    anchors.right: parent.right
                    anchors.rightMargin: Theme.spacingLarge
                    anchors.verticalCenter: parent.verticalCenter
                }
            }

            contentItem: Text {
                text: field.text
                textFormat: Text.PlainText
                color: Theme.text
                font.pixelSize: Theme.font
                elide: Text.ElideRight
                verticalAlignment: Text.AlignVCenter
                Accessible.ignored: true
            }
        }
    }

    Component {
        id: choices

        DropDownList {
            options: box.options
            currentIndex: box.selectedIndex
            onChosen: row => box.selectedIndex = row
            onClosed: field.forceActiveFocus(Qt.TabFocusReason)
        }
    }
}

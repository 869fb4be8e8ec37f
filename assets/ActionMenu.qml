import QtQuick
import bb.cascades 1.0

// The action menu: one card with a list, over everything else on the page. A tap outside closes it. The program decides
// which list it shows; `heading` is the list's name unless it is the main one.
Container {
    id: menu

    required property var model
    // The card is at the right edge; otherwise at the left.
    required property bool atRight
    property string heading: ""
    property string markedTitle: ""
    // The filter chosen last; initially none.
    property string filterTitle: "Normal"

    signal chosen(var indexPath, string title)
    signal backRequested()
    signal dismissed()

    function play() {
        slide.play();
    }

    // Back at the main list.
    function enterMain() {
        enter("", "");
    }

    // In a submenu. The row's own title is the current scene or mode.
    function enterList(row, title, size) {
        enter(["Color Filters", "", "Default Textures", "Screen Size", "", "Scene", "Mode"][row] ?? "",
              [filterTitle, "", "", size, "", title, title][row] ?? "");
    }

    function enter(name, current) {
        heading = name;
        markedTitle = current;
        list.toTop();
    }

    objectName: "listMenuContainer"
    visible: false
    onVisibleChanged: {
        if (!visible)
            return;
        list.toTop();
        list.takeFocus();
    }
    Keys.onEscapePressed: dismissed()
    Keys.onLeftPressed: if (heading !== "") backRequested()
    Keys.onPressed: event => {
        event.accepted = event.key === Qt.Key_Backspace && heading !== "";
        if (event.accepted)
            backRequested();
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.scrim

        MouseArea {
            anchors.fill: parent
            hoverEnabled: true
            acceptedButtons: Qt.AllButtons
            onClicked: menu.dismissed()
            onWheel: wheel => wheel.accepted = true
        }
    }

    Container {
        id: side
        objectName: "iconListViewContainer"
        width: Math.min(600, parent.width - 2 * Theme.spacing)
        height: parent.height
        x: menu.atRight ? parent.width - width - Theme.spacing : Theme.spacing

        Item {
            id: card

            readonly property real most: menu.height - 2 * Theme.spacing
            readonly property real wanted: list.contentHeight + header.height + 2 * Theme.spacingSmall

            // Below the container's padding, or higher where a row would not fit otherwise.
            y: Math.min(Theme.spacing, parent.height - Theme.spacing - height)
            width: parent.width
            height: Math.min(most, wanted)

            Rectangle {
                anchors.fill: parent
                radius: Theme.radius
                color: Theme.overlay

                MouseArea {
                    anchors.fill: parent
                    hoverEnabled: true
                    onWheel: wheel => wheel.accepted = true
                }
            }

            Item {
                id: header
                x: Theme.spacingSmall
                y: Theme.spacingSmall
                width: parent.width - 2 * x
                height: menu.heading === "" ? 0 : Theme.touch
                visible: height > 0

                Button {
                    anchors.fill: parent
                    flat: true
                    text: "‹  " + menu.heading
                    font.bold: true
                    Accessible.name: qsTr("Back to the menu, from %1").arg(menu.heading)
                    onClicked: menu.backRequested()
                }
            }

            ListView {
                id: list
                objectName: "menuListview"
                anchors.top: header.bottom
                anchors.bottom: parent.bottom
                anchors.bottomMargin: Theme.spacingSmall
                x: Theme.spacingSmall
                width: parent.width - 2 * x
                rowHeight: menu.height < 1000 ? 82 : 104
                dataModel: menu.model
                markedTitle: menu.markedTitle
                onTriggered: indexPath => menu.chosen(indexPath, dataModel.data(indexPath).title)
            }
        }
    }

    TranslateTransition {
        id: slide
        objectName: "menuAnim"
        target: card
        fromX: menu.atRight ? side.width + 2 * Theme.spacing : -side.width - 2 * Theme.spacing
        duration: Theme.duration
    }
}

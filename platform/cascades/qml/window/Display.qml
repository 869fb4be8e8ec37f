import QtQuick

// The handset's display: the scene, and over it, from the lowest to the highest, the application menu, sheets, a card,
// dialogs, the reason why there is no picture, and toasts. The highest of them that is there has the keyboard.
Rectangle {
    id: display

    required property var stage
    required property var application

    readonly property bool covered: stage.sheet !== null || stage.card !== null
    readonly property bool free: !covered && stage.dialog === null

    function giveKeyboard() {
        const layer = stage.dialog ? dialog : stage.card ? card : stage.sheet ? sheet : stage.menuOpen ? menu : scene;
        layer.forceActiveFocus(Qt.OtherFocusReason);
    }

    color: "black"
    clip: true
    Component.onCompleted: giveKeyboard()

    Connections {
        target: display.stage
        function onDialogChanged() { display.giveKeyboard(); }
        function onCardChanged() { display.giveKeyboard(); }
        function onSheetChanged() { display.giveKeyboard(); }
        function onMenuOpenChanged() { display.giveKeyboard(); }
    }

    FocusScope {
        id: scene
        objectName: "sceneLayer"
        anchors.fill: parent
        enabled: !display.covered
    }

    ApplicationMenu {
        id: menu
        anchors.fill: parent
        actions: display.application.menu ? display.application.menu.actions : []
        open: display.stage.menuOpen
        available: display.free
        onOpenRequested: display.stage.menuOpen = true
        onCloseRequested: display.stage.menuOpen = false
    }

    SheetFrame {
        id: sheet
        anchors.fill: parent
        sheet: display.stage.sheet
        enabled: display.stage.card === null
    }

    CardFrame {
        id: card
        anchors.fill: parent
        card: display.stage.card
    }

    DialogFrame {
        id: dialog
        anchors.fill: parent
        dialog: display.stage.dialog
        topInset: trouble.visible ? trouble.y + trouble.height : 0
    }

    // No dialog hides it; sheets and cards have the camera's page covered.
    TroubleStrip {
        id: trouble
        stage: display.stage
        visible: opacity > 0 && !display.covered && !display.stage.menuOpen
    }

    Toast {
        anchors.fill: parent
        toast: display.stage.toast
    }
}

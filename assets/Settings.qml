import QtQuick
import bb.cascades 1.0

// The main screen. The program itself shows and hides the controls that have object names, so nothing here binds their
// `visible`; what depends on them reads it.
NavigationPane {
    id: pane

    onPopTransitionEnded: page => _mainApp.handlePopTransitionEnded(page)

    Page {
        id: page

        readonly property bool wide: width > height

        function openMenu() {
            if (!capture.menuButton.visible)
                return;
            _mainApp.setMenuVisible(true);
            capture.menuButton.visible = false;
            menu.visible = true;
            menu.enterMain();
            menu.play();
        }

        function closeMenu() {
            _mainApp.setMenuVisible(false);
            menu.visible = false;
            capture.menuButton.visible = true;
        }

        // Closing it makes the program build the main list when it opens again.
        function backInMenu() {
            _mainApp.setMenuVisible(false);
            _mainApp.setMenuVisible(true);
            menu.enterMain();
        }

        function chooseInMenu(indexPath, title) {
            const inMain = menu.heading === "";
            if (menu.heading === "Color Filters")
                menu.filterTitle = title;
            _mainApp.peformMenuAction(indexPath);
            if (inMain && menu.visible)
                menu.enterList(indexPath[0], title, status.sizeText);
        }

        function openSizes() {
            if (!status.recording)
                menu.enterList(3, "", status.sizeText);
            _mainApp.setScreenSize();
        }

        // Not from under a list, whose choices do not apply to a recording.
        function toggleRecording() {
            if (!menu.visible && !more.visible)
                _mainApp.onStartStopRecording();
        }

        // The first tap after choosing a filter may only move other controls out of the slider's way.
        function closePanels() {
            _mainApp.onTap(null);
            if (tolerance.visible)
                _mainApp.onTap(null);
        }

        function enterScreenMode() {
            recorder.begin();
            _mainApp.startScreenRecorder();
            recorder.opened();
        }

        // The camera comes back when the film ends, and not before.
        function play() {
            if (recorder.awaited)
                recorder.end();
            _mainApp.playVideo();
        }

        function leaveScreenMode() {
            if (status.recording)
                _mainApp.onStartStopRecording();
            _mainApp.onStopCamera();
            _mainApp.restartCamera();
            recorder.end();
        }

        Keys.onPressed: event => {
            event.accepted = !event.isAutoRepeat && handleKey(event.key, event.modifiers);
        }

        function handleKey(key, modifiers) {
            if (key === Qt.Key_Comma && modifiers === Qt.ControlModifier)
                _mainApp.handleSettingAction();
            else if (modifiers !== Qt.NoModifier)
                return false;
            else if (key === Qt.Key_Space || key === Qt.Key_R)
                toggleRecording();
            else if (key === Qt.Key_F1)
                _mainApp.handleHelpAction();
            else if (key === Qt.Key_M || key === Qt.Key_Menu)
                openMenu();
            else if (key === Qt.Key_Escape && (mixer.visible || tolerance.visible))
                closePanels();
            else
                return false;
            return true;
        }

        Viewfinder {
            id: viewfinder
            anchors.fill: parent
            freeWidth: status.width
            freeHeight: page.height - (page.wide ? 0 : capture.thickness)
            onAttached: recorder.cameraStarted()
        }

        // Out of the keyboard's reach while a list covers them.
        Item {
            anchors.fill: parent
            enabled: !menu.visible && !more.visible

            CaptureBar {
                id: capture
                vertical: page.wide
                recording: status.recording
                onRecordClicked: page.toggleRecording()
                onMenuClicked: page.openMenu()
                onPlayClicked: page.play()
            }

            StatusBar {
                id: status
                width: page.wide ? page.width - capture.thickness : page.width
                sizeShown: !recorder.visible
                onSizeClicked: page.openSizes()
                onMoreClicked: more.open()
            }

            ScreenRecorder {
                id: recorder
                x: Theme.spacing
                y: Theme.spacing
                recording: status.recording
                onStopClicked: page.leaveScreenMode()
                onFailed: _mainApp.restartCamera()
            }

            // The lower edge of panels: above the bar, or beside it.
            Item {
                x: Theme.spacing
                y: page.height - Theme.spacing - (page.wide ? 0 : capture.thickness)
                width: Math.min(736, status.width - 2 * x)

                TolerancePanel {
                    id: tolerance
                    anchors.bottom: parent.bottom
                    width: parent.width
                    onChanged: value => _mainApp.changeFilterColor(value)
                    onClosed: page.closePanels()
                }

                ColorMixer {
                    id: mixer
                    anchors.bottom: parent.bottom
                    width: parent.width
                    onChanged: (component, value) => _mainApp.changeCustomColor(component, value)
                    onClosed: page.closePanels()
                }
            }

            Container {
                objectName: "effectContainer"
                x: status.width - width - Theme.spacing
                anchors.top: status.bottom
                width: 104
                height: 104
                visible: false

                EffectButton {
                    anchors.fill: parent
                    onClicked: _mainApp.setModifyEffectColor()
                }
            }
        }

        ActionMenu {
            id: menu
            anchors.fill: parent
            model: _mainApp.model
            atRight: page.wide
            onChosen: (indexPath, title) => page.chooseInMenu(indexPath, title)
            onBackRequested: page.backInMenu()
            onDismissed: page.closeMenu()
            onVisibleChanged: if (!visible) page.takeFocus()
        }

        MorePanel {
            id: more
            anchors.fill: parent
            privateMode: viewfinder.covered
            recording: status.recording
            onVisibleChanged: if (!visible) page.takeFocus()
            onScreenshotClicked: _mainApp.handleScreenShotAction()
            onPictureClicked: path => _mainApp.showPhotoInCard(path)
            onRecordScreenClicked: page.enterScreenMode()
            onPrivateClicked: _mainApp.handlePrivateAction()
            onInviteClicked: _mainApp.invitedownload()
            onSettingsClicked: _mainApp.handleSettingAction()
            onHelpClicked: _mainApp.handleHelpAction()
        }
    }

    Connections {
        target: OrientationSupport
        function onOrientationAboutToChange(orientation) { _mainApp.onOrientationAboutToChange(orientation); }
    }
}

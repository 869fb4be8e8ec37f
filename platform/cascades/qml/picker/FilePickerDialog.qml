import QtQuick
import QtQuick.Dialogs

// The desktop's own file dialog.
FileDialog {
    property bool several: false

    modality: Qt.WindowModal
    fileMode: several ? FileDialog.OpenFiles : FileDialog.OpenFile
}

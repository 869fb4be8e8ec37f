import QtQuick
import QtQuick.Dialogs

// The desktop's dialog where there is one, and Qt's own inside the window where not.
FileDialog {
    property bool several: false

    modality: Qt.WindowModal
    fileMode: several ? FileDialog.OpenFiles : FileDialog.OpenFile
}
